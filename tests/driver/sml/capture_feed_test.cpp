// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/capture_feed.h>

#include <gtest/gtest.h>

#include <tav/framework/data.h>

#include "sml_telegrams.h"

namespace tav::sml {
namespace {

struct cFed {
  std::vector<std::string> events;
  std::string fault;
};

cFed Feed(std::string_view capture, std::size_t block = 0) {
  cMemory memory;
  const auto reader = std::make_unique<cSmlReader>(memory);
  cCaptureFeed feed(*reader);
  if (block == 0) block = capture.size() + 1;
  for (std::size_t at = 0; at < capture.size(); at += block) feed.Feed(capture.substr(at, block));
  feed.Finish();
  feed.Finish();  // once more changes nothing
  return {memory.events, feed.GetFault()};
}

std::string Digits(const std::string& bytes, const std::string& separator = "") {
  vorn::cData data(bytes.data(), bytes.size());
  data.SetSeparator(separator);
  return data.ToString(0);
}

std::string Lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

// That a capture gives the same as these bytes read as they are, in blocks of any size.
void ExpectSame(const std::string& capture, const std::vector<std::string>& events) {
  ASSERT_FALSE(events.empty());
  for (const std::size_t block : {0, 1, 7, 64, 256}) {
    const cFed fed = Feed(capture, block);
    EXPECT_EQ(fed.events, events) << block;
    EXPECT_EQ(fed.fault, "");
  }
}

const std::string kTelegram = OrdinaryTelegram();

}  // namespace

TEST(CaptureFeed, TakesBytesAsTheyAre) {
  ExpectSame(kTelegram, Read(kTelegram).events);
  ExpectSame("garbage" + kTelegram + kTelegram.substr(0, 50),
             Read("garbage" + kTelegram + kTelegram.substr(0, 50)).events);
}

TEST(CaptureFeed, TakesATelegramShorterThanItLooksAt) {
  const std::string little = WriteSmlFrame("");
  ASSERT_LT(little.size(), 64u);
  ExpectSame(little, Read(little).events);
}

TEST(CaptureFeed, TakesTextOfDigits) {
  const std::vector<std::string> events = Read(kTelegram).events;
  ExpectSame(Digits(kTelegram), events);
  ExpectSame(Lower(Digits(kTelegram)), events);
  ExpectSame(Digits(kTelegram, " ") + "\n", events);
  ExpectSame("\r\n\t " + Digits(kTelegram, "\r\n"), events);
}

TEST(CaptureFeed, TakesMessagesWithoutFrame) {
  const std::string payload = Payload({{PackObis(1, 0, 1, 8, 0), "", "", "621E", "5201", "6205", ""}});
  const std::vector<std::string> events = ReadPayload(payload).events;
  ExpectSame(payload, events);
  ExpectSame(Digits(payload), events);
}

TEST(CaptureFeed, TakesARecordingThatBeginsWithinAFrame) {
  const std::string bytes = Payload({}) + kTelegram + kTelegram;
  ASSERT_EQ(bytes.front(), 0x76);
  ExpectSame(bytes, Read(bytes).events);
}

TEST(CaptureFeed, TakesNoEndOfMessagesForFrames) {
  const std::string bytes(kMaxFrame + 1, 0x76);
  const cFed fed = Feed(bytes);
  EXPECT_EQ(fed.events, Read(bytes).events);
  const std::string payload(kMaxFrame, 0x76);
  EXPECT_EQ(Feed(payload).events, ReadPayload(payload).events);
}

TEST(CaptureFeed, TakesNothingForNothing) {
  for (const char* capture : {"", " ", "\n\n"}) {
    EXPECT_TRUE(Feed(capture).events.empty());
    EXPECT_EQ(Feed(capture).fault, "");
  }
}

TEST(CaptureFeed, NamesTheCharacterThatIsNoDigit) {
  const std::string digits = Digits(kTelegram);
  for (const std::size_t block : {0, 1, 256}) {
    const cFed fed = Feed(digits + "\n# a comment", block);
    EXPECT_EQ(fed.events, Read(kTelegram).events);
    EXPECT_EQ(fed.fault,
              "character " + std::to_string(digits.size() + 2) + " is no hexadecimal digit, as those before it");
  }
}

TEST(CaptureFeed, ReadsNothingBehindAFault) {
  EXPECT_EQ(Feed(Digits(kTelegram) + "x" + Digits(kTelegram)).events, Read(kTelegram).events);
}

TEST(CaptureFeed, SaysWhenADigitIsMissing) {
  const cFed fed = Feed(Digits(kTelegram) + "1");
  EXPECT_EQ(fed.events, Read(kTelegram).events);
  EXPECT_EQ(fed.fault, "the last hexadecimal digit stands alone");
}

// The text is known by its first 64 characters.
TEST(CaptureFeed, TakesTextThatIsNotAllDigitsAsBytes) {
  const cFed fed = Feed("1B1B1B1B, not digits");
  EXPECT_TRUE(fed.events.empty());
  EXPECT_EQ(fed.fault, "");
}

}  // namespace tav::sml
