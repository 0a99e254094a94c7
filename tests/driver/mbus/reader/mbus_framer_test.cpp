// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/reader/mbus_framer.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tests/driver/mbus/mbus_bytes.h>

using namespace tav::mbus;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::vector<std::uint8_t> operator+(std::vector<std::uint8_t> left, const std::vector<std::uint8_t>& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

// Takes the frames out until there are no more.
void Drain(cMBusFramer& framer, std::vector<std::string>& frames) {
  for (cMBusFrame frame; framer.Next(frame);) frames.push_back(Hex(frame.bytes));
}

// Feeds blocks of that many bytes, whatever of them fits at a time.
std::vector<std::string> Frames(cMBusFramer& framer, const std::vector<std::uint8_t>& stream, std::size_t block) {
  std::vector<std::string> frames;
  for (std::size_t at = 0; at < stream.size();) {
    const auto end = stream.begin() + static_cast<std::ptrdiff_t>(std::min(stream.size(), at + block));
    const std::vector<std::uint8_t> exact(stream.begin() + static_cast<std::ptrdiff_t>(at), end);
    at += framer.Feed(exact);
    Drain(framer, frames);
  }
  return frames;
}

std::vector<std::string> Frames(const std::string& digits) {
  cMBusFramer framer;
  const std::vector<std::uint8_t> bytes = Bytes(digits);
  return Frames(framer, bytes, bytes.size());
}

const std::string kShort = "107BFE7916";
const std::string kControl = "6803036853FEBD0E16";

}  // namespace

TEST(MBusFramer, FindsTheSameFramesHoweverTheBytesCome) {
  const std::vector<std::uint8_t> longest = LongFrame("08 01 72" + Repeated("16", 252));
  const std::vector<std::uint8_t> stream = Bytes("00 FF E5 16 68 68 10 10") + longest + Bytes("E5" + kShort + "68 02") +
                                           longest + Bytes(kControl + "10 7B FE 79 17" + kShort + "68");
  for (std::size_t block = 1; block <= stream.size() + 1; ++block) {
    cMBusFramer framer;
    EXPECT_THAT(Frames(framer, stream, block),
                ElementsAre("E5", Hex(longest), "E5", kShort, Hex(longest), kControl, kShort))
        << block;
    EXPECT_EQ(framer.GetSkipped(), 14u) << block;
    EXPECT_TRUE(framer.HasPart());
  }
}

TEST(MBusFramer, SaysWhyTheLastByteWasPassedOver) {
  cMBusFramer framer;
  Frames(framer, Bytes("68 03 04 10 7B FE 78 16 E5"), 9);
  EXPECT_EQ(framer.GetSkipped(), 8u);
  EXPECT_EQ(framer.GetFault().ToString(), "byte 0: no frame starts with this byte (16)");
  framer.Clear();
  EXPECT_EQ(framer.GetSkipped(), 0u);
  EXPECT_EQ(framer.GetFault().ToString(), "byte 0: ");
  Frames(framer, Bytes("10 7B FE 78 16"), 5);
  EXPECT_EQ(framer.GetSkipped(), 5u);
}

TEST(MBusFramer, NoiseBeforeAndBetweenFramesCostsNone) {
  for (const char* noise : {"00", "16", "FF FF FF", "68 00", "10 00 00 00 00", "68 68", "68 03 03 00", "E4", "10"}) {
    EXPECT_THAT(Frames(std::string(noise) + kControl + noise + kControl + kShort),
                ElementsAre(kControl, kControl, kShort))
        << noise;
  }
}

TEST(MBusFramer, AFrameWithAWrongByteDoesNotHideTheNext) {
  EXPECT_THAT(Frames("68 03 03 68 53 FE BD 0F 16" + kControl), ElementsAre(kControl));
  EXPECT_THAT(Frames("68 03 03 68 53 FE BD 0E 17" + kControl), ElementsAre(kControl));
}

TEST(MBusFramer, ABeginningWaitsForItsRest) {
  cMBusFramer framer;
  EXPECT_FALSE(framer.HasPart());
  EXPECT_THAT(Frames(framer, Bytes("68 03 03 68 53 FE"), 6), IsEmpty());
  EXPECT_TRUE(framer.HasPart());
  EXPECT_THAT(Frames(framer, Bytes("BD 0E 16"), 3), ElementsAre(kControl));
  EXPECT_FALSE(framer.HasPart());
}

TEST(MBusFramer, ClearForgetsABeginning) {
  cMBusFramer framer;
  Frames(framer, Bytes("68 03 03 68 53"), 5);
  framer.Clear();
  EXPECT_FALSE(framer.HasPart());
  EXPECT_THAT(Frames(framer, Bytes(kShort), 5), ElementsAre(kShort));
  EXPECT_EQ(framer.GetSkipped(), 0u);
}

TEST(MBusFramer, TakesWhatThereIsRoomFor) {
  const std::size_t room = 2 * kMostFrame;
  for (const std::size_t size : {room - 1, room, room + 1}) {
    cMBusFramer framer;
    const std::size_t taken = std::min(size, room);
    EXPECT_EQ(framer.Feed(Bytes(Repeated("E5", size))), taken);
    EXPECT_EQ(framer.Feed(Bytes("E5 E5")), std::min<std::size_t>(room - taken, 2));
    std::vector<std::string> frames;
    Drain(framer, frames);
    EXPECT_EQ(frames.size(), room);
    EXPECT_EQ(framer.Feed(Bytes("E5 E5")), 2u);
  }
}

TEST(MBusFramer, BehindTheLongestBeginningThereIsRoomForAFrame) {
  cMBusFramer framer;
  const std::vector<std::uint8_t> longest = LongFrame("08 01 72" + Repeated("16", 252));
  const std::vector<std::uint8_t> beginning(longest.begin(), longest.end() - 1);
  EXPECT_EQ(framer.Feed(longest), kMostFrame);
  EXPECT_EQ(framer.Feed(beginning), beginning.size());
  std::vector<std::string> frames;
  Drain(framer, frames);
  EXPECT_EQ(framer.Feed(Bytes("16" + Repeated("E5", kMostFrame - 1))), kMostFrame);
  Drain(framer, frames);
  EXPECT_EQ(frames.size(), 2u + kMostFrame - 1);
}

TEST(MBusFramer, AnEmptyPieceChangesNothing) {
  cMBusFramer framer;
  cMBusFrame frame;
  EXPECT_EQ(framer.Feed({}), 0u);
  EXPECT_FALSE(framer.Next(frame));
  EXPECT_FALSE(framer.HasPart());
}
