// SPDX-License-Identifier: Apache-2.0
#include <tests/driver/mbus/mbus_bytes.h>

#include <gtest/gtest.h>

#include <gateway/driver/mbus/reader/mbus_text.h>
#include <tav/framework/data.h>

namespace tav::mbus {

std::vector<std::uint8_t> Bytes(const std::string& digits) {
  vorn::cData data;
  EXPECT_TRUE(vorn::cData::FromHex(digits, data)) << digits;
  std::vector<std::uint8_t> bytes(data.GetSize());
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = data[i];
  return bytes;
}

std::string Hex(cBytes bytes) { return HexText(bytes); }

std::string HexOf(unsigned int byte) {
  const auto value = static_cast<std::uint8_t>(byte);
  return HexText({&value, 1});
}

std::string Repeated(const std::string& digits, std::size_t count) {
  std::string all;
  for (; count > 0; --count) all += digits;
  return all;
}

std::vector<std::uint8_t> LongFrame(const std::string& digits) {
  const std::vector<std::uint8_t> counted = Bytes(digits);
  const std::string length = HexOf(static_cast<unsigned int>(counted.size()));
  return Bytes("68" + length + length + "68" + Hex(counted) + HexOf(Checksum(counted)) + "16");
}

std::vector<std::uint8_t> ShortFrame(std::uint8_t control, std::uint8_t address) {
  return Bytes("10" + HexOf(control) + HexOf(address) + HexOf(unsigned{control} + address) + "16");
}

cReading ReadAnswer(const std::string& digits) {
  cReading reading;
  reading.bytes = LongFrame("08 01" + digits);
  cMBusFrame frame;
  cMBusFault fault;
  EXPECT_EQ(ReadFrame(reading.bytes, frame, fault), eFrameWhole) << fault.ToString();
  EXPECT_TRUE(ReadTelegram(frame, reading.telegram, fault)) << fault.ToString();
  cMBusReader reader;
  reader.Begin(reading.telegram);
  for (cMBusRecord record; reader.Next(record);) reading.records.push_back(record);
  if (reader.HasFault()) reading.fault = reader.GetFault().ToString();
  reading.hasMore = reader.HasMore();
  return reading;
}

cReading ReadRecords(const std::string& digits) { return ReadAnswer("78" + digits); }

cOnly ReadRecord(const std::string& digits) {
  cOnly only{ReadRecords(digits)};
  EXPECT_EQ(only.reading.records.size(), 1u) << digits;
  if (only.reading.records.empty()) only.reading.records.emplace_back();
  return only;
}

}  // namespace tav::mbus
