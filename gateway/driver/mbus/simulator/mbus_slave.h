// SPDX-License-Identifier: Apache-2.0
// cMBusSlave: the link layer of a meter (EN 13757-2, EN 13757-3 for selection and settings): whether a request is for
// it, and what it answers. A request whose frame count bit has not changed gets the latest answer again.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <gateway/driver/mbus/master/mbus_address.h>
#include <gateway/driver/mbus/simulator/mbus_simulator.h>

namespace tav::mbus {

class cMBusSlave {
 public:
  cMBusSlave(const cMBusSimulatedMeter& meter, std::uint8_t primary, unsigned int baud = 2400)
      : m_meter(meter), m_primary(primary), m_baud(baud) {}

  // Its answer; none when the request is not for it, is not answered, or was sent at a rate that it does not hear.
  std::optional<std::string> Answer(const cMBusFrame& request, unsigned int baud, std::uint32_t now);

  const cMBusSimulatedMeter& GetMeter() const { return m_meter; }
  std::uint8_t GetPrimary() const { return m_primary; }
  unsigned int GetBaud() const { return m_baud; }
  bool IsSelected() const { return m_isSelected; }

 private:
  bool IsMeant(std::uint8_t address) const;
  void Initialise(std::uint8_t address);
  std::optional<std::string> Select(const cMBusFrame& request);
  std::optional<std::string> Data(bool fcb, std::uint32_t now);
  void Take(const cMBusFrame& request);

  cMBusSimulatedMeter m_meter;
  std::uint8_t m_primary;
  unsigned int m_baud;
  bool m_isSelected = false;
  std::string m_latest;  // answer with data; empty: the link has begun anew
  bool m_latestFcb = false;
  unsigned int m_next = 0;  // telegram
  std::uint8_t m_access = 0;
};

}  // namespace tav::mbus
