// SPDX-License-Identifier: Apache-2.0
// cKernelLed: a light of the kernel's LED class, a directory such as /sys/class/leds/green:wan.
//
// Its trigger is set to "none" before it is switched for the first time: with another one the kernel switches it too.
#pragma once

#include <string>

#include <gateway/service/device/led.h>

namespace tav::gateway {

class cKernelLed final : public cLed {
 public:
  explicit cKernelLed(std::string directory) : m_directory(std::move(directory)) {}

  std::string Switch(bool lit) override;
  std::string GetPlace() const override { return m_directory; }

 private:
  std::string Prepare();
  std::string ReadMaximum();
  std::string Write(const char* file, const std::string& text) const;

  std::string m_directory;
  std::string m_maximum;  // brightness of the lit light; empty: not prepared
};

}  // namespace tav::gateway
