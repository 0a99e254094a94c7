// SPDX-License-Identifier: Apache-2.0
// Marks what libtav.so.3 exports; everything else in it is hidden.
#pragma once

#define TAV_API __attribute__((visibility("default")))
