// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/sml_transport.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "sml_telegrams.h"

using namespace tav::sml;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const std::string kStart = Bytes("1B1B1B1B01010101");
const std::string kEscape = Bytes("1B1B1B1B");

struct cFrames {
  std::vector<std::string> frames;    // "good 0+16"
  std::vector<std::string> payloads;  // of every frame
  std::vector<std::string> faults;    // of those that are not good
  cSmlCounts counts;
};

cFrames Frames(const std::string& stream, std::size_t block = 0) {
  constexpr const char* kKinds[] = {"good ", "bad ", "incomplete "};
  cFrames found;
  const auto transport = std::make_unique<cSmlTransport>([&](const cSmlFrame& frame) {
    found.frames.push_back(kKinds[frame.kind] + std::to_string(frame.offset) + "+" + std::to_string(frame.size));
    found.payloads.emplace_back(frame.payload.begin(), frame.payload.end());
    if (frame.kind != eFrameGood) found.faults.emplace_back(frame.fault);
  });
  if (block == 0) block = std::max<std::size_t>(stream.size(), 1);
  for (std::size_t at = 0; at < stream.size(); at += block) {
    const std::vector<char> exact(stream.begin() + static_cast<std::ptrdiff_t>(at),
                                  stream.begin() + static_cast<std::ptrdiff_t>(std::min(stream.size(), at + block)));
    transport->Feed(exact.data(), exact.size());
  }
  transport->Finish();
  found.counts = transport->GetCounts();
  return found;
}

void ExpectCounts(const cSmlCounts& counts, std::uint64_t good, std::uint64_t bad, std::uint64_t incomplete,
                  std::uint64_t skipped) {
  EXPECT_EQ(counts.good, good);
  EXPECT_EQ(counts.bad, bad);
  EXPECT_EQ(counts.incomplete, incomplete);
  EXPECT_EQ(counts.skippedBytes, skipped);
}

}  // namespace

TEST(SmlTransport, FindsFramesOneAfterTheOther) {
  const cFrames found = Frames(WriteSmlFrame("abcd") + WriteSmlFrame("efghijk"));
  EXPECT_THAT(found.frames, ElementsAre("good 0+20", "good 20+24"));
  EXPECT_THAT(found.payloads, ElementsAre("abcd", "efghijk"));
  ExpectCounts(found.counts, 2, 0, 0, 0);
}

TEST(SmlTransport, TakesOffEveryPadding) {
  for (std::size_t size = 0; size <= 8; ++size) {
    const std::string payload(size, 'x');
    EXPECT_THAT(Frames(WriteSmlFrame(payload)).payloads, ElementsAre(payload));
  }
}

TEST(SmlTransport, GivesBackEveryPayloadWithEscapesInIt) {
  // Runs of one to twenty 1B at every place, also right before the end sequence.
  for (std::size_t before = 0; before < 5; ++before) {
    for (std::size_t run = 1; run <= 20; ++run) {
      for (std::size_t behind = 0; behind < 5; ++behind) {
        const std::string payload = std::string(before, 'x') + std::string(run, '\x1B') + std::string(behind, 'y');
        for (const std::size_t block : {0u, 1u, 3u}) {
          const cFrames found = Frames(WriteSmlFrame(payload), block);
          EXPECT_THAT(found.payloads, ElementsAre(payload)) << before << " " << run << " " << behind << " " << block;
          EXPECT_EQ(found.counts.good, 1u);
        }
      }
    }
  }
}

TEST(SmlTransport, GivesBackControlBytesInThePayload) {
  for (const char* digits :
       {"1B1B1B1B01010101", "1B1B1B1B1A00AABB", "1B1B1B1B1B1B1B1B01010101", "011B1B1B1B1A", "1A1A1A1A"}) {
    const std::string payload = Bytes(digits);
    EXPECT_THAT(Frames(WriteSmlFrame(payload)).payloads, ElementsAre(payload)) << digits;
  }
}

TEST(SmlTransport, TakesWhatASenderThatDoublesOnlyAlignedSequencesSends) {
  // An unaligned run of four stands in the frame as it is; no control bytes follow it.
  std::string frame = kStart + Bytes("00001B1B1B1B0000") + kEscape + Bytes("1A00");
  const std::uint16_t crc = Crc16X25(View(frame));
  frame += static_cast<char>(crc & 0xFF);
  frame += static_cast<char>(crc >> 8);
  EXPECT_THAT(Frames(frame).payloads, ElementsAre(Bytes("00001B1B1B1B0000")));
}

