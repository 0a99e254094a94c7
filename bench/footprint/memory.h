// SPDX-License-Identifier: Apache-2.0
// What a process holds, as the kernel counts it.
#pragma once

#include <sys/types.h>

namespace tav::bench {

struct cMemory {
  double resident = 0;   // KiB, pages shared with other processes included
  double anonymous = 0;  // KiB, its own alone
  double threads = 0;
};

cMemory MemoryOf(pid_t pid);

}  // namespace tav::bench
