// SPDX-License-Identifier: Apache-2.0
// How tav-gateway ends. docs/operating.md tells the same.
#pragma once

namespace tav::gateway {

enum eExitCode : int {
  eExitDone = 0,     // asked to end, and everything is written
  eExitFailed = 1,   // something that should not happen
  eExitUsage = 2,    // a wrong option or configuration
  eExitStorage = 3,  // the database cannot be used
  eExitSocket = 4,   // a service's socket cannot be had, mostly because another gateway runs
};

}  // namespace tav::gateway
