// SPDX-License-Identifier: Apache-2.0
// cRelay: the relay as hardware knows it, open or closed. When it goes back by itself is cRelaySwitch's.
#pragma once

#include <string>

namespace tav::gateway {

class cRelay {
 public:
  cRelay() = default;
  virtual ~cRelay() = default;
  cRelay(const cRelay&) = delete;
  cRelay& operator=(const cRelay&) = delete;

  // Empty: done. Else why not, naming what is not there or does not obey; a later call tries anew.
  virtual std::string Switch(bool closed) = 0;
  // Where it is, or "simulated".
  virtual std::string GetPlace() const = 0;
};

// No hardware.
class cSimulatedRelay final : public cRelay {
 public:
  std::string Switch(bool /*closed*/) override { return {}; }
  std::string GetPlace() const override { return "simulated"; }
};

}  // namespace tav::gateway
