// SPDX-License-Identifier: Apache-2.0
// The words of the M-Bus tests: bytes from hexadecimal digits, frames around them, a telegram with all its records.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <gateway/driver/mbus/reader/mbus_reader.h>

namespace tav::mbus {

// Bytes that end exactly where their memory does; blanks between the digits are skipped.
std::vector<std::uint8_t> Bytes(const std::string& digits);
std::string Hex(cBytes bytes);
std::string HexOf(unsigned int byte);
std::string Repeated(const std::string& digits, std::size_t count);

// A long frame around C, A, CI and data; a short one around C and A.
std::vector<std::uint8_t> LongFrame(const std::string& digits);
std::vector<std::uint8_t> ShortFrame(std::uint8_t control, std::uint8_t address);

// What a telegram has; it owns the bytes that the records point into.
struct cReading {
  cReading() = default;
  cReading(cReading&&) = default;
  cReading(const cReading&) = delete;
  cReading& operator=(const cReading&) = delete;

  std::vector<std::uint8_t> bytes;
  cMBusTelegram telegram;
  std::vector<cMBusRecord> records;
  std::string fault;  // empty: none
  bool hasMore = false;
};

// The answer with these bytes behind its C and A: CI, header, records. The data begin at byte 7 of the frame.
cReading ReadAnswer(const std::string& digits);
// Records without a header.
cReading ReadRecords(const std::string& digits);
// Of a telegram that has one record.
struct cOnly {
  cReading reading;
  const cMBusRecord& record() const { return reading.records.front(); }
};
cOnly ReadRecord(const std::string& digits);

}  // namespace tav::mbus
