// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/sml_input.h>

#include <gtest/gtest.h>

#include "sml_telegrams.h"

using namespace tav::sml;

namespace {

std::string Text(cBytes bytes) { return {bytes.begin(), bytes.end()}; }

}  // namespace

TEST(SmlInput, TakesPairsOfDigitsForText) {
  for (const char* text : {"1B1B0aFf", "1b 1b 0A ff", "1B1B\r\n0AFF\n", " \t1B1B0AFF"}) {
    const cSmlInput input(text);
    EXPECT_TRUE(input.IsHexText()) << text;
    EXPECT_EQ(Text(input.GetBytes()), Bytes("1B1B0AFF")) << text;
  }
}

TEST(SmlInput, TakesEverythingElseForBytes) {
  for (const std::string& text : {std::string(), std::string(" \n"), std::string("1B1"), std::string("1B1G"),
                                  std::string("1 B1B"), Bytes("1B1B1B1B01010101"), std::string("0x1B")}) {
    const cSmlInput input(text);
    EXPECT_FALSE(input.IsHexText()) << text;
    EXPECT_EQ(Text(input.GetBytes()), text);
  }
}

TEST(SmlInput, KnowsMessagesWithoutATransportFrame) {
  EXPECT_TRUE(cSmlInput(Payload({})).IsPayload());
  EXPECT_TRUE(cSmlInput("76 05 00").IsPayload());
  EXPECT_FALSE(cSmlInput(Telegram({})).IsPayload());
  EXPECT_FALSE(cSmlInput(Payload({}) + Telegram({})).IsPayload()) << "the end of a telegram and a whole one";
  EXPECT_FALSE(cSmlInput("").IsPayload());
  EXPECT_FALSE(cSmlInput("1A 00").IsPayload());
}
