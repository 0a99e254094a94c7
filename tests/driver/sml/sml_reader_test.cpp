// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/sml_reader.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include <tests/support/allocations.h>

#include "sml_telegrams.h"

using namespace tav::sml;
using testing::ElementsAre;
using testing::StartsWith;

namespace {

const std::string kServer = "list 0A015453540001020304";

// Everything a list entry may look like.
const std::vector<cTestEntry> kEveryShape = {
    {kObisManufacturer, "", "", "", "", "04545354", ""},
    {kObisServerId, "", "", "6200", "5200", "0B0A015453540001020304", ""},
    {PackObis(1, 0, 1, 8, 0), "65001C0104", "7262016500001234", "621E", "52FF", "59000000000000AAD2", ""},
    {PackObis(1, 0, 1, 8, 1), "641C0104", "650A575853", "621E", "52FE", "560000000001", "0411 2233"},
    {PackObis(1, 0, 1, 8, 2), "630182", "72620265000000FF", "621E", "5203", "630005", ""},
    {PackObis(1, 0, 16, 7, 0), "62FF", "72620373 65000000FF 53003C 5200", "621B", "52FE", "538B28", ""},
    {PackObis(1, 0, 36, 7, 0), "", "", "621B", "52FE", "52FB", ""},
    {PackObis(1, 0, 32, 7, 0), "", "", "6223", "", "640008FC", ""},
    {PackObis(1, 0, 96, 5, 0), "", "", "", "", "69FFFFFFFFFFFFFFFF", ""},
    {PackObis(1, 0, 97, 97, 0, 0), "", "", "", "", "4201", ""},
    {PackObis(1, 0, 0, 9, 1), "", "", "", "", "72620172620165000000FF", ""},
    {kObisPublicKey, "", "", "", "", "8302" + std::string(96, 'A'), ""},
};

const std::vector<std::string> kEveryShapeRead = {
    kServer,
    "129-129:199.130.3*255 = hex:545354",
    "1-0:0.0.9*255 = hex:0A015453540001020304 unit 0",
    "1-0:1.8.0*255 status 1835268 time 1:4660 = 4373.0 unit 30",
    "1-0:1.8.1*255 status 1835268 time 4:173496403 = 0.01 unit 30 signature 112233",
    "1-0:1.8.2*255 status 386 time 2:255 = 5000 unit 30",
    "1-0:16.7.0*255 status 255 time 3:255 = -299.12 unit 27",
    "1-0:36.7.0*255 = -0.05 unit 27",
    "1-0:32.7.0*255 = 2300 unit 35",
    "1-0:96.5.0*255 = 18446744073709551615",
    "1-0:97.97.0*0 = true",
    "1-0:0.9.1*255 = hex:72620172620165000000FF",
    "129-129:199.130.5*255 = hex:" + std::string(96, 'A'),
};

std::vector<std::string> Behind(std::string first, const std::vector<std::string>& rest) {
  std::vector<std::string> all = {std::move(first)};
  all.insert(all.end(), rest.begin(), rest.end());
  return all;
}

}  // namespace

TEST(SmlReader, ReadsEveryShapeOfAnEntry) {
  const std::string telegram = Telegram(kEveryShape);
  EXPECT_EQ(Read(telegram).events, Behind("good 0+" + std::to_string(telegram.size()), kEveryShapeRead));
}

TEST(SmlReader, ReadsTheSameInBlocksOfAnySize) {
  const std::string stream = "x" + Telegram(kEveryShape) + OrdinaryTelegram();
  const cReading whole = Read(stream);
  EXPECT_EQ(whole.Lists(), 2u);
  for (std::size_t block = 1; block < 40; ++block) EXPECT_EQ(Read(stream, block).events, whole.events) << block;
}

TEST(SmlReader, ReadsMessagesWithoutATransportFrame) {
  const std::string payload = Payload(kEveryShape);
  EXPECT_EQ(ReadPayload(payload).events, Behind("good 0+" + std::to_string(payload.size()), kEveryShapeRead));
  EXPECT_EQ(ReadPayload(payload + std::string(3, '\0')).Lists(), 1u) << "padding that nobody counted";
}

TEST(SmlReader, ReadsTheOtherChecksumInFrameAndMessages) {
  EXPECT_EQ(Read(Telegram(kEveryShape, eCrcKermit)).Lists(), 1u);
  EXPECT_EQ(Read(WriteSmlFrame(Payload(kEveryShape, eCrcKermit), eCrcX25)).Lists(), 1u);
}

