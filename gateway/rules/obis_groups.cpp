// SPDX-License-Identifier: Apache-2.0
#include <gateway/rules/obis_groups.h>

#include <string_view>

namespace tav::rules {

Groups GroupsOf(const std::string& obis) {
  Groups groups;
  std::size_t group = 0;
  for (const char character : obis) {
    constexpr std::string_view kSeparators = "-:..*";
    if (group < kSeparators.size() && character == kSeparators[group])
      ++group;
    else
      groups[group] += character;
  }
  return groups;
}

}  // namespace tav::rules
