// SPDX-License-Identifier: Apache-2.0
// Texts as UTF-8, whatever they came as, and the characters of a UTF-8 text.
#pragma once

#include <string>
#include <string_view>

namespace tav::form {

// The text itself when it is UTF-8 (RFC 3629), else taken as ISO 8859-1 and converted.
std::string ToUtf8(std::string_view text);

inline constexpr char32_t kNoCharacter = 0xFFFFFFFF;

// The next character of a text that is not empty, taken off it; kNoCharacter, and the text left alone, when there is no
// valid one.
char32_t TakeCharacter(std::string_view& text);

}  // namespace tav::form
