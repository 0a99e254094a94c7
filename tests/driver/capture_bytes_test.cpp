// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/capture_bytes.h>

#include <gtest/gtest.h>

using tav::cCaptureBytes;

namespace {

std::string Text(const cCaptureBytes& capture) { return {capture.Get().begin(), capture.Get().end()}; }

const std::string kBytes("\x1B\x1B\x0A\xFF");

}  // namespace

TEST(CaptureBytes, TakesPairsOfDigitsForText) {
  for (const char* text : {"1B1B0aFf", "1b 1b 0A ff", "1B1B\r\n0AFF\n", " \t1B1B0AFF"}) {
    const cCaptureBytes capture(text);
    EXPECT_TRUE(capture.IsHexText()) << text;
    EXPECT_EQ(Text(capture), kBytes) << text;
  }
}

TEST(CaptureBytes, TakesEverythingElseForBytes) {
  for (const std::string& text : {std::string(), std::string(" \n"), std::string("1B1"), std::string("1B1G"),
                                  std::string("1 B1B"), kBytes, std::string("0x1B")}) {
    const cCaptureBytes capture(text);
    EXPECT_FALSE(capture.IsHexText()) << text;
    EXPECT_EQ(Text(capture), text);
  }
}

TEST(CaptureBytes, AreWrittenAsDigitsAgain) {
  EXPECT_EQ(tav::HexDigits(cCaptureBytes(kBytes).Get()), "1B1B0AFF");
  EXPECT_EQ(tav::HexDigits({}), "");
}
