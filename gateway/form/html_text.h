// SPDX-License-Identifier: Apache-2.0
// Texts of others in HTML.
#pragma once

#include <string>
#include <string_view>

namespace tav::form {

// A text as HTML content and as an attribute's value: UTF-8 whatever it came as, U+FFFD in place of control characters.
std::string EscapeHtml(std::string_view text);

}  // namespace tav::form
