// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/reader/mbus_frame.h>

#include <gtest/gtest.h>

#include <tests/driver/mbus/mbus_bytes.h>

using namespace tav::mbus;

namespace {

const std::string kAnswer = "68 05 05 68 08 01 78 0F 5A EA 16";
const std::string kLongest = "08 FA 72" + Repeated("A5", 252);

// "" for a whole frame, else why not.
std::string Cause(const std::vector<std::uint8_t>& bytes, eFrameResult expected) {
  cMBusFrame frame;
  cMBusFault fault;
  EXPECT_EQ(ReadFrame(bytes, frame, fault), expected) << Hex(bytes);
  if (expected == eFrameWhole) return "";
  EXPECT_EQ(frame.kind, eFrameAck) << Hex(bytes);
  EXPECT_TRUE(frame.bytes.empty()) << Hex(bytes);
  return fault.ToString();
}

std::string Broken(const std::string& digits) { return Cause(Bytes(digits), eFrameBroken); }

// All frames that a bus may see.
std::vector<std::vector<std::uint8_t>> Forms() {
  return {Bytes("E5"), ShortFrame(0x40, 0x01), Bytes(kAnswer), LongFrame("53 FE BD"), LongFrame(kLongest)};
}

}  // namespace

TEST(MBusFrame, ReadsTheSingleCharacter) {
  cMBusFrame frame;
  cMBusFault fault;
  for (const char* digits : {"E5", "E5 E5", "E5 10 40"}) {
    const std::vector<std::uint8_t> bytes = Bytes(digits);
    ASSERT_EQ(ReadFrame(bytes, frame, fault), eFrameWhole);
    EXPECT_EQ(frame.kind, eFrameAck);
    EXPECT_EQ(Hex(frame.bytes), "E5");
    EXPECT_EQ(frame.control, 0);
    EXPECT_TRUE(frame.data.empty());
  }
}

TEST(MBusFrame, ReadsAShortFrame) {
  const std::vector<std::uint8_t> bytes = Bytes("10 7B FE 79 16 00");
  cMBusFrame frame;
  cMBusFault fault;
  ASSERT_EQ(ReadFrame(bytes, frame, fault), eFrameWhole);
  EXPECT_EQ(frame.kind, eFrameShort);
  EXPECT_EQ(frame.control, eReqUd2 | kFcb);
  EXPECT_EQ(frame.address, kBroadcastReply);
  EXPECT_EQ(Hex(frame.bytes), "107BFE7916");
  EXPECT_TRUE(frame.data.empty());
}

TEST(MBusFrame, ReadsALongFrame) {
  const std::vector<std::uint8_t> bytes = Bytes(kAnswer + "E5");
  cMBusFrame frame;
  cMBusFault fault;
  ASSERT_EQ(ReadFrame(bytes, frame, fault), eFrameWhole);
  EXPECT_EQ(frame.kind, eFrameLong);
  EXPECT_EQ(frame.control, eRspUd);
  EXPECT_EQ(frame.address, 1);
  EXPECT_EQ(frame.information, 0x78);
  EXPECT_EQ(Hex(frame.data), "0F5A");
  EXPECT_EQ(frame.data.data(), bytes.data() + kDataOffset);
  EXPECT_EQ(frame.bytes.size(), bytes.size() - 1);
}

TEST(MBusFrame, ReadsAControlFrameWithoutData) {
  const std::vector<std::uint8_t> bytes = Bytes("68 03 03 68 53 FE BD 0E 16");
  cMBusFrame frame;
  cMBusFault fault;
  ASSERT_EQ(ReadFrame(bytes, frame, fault), eFrameWhole);
  EXPECT_EQ(frame.kind, eFrameLong);
  EXPECT_EQ(frame.information, 0xBD);
  EXPECT_TRUE(frame.data.empty());
}

TEST(MBusFrame, ReadsTheLongestFrame) {
  const std::vector<std::uint8_t> bytes = LongFrame(kLongest);
  ASSERT_EQ(bytes.size(), kMostFrame);
  cMBusFrame frame;
  cMBusFault fault;
  ASSERT_EQ(ReadFrame(bytes, frame, fault), eFrameWhole);
  EXPECT_EQ(frame.data.size(), 252u);
  EXPECT_EQ(frame.bytes.size(), kMostFrame);
}

