// SPDX-License-Identifier: Apache-2.0
// Writes what meters answer: data records, and the telegrams they are sent in (EN 13757-3; EN 1434-3 for the fixed data
// structure). What the simulator sends and the tests read.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

#include <gateway/driver/mbus/reader/mbus_reader.h>

namespace tav::mbus {

// Which value of its quantity a record is.
struct cMBusPlace {
  eFunction function = eInstantaneous;
  std::uint64_t storage = 0;
  std::uint32_t tariff = 0;
  std::uint16_t subunit = 0;
};

class cMBusWriter {
 public:
  // VIF and VIFE as they are sent.
  using Vib = std::initializer_list<std::uint8_t>;

  // bytes: 1 to 4, 6 or 8.
  void Integer(Vib vib, std::int64_t value, unsigned int bytes, const cMBusPlace& place = {});
  // digits: 2, 4, 6, 8 or 12; the higher ones of a larger value are not sent. Negative as EN 13757-3 has it.
  void Bcd(Vib vib, std::int64_t value, unsigned int digits, const cMBusPlace& place = {});
  void Real(Vib vib, float value, const cMBusPlace& place = {});
  // At most 191 characters of ISO 8859-1.
  void Text(Vib vib, std::string_view text, const cMBusPlace& place = {});
  // By what the time has: a date (type G), date and time (F).
  void Time(Vib vib, const cMBusTime& time, const cMBusPlace& place = {});
  // The maker's bytes, the last record of a telegram; with more to come in the next one.
  void MakersData(std::string_view bytes, bool more);
  // Bytes as they are.
  void Raw(std::string_view bytes) { m_data += bytes; }

  const std::string& GetData() const { return m_data; }
  // With the long header, as a whole frame.
  std::string Telegram(std::uint8_t address, const cMBusHeader& header) const;

 private:
  void Begin(std::uint8_t field, Vib vib, const cMBusPlace& place);
  void Number(std::uint64_t value, unsigned int bytes);

  std::string m_data;
};

// The fixed data structure: two counters in BCD, each with the code of its unit.
struct cMBusCounters {
  std::uint32_t id = 0;
  std::uint8_t access = 0;
  std::uint8_t status = 0;  // bit 0: the counters are binary; bit 1: they are those of a fixed date
  std::uint8_t medium = 0;  // four bits
  std::uint8_t units[2] = {};
  std::uint32_t values[2] = {};
};
std::string WriteCounters(std::uint8_t address, const cMBusCounters& counters);

// The single byte of an application error, as a whole frame.
std::string WriteApplicationError(std::uint8_t address, std::uint8_t code);

}  // namespace tav::mbus
