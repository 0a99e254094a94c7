// SPDX-License-Identifier: Apache-2.0
// cSetupNotice: says once, on the gateway itself, how the first password is set: with a code that whoever reads this
// knows. It waits a moment for the address at which the front end listens.
#pragma once

#include <functional>
#include <string>

#include <gateway/host/task.h>
#include <gateway/web/pages/page_process.h>

namespace tav::pages {

class cSetupNotice {
 public:
  static constexpr unsigned int kLookMs = 200;
  static constexpr unsigned int kLooks = 25;  // then the notice goes out without the address

  // Says nothing when there is a password. The process outlives it.
  cSetupNotice(cPageProcess& process, std::function<void(const std::string& text)> say);

 private:
  void Look();

  cPageProcess& m_process;
  std::function<void(const std::string& text)> m_say;
  gateway::cTask m_look;
  unsigned int m_looks = 0;
};

}  // namespace tav::pages