TEST(MBusFrame, EveryPrefixIsPartialAndNamesTheFirstByteThatIsMissing) {
  for (const std::vector<std::uint8_t>& whole : Forms())
    for (std::size_t size = 0; size < whole.size(); ++size) {
      const std::vector<std::uint8_t> prefix(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
      EXPECT_EQ(Cause(prefix, eFramePartial), "byte " + std::to_string(size) + ": the frame ends too early");
    }
}

TEST(MBusFrame, RefusesWhatNoFrameStartsWith) {
  for (unsigned int start = 0; start < 256; ++start)
    if (start != kAck && start != kShortStart && start != kLongStart) {
      EXPECT_EQ(Broken(HexOf(start)), "byte 0: no frame starts with this byte (" + HexOf(start) + ")");
    }
}

TEST(MBusFrame, RefusesALengthThatHasNoRoomForItsFields) {
  for (const char* digits : {"68 00", "68 01", "68 02", "68 02 02 68 08 01 09 16"})
    EXPECT_EQ(Broken(digits), "byte 1: the length is below 3 (" + std::string(digits + 3, 2) + ")");
  EXPECT_EQ(Cause(Bytes("68 03"), eFramePartial), "byte 2: the frame ends too early");
}

TEST(MBusFrame, RefusesABeginningAsSoonAsItIsWrong) {
  EXPECT_EQ(Broken("68 05 06"), "byte 2: the two lengths differ (06)");
  EXPECT_EQ(Broken("68 05 05 10"), "byte 3: the second start byte is wrong (10)");
  EXPECT_EQ(Broken("68 FF FF 69"), "byte 3: the second start byte is wrong (69)");
}

TEST(MBusFrame, RefusesAnyWrongByteOfAShortFrame) {
  const std::vector<std::uint8_t> whole = ShortFrame(0x5B, 0x05);
  for (std::size_t at = 1; at < whole.size(); ++at)
    for (unsigned int wrong = 1; wrong < 256; ++wrong) {
      std::vector<std::uint8_t> bytes = whole;
      bytes[at] = static_cast<std::uint8_t>(bytes[at] + wrong);
      const std::string expected = at == 4 ? "byte 4: the frame has no stop byte (" + HexOf(bytes[4]) + ")"
                                           : "byte 3: the checksum is wrong (" + HexOf(bytes[3]) + ")";
      EXPECT_EQ(Cause(bytes, eFrameBroken), expected);
    }
}

TEST(MBusFrame, RefusesAnyWrongByteOfALongFrame) {
  const std::vector<std::uint8_t> whole = Bytes(kAnswer);
  for (std::size_t at = 1; at < whole.size(); ++at)
    for (unsigned int wrong = 1; wrong < 256; ++wrong) {
      std::vector<std::uint8_t> bytes = whole;
      bytes[at] = static_cast<std::uint8_t>(bytes[at] + wrong);
      const std::string cause = Cause(bytes, eFrameBroken);
      const auto expected = [&](std::size_t offset, const std::string& what) {
        return "byte " + std::to_string(offset) + ": " + what + " (" + HexOf(bytes[offset]) + ")";
      };
      if (at == 1 && bytes[1] < 3) {
        EXPECT_EQ(cause, expected(1, "the length is below 3"));
      } else if (at <= 2) {
        EXPECT_EQ(cause, expected(2, "the two lengths differ"));
      } else if (at == 3) {
        EXPECT_EQ(cause, expected(3, "the second start byte is wrong"));
      } else if (at == whole.size() - 1) {
        EXPECT_EQ(cause, expected(at, "the frame has no stop byte"));
      } else {
        EXPECT_EQ(cause, expected(9, "the checksum is wrong"));
      }
    }
}

TEST(MBusFrame, ChecksumsAreSumsOfOneByte) {
  EXPECT_EQ(Checksum({}), 0);
  EXPECT_EQ(Checksum(Bytes("FF 01")), 0);
  EXPECT_EQ(Checksum(Bytes(Repeated("FF", 252))), 0x04);
}
