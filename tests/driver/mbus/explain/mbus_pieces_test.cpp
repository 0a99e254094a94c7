// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/explain/mbus_pieces.h>

#include <gtest/gtest.h>

#include <tests/driver/mbus/mbus_frames.h>

using namespace tav::mbus;

namespace {

const std::string kShort = FromHex("10 5B 05 60 16");

// "noise 0+3; frame 3+5; broken 8+9, byte 7: the checksum is wrong (00)".
std::string Pieces(const std::string& capture) {
  constexpr const char* kKinds[] = {"frame ", "broken ", "cut ", "noise "};
  cMBusPieces pieces(View(capture));
  std::string text;
  for (cMBusPiece piece; pieces.Next(piece);)
    text += (text.empty() ? "" : "; ") + std::string(kKinds[piece.kind]) + std::to_string(piece.offset) + "+" +
            std::to_string(piece.frame.bytes.size()) +
            (piece.kind == ePieceBroken || piece.kind == ePieceCut ? ", " + piece.fault.ToString() : "");
  return text;
}

std::string With(std::string bytes, std::size_t at, int byte) {
  bytes[at] = static_cast<char>(byte);
  return bytes;
}

}  // namespace

TEST(MBusPieces, AreFramesAndWhatIsBetweenThem) {
  const std::string frame = LongFrame("08 05 78 01 13 07");
  const struct {
    std::string capture;
    const char* pieces;
  } kCases[] = {
      {"", ""},
      {"\xE5", "frame 0+1"},
      {"\xE5" + kShort + frame, "frame 0+1; frame 1+5; frame 6+12"},
      {"xy" + frame + "z" + kShort, "noise 0+2; frame 2+12; noise 14+1; frame 15+5"},
      {FromHex("D0 40 46 85 3F E5 01 0B 11"), "noise 0+9"},
      {FromHex("68 01 02 03 10 20"), "noise 0+6"},
      {frame.substr(4) + frame, "noise 0+8; frame 8+12"},
      {With(frame, 10, 0), "broken 0+12, byte 10: the checksum is wrong (00)"},
      {With(frame, 11, 0), "broken 0+12, byte 11: the frame has no stop byte (00)"},
      {With(frame, 2, 7), "broken 0+12, byte 2: the two lengths differ (07)"},
      {With(frame, 3, 0), "broken 0+12, byte 3: the second start byte is wrong (00)"},
      {FromHex("68 00 00 68 08 16"), "broken 0+6, byte 1: the length is below 3 (00)"},
      {With(kShort, 3, 0), "broken 0+5, byte 3: the checksum is wrong (00)"},
      {frame.substr(0, 9), "cut 0+9, byte 9: the frame ends too early"},
      {frame.substr(0, 3), "cut 0+3, byte 3: the frame ends too early"},
      {frame.substr(0, 2), "noise 0+2"},
      {kShort.substr(0, 4), "noise 0+4"},
      {frame.substr(0, 8) + frame, "broken 0+8, byte 8: another frame begins within the frame (68); frame 8+12"},
  };
  for (const auto& c : kCases) EXPECT_EQ(Pieces(c.capture), c.pieces) << Hex(c.capture);
}

TEST(MBusPieces, HaveTheFieldsOfADamagedFrameAsFarAsItsBytesGo) {
  const std::string cut = LongFrame("08 05 78 01 13 07").substr(0, 9);
  cMBusPieces pieces(View(cut));
  cMBusPiece piece;
  ASSERT_TRUE(pieces.Next(piece));
  EXPECT_EQ(piece.frame.kind, eFrameLong);
  EXPECT_EQ(piece.frame.control, 0x08);
  EXPECT_EQ(piece.frame.address, 5);
  EXPECT_EQ(piece.frame.information, 0x78);
  EXPECT_EQ(piece.frame.data.size(), 2u);
}

TEST(MBusPieces, LeaveNoByteOutOfAnyDamagedStream) {
  const std::string stream = "\xE5" + kShort + OrdinaryAnswer() + "noise" + LongFrame("08 05 78 01 13 07");
  for (std::size_t at = 0; at < stream.size(); ++at)
    for (const std::string& capture :
         {With(stream, at, ~stream[at]), stream.substr(at), stream.substr(0, at), std::string(stream).erase(at, 1)}) {
      cMBusPieces pieces(View(capture));
      std::size_t next = 0;
      for (cMBusPiece piece; pieces.Next(piece);) {
        EXPECT_EQ(piece.offset, next) << at;
        EXPECT_FALSE(piece.frame.bytes.empty()) << at;
        next += piece.frame.bytes.size();
      }
      EXPECT_EQ(next, capture.size()) << at;
    }
}
