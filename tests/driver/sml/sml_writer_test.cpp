// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/sml_writer.h>

#include <gtest/gtest.h>

#include "sml_telegrams.h"

using namespace tav::sml;

namespace {

// The payload that one call writes.
template <typename Write>
std::string Written(Write write) {
  cSmlWriter to;
  write(to);
  return to.GetPayload();
}

}  // namespace

TEST(SmlWriter, WritesElements) {
  EXPECT_EQ(Written([](cSmlWriter& to) { to.Absent(); }), Bytes("01"));
  EXPECT_EQ(Written([](cSmlWriter& to) { to.Octets("EMH"); }), Bytes("04454D48"));
  EXPECT_EQ(Written([](cSmlWriter& to) { to.Bool(true); }), Bytes("4201"));
  EXPECT_EQ(Written([](cSmlWriter& to) { to.Bool(false); }), Bytes("4200"));
  EXPECT_EQ(Written([](cSmlWriter& to) { to.Unsigned(0x1C0104, 3); }), Bytes("641C0104"));
  EXPECT_EQ(Written([](cSmlWriter& to) { to.Signed(-2, 8); }), Bytes("59FFFFFFFFFFFFFFFE"));
  EXPECT_EQ(Written([](cSmlWriter& to) { to.SecIndex(0x01020304); }), Bytes("7262016501020304"));
  EXPECT_EQ(Written([](cSmlWriter& to) { to.Obis(PackObis(1, 0, 1, 8, 0)); }), Bytes("070100010800FF"));
}

TEST(SmlWriter, LengthensTheTypeLengthFieldWhenItMust) {
  const struct {
    std::size_t size;
    const char* head;
  } kOctets[] = {{0, "01"},     {14, "0F"},      {15, "8101"},     {48, "8302"},
                 {253, "8F0F"}, {254, "818001"}, {4092, "8F8F0F"}, {4093, "81808001"}};
  for (const auto& c : kOctets)
    EXPECT_EQ(Written([&](cSmlWriter& to) { to.Octets(std::string(c.size, 'x')); }),
              Bytes(c.head) + std::string(c.size, 'x'));
  EXPECT_EQ(Written([](cSmlWriter& to) { to.List(15); }), Bytes("7F"));
  EXPECT_EQ(Written([](cSmlWriter& to) { to.List(16); }), Bytes("F100"));
  EXPECT_EQ(Written([](cSmlWriter& to) { to.List(30); }), Bytes("F10E"));
}

TEST(SmlWriter, PadsAFrameToFourBytes) {
  for (std::size_t size = 0; size < 9; ++size) {
    const std::string frame = WriteSmlFrame(std::string(size, 'x'));
    EXPECT_EQ(frame.size() % 4, 0u) << size;
    EXPECT_EQ(static_cast<std::size_t>(frame[frame.size() - 3]), (4 - size % 4) % 4) << size;
  }
}

TEST(SmlWriter, DoublesEscapeSequencesInThePayload) {
  const std::string start = "1B1B1B1B01010101";
  EXPECT_EQ(WriteSmlFrame(Bytes("1B1B1B1B")).substr(0, 21), Bytes(start + "1B1B1B1B1B1B1B1B" + "1B1B1B1B1A"));
  EXPECT_EQ(WriteSmlFrame(Bytes("001B1B1B")).substr(0, 17), Bytes(start + "001B1B1B" + "1B1B1B1B1A"));
}
