// SPDX-License-Identifier: Apache-2.0
// cFailure: what ends a command early. Thrown by anything below a command, shown and turned into the exit code by the
// application.
#pragma once

#include <stdexcept>
#include <string>

#include <tavctl/exit_code.h>

namespace tav::ctl {

class cFailure : public std::runtime_error {
 public:
  cFailure(eExit exit, const std::string& text) : std::runtime_error(text), m_exit(exit) {}

  eExit GetExit() const { return m_exit; }

 private:
  eExit m_exit;
};

}  // namespace tav::ctl
