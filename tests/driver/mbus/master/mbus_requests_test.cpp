// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/master/mbus_requests.h>

#include <gtest/gtest.h>

#include <tests/driver/mbus/mbus_digits.h>

namespace tav::mbus {
namespace {

TEST(MBusRequests, AreTheBytesOfTheStandard) {
  cMBusAddress whole{kSecondary, 0x12345678, 0x4D34, 0x18, 0x04};
  const std::pair<std::string, std::string> kCases[] = {
      {MakeInitialise(5), "10 40 05 45 16"},
      {MakeInitialise(kSecondary), "10 40 FD 3D 16"},
      {MakeReadoutRequest(1, true), "10 7B 01 7C 16"},
      {MakeReadoutRequest(1, false), "10 5B 01 5C 16"},
      {MakeSelection(whole), "68 0B 0B 68 53 FD 52 78 56 34 12 34 4D 18 04 53 16"},
      {MakeSelection({}), "68 0B 0B 68 53 FD 52 FF FF FF FF FF FF FF FF 9A 16"},
      {MakeApplicationReset(3, -1), "68 03 03 68 53 03 50 A6 16"},
      {MakeApplicationReset(3, 0x10), "68 04 04 68 53 03 50 10 B6 16"},
      {MakeSetAddress(0, 7), "68 06 06 68 53 00 51 01 7A 07 26 16"},
  };
  for (const auto& [bytes, expected] : kCases) EXPECT_EQ(Hex(bytes), expected);
}

TEST(MBusRequests, KnowTheCodesOfRates) {
  const std::pair<unsigned int, int> kCases[] = {{300, 0xB8},  {600, 0xB9},  {1200, 0xBA},  {2400, 0xBB},
                                                 {4800, 0xBC}, {9600, 0xBD}, {19200, 0xBE}, {38400, 0xBF}};
  for (const auto& [baud, code] : kCases) {
    const std::string bytes = MakeSetBaud(9, baud);
    ASSERT_EQ(bytes.size(), 9u) << baud;
    EXPECT_EQ(static_cast<std::uint8_t>(bytes[6]), code) << baud;
  }
  for (const unsigned int baud : {0u, 110u, 299u, 2401u, 57600u}) EXPECT_EQ(MakeSetBaud(9, baud), "") << baud;
}

TEST(MBusRequests, AreFramesThatTheReaderKnows) {
  for (const std::string& bytes : {MakeInitialise(250), MakeSelection({}), MakeSetBaud(0, 300),
                                   MakeLongFrame(0x53, 1, 0x51, View(std::string(252, 'x')))}) {
    cMBusFrame frame;
    cMBusFault fault;
    ASSERT_EQ(ReadFrame(View(bytes), frame, fault), eFrameWhole) << fault.ToString();
    EXPECT_EQ(frame.bytes.size(), bytes.size());
    EXPECT_NE(frame.control & kFromMaster, 0);
  }
}

}  // namespace
}  // namespace tav::mbus
