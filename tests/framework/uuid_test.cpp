// SPDX-License-Identifier: Apache-2.0
#include <tav/framework/uuid.h>

#include <gtest/gtest.h>

#include <set>

using vorn::cUuid;

namespace {

const char* const kText = "00112233-4455-6677-8899-aabbccddeeff";

}  // namespace

TEST(Uuid, StartsNilAndNotValid) {
  const cUuid id;
  EXPECT_FALSE(id.IsValid());
  EXPECT_EQ(id.ToString(), "00000000-0000-0000-0000-000000000000");
}

TEST(Uuid, CreatesAFreshRandomValueEachTime) {
  std::set<cUuid> seen;
  for (int i = 0; i < 1000; ++i) {
    cUuid id;
    id.Create();
    EXPECT_TRUE(id.IsValid());
    EXPECT_TRUE(seen.insert(id).second);
  }
}

TEST(Uuid, CreatesVersionFour) {
  cUuid id;
  id.Create();
  EXPECT_EQ(id.GetBytes()[6] & 0xF0, 0x40);
  EXPECT_EQ(id.GetBytes()[8] & 0xC0, 0x80);
}

TEST(Uuid, ClearMakesItNil) {
  cUuid id;
  id.Create();
  id.Clear();
  EXPECT_FALSE(id.IsValid());
  EXPECT_EQ(id, cUuid());
}

TEST(Uuid, ReadsAndPrintsTheCanonicalForm) {
  cUuid id;
  ASSERT_TRUE(id.FromString(kText));
  EXPECT_EQ(id.ToString(), kText);
  EXPECT_EQ(id.GetBytes()[0], 0x00);
  EXPECT_EQ(id.GetBytes()[15], 0xFF);
}

TEST(Uuid, ReadsUpperCaseAndPrintsLowerCase) {
  cUuid id;
  ASSERT_TRUE(id.FromString("00112233-4455-6677-8899-AABBCCDDEEFF"));
  EXPECT_EQ(id.ToString(), kText);
}

TEST(Uuid, RefusesEveryOtherTextAndStaysAsItWas) {
  for (const char* text : {"", "00112233445566778899aabbccddeeff", "{00112233-4455-6677-8899-aabbccddeeff}",
                           "00112233-4455-6677-8899-aabbccddeef", "00112233-4455-6677-8899-aabbccddeeff0",
                           "0011223-34455-6677-8899-aabbccddeeff", "00112233-4455-6677-8899-aabbccddeefg",
                           "00112233-4455-6677-8899 aabbccddeeff", "00112233-4455-6677-8899-aabbccddee  ",
                           "0011223--4455-6677-8899-aabbccddeeff"}) {
    cUuid id;
    ASSERT_TRUE(id.FromString(kText));
    EXPECT_FALSE(id.FromString(text)) << text;
    EXPECT_EQ(id.ToString(), kText) << text;
  }
}

TEST(Uuid, OrdersByItsBytes) {
  cUuid low, high;
  ASSERT_TRUE(low.FromString("7f000000-0000-0000-0000-000000000000"));
  ASSERT_TRUE(high.FromString("80000000-0000-0000-0000-000000000000"));
  EXPECT_TRUE(low < high);
  EXPECT_FALSE(high < low);
  EXPECT_FALSE(low < low);
  EXPECT_TRUE(low != high);
  EXPECT_TRUE(low == cUuid(low.GetBytes()));
}
