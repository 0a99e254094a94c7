// SPDX-License-Identifier: Apache-2.0
// Bytes as text: RFC 4648, clause 4, with padding and without line breaks.
#pragma once

#include <string>
#include <string_view>

namespace tav::data {

std::string ToBase64(std::string_view bytes);

}  // namespace tav::data
