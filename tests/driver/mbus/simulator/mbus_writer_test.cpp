// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/simulator/mbus_writer.h>

#include <gtest/gtest.h>

#include <gateway/driver/mbus/reader/mbus_text.h>

#include <tests/driver/mbus/mbus_digits.h>

namespace tav::mbus {
namespace {

// The data that one call writes.
template <typename Write>
std::string Written(Write write) {
  cMBusWriter to;
  write(to);
  return Hex(to.GetData());
}

TEST(MBusWriter, WritesNumbers) {
  EXPECT_EQ(Written([](auto& to) { to.Integer({0x13}, 0x1234, 2); }), "02 13 34 12");
  EXPECT_EQ(Written([](auto& to) { to.Integer({0x13}, -2, 3); }), "03 13 FE FF FF");
  EXPECT_EQ(Written([](auto& to) { to.Integer({0xFD, 0x48}, 1, 6); }), "06 FD 48 01 00 00 00 00 00");
  EXPECT_EQ(Written([](auto& to) { to.Integer({0x13}, 1, 8); }), "07 13 01 00 00 00 00 00 00 00");
  EXPECT_EQ(Written([](auto& to) { to.Bcd({0x06}, 12345678, 8); }), "0C 06 78 56 34 12");
  EXPECT_EQ(Written([](auto& to) { to.Bcd({0x06}, 7, 2); }), "09 06 07");
  EXPECT_EQ(Written([](auto& to) { to.Bcd({0x06}, 123456789012, 12); }), "0E 06 12 90 78 56 34 12");
  EXPECT_EQ(Written([](auto& to) { to.Bcd({0x5A}, -123, 4); }), "0A 5A 23 F1");
  EXPECT_EQ(Written([](auto& to) { to.Real({0x2B}, 1.5F); }), "05 2B 00 00 C0 3F");
}

TEST(MBusWriter, WritesTheRest) {
  EXPECT_EQ(Written([](auto& to) { to.Text({0xFD, 0x0C}, "ABC"); }), "0D FD 0C 03 43 42 41");
  EXPECT_EQ(Written([](auto& to) { to.MakersData("\x01\x02", false); }), "0F 01 02");
  EXPECT_EQ(Written([](auto& to) { to.MakersData("", true); }), "1F");
  EXPECT_EQ(Written([](auto& to) { to.Raw("\x2F\x2F"); }), "2F 2F");
  EXPECT_EQ(Written([](auto& to) { to.Text({0xFD, 0x0C}, std::string(500, 'x')); }).size(), 3u * (4 + 191) - 1);
}

TEST(MBusWriter, WritesThePlaceOfAValue) {
  const std::pair<cMBusPlace, const char*> kCases[] = {
      {{eMaximum}, "19 13 07"},
      {{eInstantaneous, 1}, "49 13 07"},
      {{eInstantaneous, 2}, "89 01 13 07"},
      {{eInstantaneous, 32}, "89 80 01 13 07"},
      {{eInstantaneous, 0, 3}, "89 30 13 07"},
      {{eMinimum, 1, 4, 1}, "E9 C0 10 13 07"},
  };
  for (const auto& [place, bytes] : kCases) EXPECT_EQ(Written([&](auto& to) { to.Bcd({0x13}, 7, 2, place); }), bytes);
}

// What the reader reads of it is what was written.
TEST(MBusWriter, IsReadAsItWasWritten) {
  cMBusTime time;
  time.hasDate = true;
  time.year = 2031;
  time.month = 12;
  time.day = 30;
  cMBusWriter to;
  to.Bcd({0x13}, 1234567, 8, {eMaximum, 1234, 17, 5});
  to.Integer({0x2B}, -987654, 4, {eErrorState, 0, 0, 3});
  to.Time({0x6C}, time);
  time.hasTime = true;
  time.hour = 23;
  time.minute = 59;
  to.Time({0x6D}, time);
  to.Text({0xFD, 0x0C}, "TAV");
  cMBusHeader header;
  header.id = 0x12345678;
  header.manufacturer = ManufacturerCode("TAV");
  header.version = 9;
  header.medium = 7;
  header.access = 200;
  header.status = 4;
  const std::string bytes = to.Telegram(77, header);

  cMBusFrame frame;
  cMBusFault fault;
  cMBusTelegram telegram;
  ASSERT_EQ(ReadFrame(View(bytes), frame, fault), eFrameWhole) << fault.ToString();
  ASSERT_TRUE(ReadTelegram(frame, telegram, fault)) << fault.ToString();
  EXPECT_EQ(telegram.address, 77);
  EXPECT_EQ(telegram.header.id, header.id);
  EXPECT_EQ(ManufacturerText(telegram.header.manufacturer), "TAV");
  EXPECT_EQ(telegram.header.version, 9);
  EXPECT_EQ(telegram.header.medium, 7);
  EXPECT_EQ(telegram.header.access, 200);
  EXPECT_EQ(telegram.header.status, 4);

  cMBusReader reader;
  reader.Begin(telegram);
  std::vector<std::string> values;
  cMBusRecord first;
  for (cMBusRecord record; reader.Next(record);) {
    if (values.empty()) first = record;
    values.push_back(ValueText(record));
  }
  EXPECT_FALSE(reader.HasFault());
  EXPECT_EQ(values, (std::vector<std::string>{"1234.567", "-987654", "2031-12-30", "2031-12-30T23:59:00", "TAV"}));
  EXPECT_EQ(first.function, eMaximum);
  EXPECT_EQ(first.storage, 1234u);
  EXPECT_EQ(first.tariff, 17u);
  EXPECT_EQ(first.subunit, 5);
}

TEST(MBusWriter, WritesTheFixedStructure) {
  cMBusCounters counters;
  counters.id = 0x12345678;
  counters.access = 10;
  counters.medium = 7;
  counters.units[0] = 0x29;
  counters.units[1] = 0x3E;
  counters.values[0] = 1;
  counters.values[1] = 135;
  EXPECT_EQ(Hex(WriteCounters(5, counters)),
            "68 13 13 68 08 05 73 78 56 34 12 0A 00 E9 7E 01 00 00 00 35 01 00 00 3C 16");
}

TEST(MBusWriter, WritesAnApplicationError) {
  EXPECT_EQ(Hex(WriteApplicationError(5, 8)), "68 04 04 68 08 05 70 08 85 16");
}

}  // namespace
}  // namespace tav::mbus
