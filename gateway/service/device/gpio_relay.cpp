// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/device/gpio_relay.h>

#include <gpiod.h>

#include <cerrno>
#include <cstring>

namespace tav::gateway {

namespace {

std::string Fault(const std::string& what) { return what + ": " + std::strerror(errno); }

}  // namespace

void cGpioRelay::cClose::operator()(gpiod_chip* chip) const { gpiod_chip_close(chip); }

std::string cGpioRelay::Switch(bool closed) {
  if (!m_chip) return Request(closed);
  if (gpiod_line_set_value(gpiod_chip_get_line(m_chip.get(), m_lineNumber), closed) == 0) return {};
  std::string fault = Fault(GetPlace() + " cannot be set");
  m_chip.reset();  // it may be a device that was pulled out
  return fault;
}

std::string cGpioRelay::Request(bool closed) {
  std::unique_ptr<gpiod_chip, cClose> chip(gpiod_chip_open_lookup(m_chipName.c_str()));
  if (!chip) return Fault("GPIO chip " + m_chipName + " cannot be opened");
  gpiod_line* const line = gpiod_chip_get_line(chip.get(), m_lineNumber);
  if (line == nullptr)
    return GetPlace() + ": there is no such line, the chip has " + std::to_string(gpiod_chip_num_lines(chip.get()));
  if (gpiod_line_request_output(line, "tav-gateway", closed) != 0) return Fault(GetPlace() + " cannot be had");
  m_chip = std::move(chip);
  return {};
}

std::string cGpioRelay::GetPlace() const { return "GPIO chip " + m_chipName + " line " + std::to_string(m_lineNumber); }

}  // namespace tav::gateway
