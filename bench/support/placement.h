// SPDX-License-Identifier: Apache-2.0
// cPlacement: where this process and those it starts may run, until the object ends.
//
// On one core a figure is what the work costs, and repeats; left free it is what a caller waits for, the waking of a
// sleeping core included.
#pragma once

#include <sched.h>

namespace tav::bench {

enum class ePlace { OneCore, Free };

class cPlacement {
 public:
  explicit cPlacement(ePlace place);
  ~cPlacement();
  cPlacement(const cPlacement&) = delete;
  cPlacement& operator=(const cPlacement&) = delete;

 private:
  cpu_set_t m_before;
};

}  // namespace tav::bench
