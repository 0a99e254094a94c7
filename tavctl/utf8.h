// SPDX-License-Identifier: Apache-2.0
// Texts as they may be shown: UTF-8 whatever they came as, without control characters, and how wide they are.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tav::ctl {

// The text itself when it is UTF-8 (RFC 3629), else taken as ISO 8859-1 and converted.
std::string ToUtf8(std::string_view text);

// ToUtf8, and control characters (C0, DEL, C1) as "\x1b": what a meter sends must not steer a terminal.
std::string ForTerminal(std::string_view text);

// Columns that a UTF-8 text takes on a terminal: none for combining characters, two for wide ones.
std::size_t DisplayWidth(std::string_view utf8);

}  // namespace tav::ctl
