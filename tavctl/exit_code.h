// SPDX-License-Identifier: Apache-2.0
// How tavctl ends. The table is shown by --help and told in docs/tavctl.md.
#pragma once

#include <string_view>

namespace tav::ctl {

enum eExit : int {
  eExitDone = 0,
  eExitNegative = 1,
  eExitUsage = 2,
  eExitUnreachable = 3,
  eExitRefused = 4,
  eExitFile = 5,
  eExitInternal = 6,
};

struct cExitCode {
  eExit code;
  std::string_view meaning;
};

inline constexpr cExitCode kExitCodes[] = {
    {eExitDone, "done"},
    {eExitNegative, "the answer is no: nothing found of what was named, or a telegram that is bad"},
    {eExitUsage, "wrong usage"},
    {eExitUnreachable, "the service cannot be reached, or gave no answer in time"},
    {eExitRefused, "the service refused the request"},
    {eExitFile, "a file cannot be read, or the output cannot be written"},
    {eExitInternal, "something that should not happen"},
};

}  // namespace tav::ctl
