// SPDX-License-Identifier: Apache-2.0
// cGpioRelay: a relay at an output line of a GPIO chip; the line is high while the relay is closed. The line is held
// while the object lives, so that no other program moves it.
#pragma once

#include <memory>
#include <string>

#include <gateway/service/device/relay.h>

struct gpiod_chip;

namespace tav::gateway {

class cGpioRelay final : public cRelay {
 public:
  // chip: a name, label, number or path of a device, such as "gpiochip0".
  cGpioRelay(std::string chip, unsigned int line) : m_chipName(std::move(chip)), m_lineNumber(line) {}

  std::string Switch(bool closed) override;
  std::string GetPlace() const override;

 private:
  struct cClose {
    void operator()(gpiod_chip* chip) const;
  };

  std::string Request(bool closed);

  std::string m_chipName;
  unsigned int m_lineNumber;
  std::unique_ptr<gpiod_chip, cClose> m_chip;  // null: the line is not held
};

}  // namespace tav::gateway
