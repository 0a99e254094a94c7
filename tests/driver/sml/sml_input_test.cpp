// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/sml_input.h>

#include <gtest/gtest.h>

#include "sml_telegrams.h"

using namespace tav::sml;

namespace {

struct cCase {
  std::string bytes;
  bool payload;
  bool sml;
};

}  // namespace

TEST(SmlInput, KnowsSmlAndMessagesWithoutATransportFrame) {
  const cCase kCases[] = {
      {Payload({}), true, true},
      {Bytes("760500"), true, true},
      {Telegram({}), false, true},
      {Payload({}) + Telegram({}), false, true},  // the end of a telegram and a whole one
      {Bytes("00 1B1B1B1B 1A000000"), false, true},
      {"", false, false},
      {Bytes("1A00"), false, false},
      {Bytes("6803036808017A8316"), false, false},
  };
  for (const cCase& c : kCases) {
    EXPECT_EQ(IsPayload(View(c.bytes)), c.payload) << testing::PrintToString(c.bytes);
    EXPECT_EQ(IsSml(View(c.bytes)), c.sml) << testing::PrintToString(c.bytes);
  }
}