TEST(SmlReader, DropsAListWhoseMessageHasAWrongChecksum) {
  std::string payload = Payload(kEveryShape);
  const std::size_t at = payload.find(Bytes("AAD2"));
  payload[at] = static_cast<char>(payload[at] ^ 1);
  const cReading reading = Read(WriteSmlFrame(payload) + OrdinaryTelegram());
  EXPECT_EQ(reading.frames.good, 2u) << "the frame itself is right";
  EXPECT_EQ(reading.messages.messages, 6u);
  EXPECT_EQ(reading.messages.badCrc, 1u);
  EXPECT_EQ(reading.messages.faults, 1u);
  EXPECT_EQ(reading.messages.lists, 1u);
  EXPECT_THAT(reading.events[1], StartsWith("fault byte "));
  EXPECT_THAT(reading.events[1], testing::HasSubstr("crc: expected the checksum of the message, found 0x63"));
}

TEST(SmlReader, DropsAListWithAFaultWhole) {
  const cReading reading = Read(Telegram({kEveryShape[2], {1, "5201", "", "", "", "6201", ""}}));
  EXPECT_EQ(reading.Lists(), 0u);
  EXPECT_EQ(reading.messages.messages, 3u);
  ASSERT_EQ(reading.events.size(), 2u);
  EXPECT_THAT(reading.events[1], testing::HasSubstr("status: expected an unsigned integer, found 0x52"));
}

TEST(SmlReader, SaysWhatIsNoMessage) {
  const cReading reading = Read(WriteSmlFrame("no message"));
  EXPECT_THAT(reading.events,
              ElementsAre("good 0+28", "fault byte 0, message: expected a message (list of 6), found 0x6E"));
  EXPECT_EQ(reading.messages.faults, 1u);
}

TEST(SmlReader, TakesTheServerIdOfTheOpenResponseWhereTheListHasNone) {
  std::string list = ListPayload({});
  const std::string open = Payload({}).substr(0, Payload({}).find(list));
  cSmlWriter to;
  to.BeginMessage("id", 0, eSmlGetListResponse);
  to.List(7);
  for (int i = 0; i < 4; ++i) to.Absent();
  to.List(0);
  to.Absent();
  to.Absent();
  to.EndMessage();
  EXPECT_THAT(ReadPayload(open + to.GetPayload()).events, ElementsAre(StartsWith("good"), kServer));
  EXPECT_THAT(ReadPayload(to.GetPayload()).events, ElementsAre(StartsWith("good"), "list "));
  EXPECT_THAT(Read(WriteSmlFrame(open) + WriteSmlFrame(to.GetPayload())).events,
              ElementsAre(StartsWith("good"), StartsWith("good"), "list "))
      << "not that of an earlier frame";
}

TEST(SmlReader, PassesOverOtherMessages) {
  cSmlWriter to;
  to.BeginMessage("id", 0, 0xFF01);
  to.List(1);
  to.Absent();
  to.EndMessage();
  const cReading reading = ReadPayload(to.GetPayload() + Payload({}));
  EXPECT_EQ(reading.messages.others, 1u);
  EXPECT_EQ(reading.messages.faults, 0u);
  EXPECT_EQ(reading.Lists(), 1u);
}

TEST(SmlReader, GivesNothingForAnyPrefixOfATelegram) {
  const std::string telegram = Telegram(kEveryShape);
  for (std::size_t size = 0; size < telegram.size(); ++size) {
    const cReading reading = Read(telegram.substr(0, size));
    EXPECT_EQ(reading.Lists() + reading.frames.good, 0u) << size;
    EXPECT_EQ(reading.frames.incomplete, size < 8 ? 0u : 1u) << size;
  }
}

TEST(SmlReader, GivesNothingForATelegramWithADamagedByteAndReadsTheNext) {
  const std::string telegram = Telegram(kEveryShape);
  for (std::size_t at = 0; at < telegram.size(); ++at) {
    for (const int flip : {0x01, 0x80, 0xFF}) {
      std::string damaged = telegram;
      damaged[at] = static_cast<char>(damaged[at] ^ flip);
      EXPECT_EQ(Read(damaged).Lists(), 0u) << at;
      EXPECT_EQ(Read(damaged + telegram).Lists(), 1u) << at;
    }
  }
}

TEST(SmlReader, AllocatesNothingPerTelegram) {
  struct cCount : cSmlSink {
    void OnList(const cSmlFrame&, const cSmlList& list) override { entries += list.entries.size(); }
    std::size_t entries = 0;
  } count;
  const auto reader = std::make_unique<cSmlReader>(count);
  const std::string stream = Telegram(kEveryShape) + "noise" + WriteSmlFrame(Bytes("1B1B1B1B")) + OrdinaryTelegram();
  const cAllocations allocations;
  for (int i = 0; i < 100; ++i) reader->Feed(stream.data(), stream.size());
  EXPECT_EQ(allocations.Get(), 0u);
  EXPECT_EQ(count.entries, 100 * (kEveryShape.size() + 6));
}
