// SPDX-License-Identifier: Apache-2.0
// Text helpers of option strings and formats, and the operating seconds counter.
#pragma once

#include <string>
#include <vector>

#include <tav/framework/export.h>
#include <tav/framework/map.h>

namespace vorn {

class VORN_API cHelper {
 public:
  // The tokens in order. Empty ones are dropped, blanks are kept; no token for an empty text.
  // The separator is one text; an empty one separates nothing. For lists ("a,b").
  static std::vector<std::string> GetStringTokens(const std::string& text, const std::string& separator);
  // The parts in order, empty ones kept, so that they can be counted ("a=b", "001-002"). One empty part for an empty
  // text.
  static std::vector<std::string> Split(const std::string& text, const std::string& separator);
  // The tokens that hold "=", split at the first one; tokens without it are dropped, the last one of a name holds.
  static cMap<std::string, std::string> TokensAsNameValue(const std::vector<std::string>& tokens);
};

// printf's rules; an empty text when the format cannot be carried out.
VORN_API std::string FormatString(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Operating seconds counter: whole seconds since boot, going on while the machine sleeps.
VORN_API unsigned int GetOSC();

}  // namespace vorn
