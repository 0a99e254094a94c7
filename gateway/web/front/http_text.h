// SPDX-License-Identifier: Apache-2.0
// Small matters of HTTP's texts: names without regard to case, blanks, lists.
#pragma once

#include <cstdint>

#include <string>
#include <string_view>
#include <vector>

namespace tav::gateway::web {

// One field of a header.
struct cHeaderField {
  std::string name;
  std::string value;
};

std::string ToLower(std::string_view text);  // ASCII letters only
bool EqualsIgnoringCase(std::string_view a, std::string_view b);
std::string_view Trim(std::string_view text);  // blanks and tabs
// The elements of a list with commas, trimmed; empty ones are left out.
std::vector<std::string_view> SplitList(std::string_view text);
// Whether it is a name of a field or a method (RFC 9110, 5.6.2).
bool IsToken(std::string_view text);
bool HasControlCharacter(std::string_view text);
// Whether a coding is asked for by a field Accept-Encoding, by its name or by "*", and not with a weight of 0.
bool AcceptsCoding(std::string_view acceptEncoding, std::string_view coding);
// A time as HTTP writes it: "Sat, 01 Mar 2014 12:00:00 GMT".
std::string HttpDate(std::int64_t utc);

}  // namespace tav::gateway::web