TEST(SmlTransport, AcceptsEitherChecksumAndSaysWhich) {
  for (const eCrcKind kind : {eCrcX25, eCrcKermit}) {
    eCrcKind seen = eCrcNone;
    const auto transport = std::make_unique<cSmlTransport>([&](const cSmlFrame& frame) { seen = frame.crc; });
    const std::string frame = WriteSmlFrame("abcd", kind);
    transport->Feed(frame.data(), frame.size());
    EXPECT_EQ(seen, kind);
  }
}

TEST(SmlTransport, CallsAWrongChecksumBad) {
  std::string frame = WriteSmlFrame("abcd");
  frame.back() = static_cast<char>(frame.back() ^ 1);
  const cFrames found = Frames(frame + WriteSmlFrame("efgh"));
  EXPECT_THAT(found.frames, ElementsAre("bad 0+20", "good 20+20"));
  EXPECT_THAT(found.faults, ElementsAre("checksum wrong"));
  EXPECT_THAT(found.payloads, ElementsAre("abcd", "efgh")) << "the bytes of a bad frame are shown too";
}

TEST(SmlTransport, CallsAnImpossiblePaddingBad) {
  const auto withPadding = [](const std::string& content, char padding) {
    std::string frame = kStart + content + kEscape + '\x1A' + padding;
    const std::uint16_t crc = Crc16X25(View(frame));
    return frame + static_cast<char>(crc & 0xFF) + static_cast<char>(crc >> 8);
  };
  EXPECT_EQ(Frames(withPadding("abcd", 3)).payloads[0], "a");
  EXPECT_THAT(Frames(withPadding("abcd", 4)).faults, ElementsAre("padding count wrong"));
  EXPECT_THAT(Frames(withPadding("abcd", '\xFF')).faults, ElementsAre("padding count wrong"));
  EXPECT_THAT(Frames(withPadding("", 1)).faults, ElementsAre("padding count wrong"));
  EXPECT_THAT(Frames(withPadding("", 0)).frames, ElementsAre("good 0+16"));
}

TEST(SmlTransport, CountsWhatBelongsToNoFrame) {
  const std::string frame = WriteSmlFrame("abcd");
  const cFrames found = Frames("garbage" + frame + kEscape + frame + kStart.substr(0, 5));
  EXPECT_THAT(found.frames, ElementsAre("good 7+20", "good 31+20"));
  ExpectCounts(found.counts, 2, 0, 0, 7 + 4 + 5);
  ExpectCounts(Frames("").counts, 0, 0, 0, 0);
  ExpectCounts(Frames(frame.substr(8)).counts, 0, 0, 0, 12);
}

TEST(SmlTransport, FindsAStartBehindEscapesThatAreNone) {
  for (std::size_t run = 0; run < 12; ++run) {
    const cFrames found = Frames(std::string(run, '\x1B') + WriteSmlFrame("abcd"));
    EXPECT_EQ(found.counts.good, 1u) << run;
    EXPECT_EQ(found.counts.skippedBytes, run);
  }
}

TEST(SmlTransport, BeginsAnewAtAStartWithinAFrame) {
  const std::string frame = WriteSmlFrame("abcd");
  const cFrames found = Frames(frame.substr(0, 10) + frame);
  EXPECT_THAT(found.frames, ElementsAre("incomplete 0+10", "good 10+20"));
  EXPECT_THAT(found.faults, ElementsAre("a new start sequence within the frame"));
  ExpectCounts(Frames(kStart + frame).counts, 1, 0, 1, 0);
}

TEST(SmlTransport, CallsAnOpenFrameAtTheEndIncomplete) {
  const std::string frame = WriteSmlFrame("abcd");
  for (std::size_t size = 8; size < frame.size(); ++size) {
    const cFrames found = Frames(frame.substr(0, size));
    EXPECT_THAT(found.frames, ElementsAre("incomplete 0+" + std::to_string(size)));
    EXPECT_THAT(found.faults, ElementsAre("the stream ended"));
    ExpectCounts(found.counts, 0, 0, 1, 0);
  }
}

TEST(SmlTransport, ReadsTheFrameBehindOneThatWasCutAnywhere) {
  const std::string frame = WriteSmlFrame(std::string("ab\x1B\x1B\x1B\x1B", 6) + std::string(5, '\x1B'));
  const std::string next = WriteSmlFrame("efgh");
  for (std::size_t size = 0; size < frame.size(); ++size) {
    const cFrames found = Frames(frame.substr(0, size) + next);
    EXPECT_EQ(found.counts.good, 1u) << size;
    EXPECT_EQ(found.frames.back(), "good " + std::to_string(size) + "+20") << size;
    EXPECT_LE(found.counts.bad + found.counts.incomplete, 1u) << size;
  }
}

