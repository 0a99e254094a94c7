// SPDX-License-Identifier: Apache-2.0
// cLed: one light as hardware knows it, lit or dark. What it stands for and how it blinks is cLight's.
#pragma once

#include <string>

namespace tav::gateway {

class cLed {
 public:
  cLed() = default;
  virtual ~cLed() = default;
  cLed(const cLed&) = delete;
  cLed& operator=(const cLed&) = delete;

  // Empty: done. Else why not, naming what is not there or does not obey; a later call tries anew.
  virtual std::string Switch(bool lit) = 0;
  // Where it is, or "simulated".
  virtual std::string GetPlace() const = 0;
};

// No hardware.
class cSimulatedLed final : public cLed {
 public:
  std::string Switch(bool /*lit*/) override { return {}; }
  std::string GetPlace() const override { return "simulated"; }
};

}  // namespace tav::gateway
