// SPDX-License-Identifier: Apache-2.0
// cRawRule: an OBIS mapping rule as somebody wrote it down: its identifier may be wrong, and another one may have its
// ID.
#pragma once

#include <string>

namespace tav::rules {

struct cRawRule {
  unsigned long long id = 0;
  std::string name;
  std::string obis;
  std::string map;
  std::string place;  // "rules.toml:12"; empty for one that comes from no file
};

}  // namespace tav::rules