TEST(SmlTransport, ReadsTheFrameBehindOneThatLostOrGainedAByte) {
  const std::string frame = OrdinaryTelegram();
  for (std::size_t at = 0; at < frame.size(); ++at) {
    std::string lost = frame, gained = frame, changed = frame;
    lost.erase(at, 1);
    gained.insert(at, 1, '\x1B');
    changed[at] = static_cast<char>(~changed[at]);
    for (const std::string& damaged : {lost, gained, changed}) {
      const cFrames found = Frames(damaged + frame);
      EXPECT_EQ(found.frames.back(), "good " + std::to_string(damaged.size()) + "+" + std::to_string(frame.size()))
          << at;
    }
  }
}

TEST(SmlTransport, SurvivesEveryDamagedByte) {
  const std::string frame = WriteSmlFrame(Bytes("001B1B1B1B1B1B1B1B1B1A01"));
  for (std::size_t at = 0; at < frame.size(); ++at) {
    for (int byte = 0; byte < 256; ++byte) {
      if (frame[at] == static_cast<char>(byte)) continue;
      std::string damaged = frame;
      damaged[at] = static_cast<char>(byte);
      const cFrames found = Frames(damaged + frame);
      EXPECT_EQ(found.counts.good, 1u) << at << " " << byte;
    }
  }
}

TEST(SmlTransport, FindsTheSameInBlocksOfAnySize) {
  const std::string frame = OrdinaryTelegram(), small = WriteSmlFrame(std::string(13, '\x1B'));
  std::string bad = frame;
  bad[40] = static_cast<char>(bad[40] ^ 1);
  const std::string stream =
      "noise" + frame + bad + frame.substr(0, 100) + small + kEscape + frame + small.substr(0, 17);
  const cFrames whole = Frames(stream);
  ExpectCounts(whole.counts, 3, 1, 2, 5 + 4);
  for (std::size_t block = 1; block < 60; ++block) {
    const cFrames parts = Frames(stream, block);
    EXPECT_EQ(parts.frames, whole.frames) << block;
    EXPECT_EQ(parts.payloads, whole.payloads) << block;
    EXPECT_EQ(parts.counts.skippedBytes, whole.counts.skippedBytes) << block;
  }
}

TEST(SmlTransport, KeepsToItsLimit) {
  const auto frameOf = [](std::size_t size) { return WriteSmlFrame(std::string(size - 16, 'x')); };
  const std::string next = WriteSmlFrame("abcd");
  for (const std::size_t block : {0u, 1000u}) {
    EXPECT_EQ(Frames(frameOf(kMaxFrame - 4), block).counts.good, 1u);
    EXPECT_EQ(Frames(frameOf(kMaxFrame), block).counts.good, 1u);
    const cFrames above = Frames(frameOf(kMaxFrame + 4) + next, block);
    EXPECT_THAT(above.frames, ElementsAre("incomplete 0+" + std::to_string(kMaxFrame),
                                          "good " + std::to_string(kMaxFrame + 4) + "+20"));
    EXPECT_THAT(above.faults, ElementsAre("no end sequence within 64 KiB"));
    ExpectCounts(above.counts, 1, 0, 1, 4);
  }
}

TEST(SmlTransport, ReadsEachByteOfHostileInputAFewTimesOnly) {
  // Every twelve bytes look like a start that was hidden in an escaped sequence.
  std::string hostile = kStart;
  while (hostile.size() < 400000) hostile += kEscape + kEscape + Bytes("01010101");
  const cFrames found = Frames(hostile + WriteSmlFrame("abcd"));
  EXPECT_EQ(found.counts.good, 1u);
}

TEST(SmlTransport, GoesOnBehindTheEndOfAStream) {
  std::vector<std::uint64_t> offsets;
  const auto transport =
      std::make_unique<cSmlTransport>([&](const cSmlFrame& frame) { offsets.push_back(frame.offset); });
  const std::string frame = WriteSmlFrame("abcd");
  transport->Feed(frame.data(), 13);
  transport->Finish();
  transport->Feed(frame.data(), frame.size());
  EXPECT_THAT(offsets, ElementsAre(0, 13));
  ExpectCounts(transport->GetCounts(), 1, 0, 1, 0);
  transport->Finish();
  EXPECT_EQ(offsets.size(), 2u);
}
