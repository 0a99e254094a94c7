// SPDX-License-Identifier: Apache-2.0
#include <tavctl/config/assignment.h>

#include <cstddef>

#include <tavctl/input_file.h>

namespace tav::ctl {

namespace {

// More than any field takes.
constexpr std::size_t kMaxValue = std::size_t{1} << 20;

}  // namespace

cAssignment ReadAssignment(const std::string& word, std::istream& in) {
  const std::size_t equals = word.find('=');
  if (equals == std::string::npos || equals == 0)
    throw cFailure(eExitUsage, "expected FIELD=VALUE, found \"" + word + "\"");
  cAssignment assignment{word.substr(0, equals), word.substr(equals + 1)};
  std::string& value = assignment.value;
  if (value.rfind("@@", 0) == 0)
    value.erase(0, 1);
  else if (value.rfind('@', 0) == 0)
    value = ReadValue(value.substr(1), in, kMaxValue);
  return assignment;
}

}  // namespace tav::ctl
