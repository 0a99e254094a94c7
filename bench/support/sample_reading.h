// SPDX-License-Identifier: Apache-2.0
// The reading that benchmarks carry: 14 fields and 6 entries of 5 fields; as a plain structure, as a record, and packed
// (fields in a fixed order, no names), which is the limit for any form.
//
// Whoever reads it sums up every number and touches every text (its length, first and last byte), so that no reader can
// skip a field and all of them agree.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <tav/framework/record.h>
#include <tav/record/meter_record.h>

namespace tav::bench {

struct cEntry {
  std::string name;
  double value = 0;
  std::string unit;
  std::uint64_t time = 0;  // microseconds
  std::string timeSource;
};

struct cReading {
  std::uint64_t number = 0;
  std::string meter;
  std::string server;
  unsigned int channel = 0;
  std::uint64_t received = 0;
  std::uint64_t meterTime = 0;
  unsigned int secondsIndex = 0;
  unsigned int status = 0;
  bool valid = false;
  std::string protocol;
  std::string source;
  double quality = 0;
  int tariff = 0;
  std::string location;
  std::vector<cEntry> entries;
};

cReading SampleReading(std::uint64_t number = 1'000'001);
std::uint64_t SumOf(const cReading& reading);

// As a record; real numbers travel as their 64 bits.
void WriteRecord(const cReading& reading, vorn::cRecord& record);
// The sum of a record's fields, and its number.
std::uint64_t ReadRecord(const vorn::cRecord& record, std::uint64_t& number);

// Packed; to must have room for kMaxPacked bytes. The number of bytes.
constexpr std::size_t kMaxPacked = 4096;
std::size_t WritePacked(const cReading& reading, unsigned char* to);
// Every access is checked against the size; 0 when it is too small.
std::uint64_t ReadPacked(const unsigned char* from, std::size_t size);

// The same reading as drivers make it. Its values and times differ from number to number.
cMeterRecord SampleMeterRecord(const std::string& meter, unsigned int number);

}  // namespace tav::bench
