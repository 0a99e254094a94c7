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

template <typename Text>
struct cEntryOf {
  Text name;
  double value = 0;
  Text unit;
  std::uint64_t time = 0;  // microseconds
  Text timeSource;
};

template <typename Text>
struct cReadingOf {
  std::uint64_t number = 0;
  Text meter;
  Text server;
  unsigned int channel = 0;
  std::uint64_t received = 0;
  std::uint64_t meterTime = 0;
  unsigned int secondsIndex = 0;
  unsigned int status = 0;
  bool valid = false;
  Text protocol;
  Text source;
  double quality = 0;
  int tariff = 0;
  Text location;
  std::vector<cEntryOf<Text>> entries;
};

using cReading = cReadingOf<std::string>;
using cPackedReading = cReadingOf<std::string_view>;  // its texts are views into the packed bytes

cReading SampleReading(std::uint64_t number = 1'000'001);
std::uint64_t SumOf(const cReading& reading);
std::uint64_t SumOf(const cPackedReading& reading);

// As a record; real numbers travel as their 64 bits.
void WriteRecord(const cReading& reading, vorn::cRecord& record);
// The sum of a record's fields, and its number.
std::uint64_t ReadRecord(const vorn::cRecord& record, std::uint64_t& number);

// Packed; to must have room for kMaxPacked bytes. The number of bytes.
constexpr std::size_t kMaxPacked = 4096;
std::size_t WritePacked(const cReading& reading, unsigned char* to);
// Every access is checked against the size; false when it is too small.
bool ReadPacked(const unsigned char* from, std::size_t size, cPackedReading& reading);

// The same reading as drivers make it. Its values and times differ from number to number.
cMeterRecord SampleMeterRecord(const std::string& meter, unsigned int number);

}  // namespace tav::bench
