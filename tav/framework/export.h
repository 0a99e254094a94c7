// SPDX-License-Identifier: Apache-2.0
// Marks what libvorn.so.1 exports; everything else in it is hidden.
#pragma once

#define VORN_API __attribute__((visibility("default")))
