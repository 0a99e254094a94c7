// SPDX-License-Identifier: Apache-2.0
// Texts as a terminal may be sent them, and how wide they are there.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tav::ctl {

// UTF-8, and control characters (C0, DEL, C1) as "\x1b": what a meter sends must not steer a terminal.
std::string ForTerminal(std::string_view text);

// Columns that a UTF-8 text takes on a terminal: none for combining characters, two for wide ones.
std::size_t DisplayWidth(std::string_view utf8);

}  // namespace tav::ctl
