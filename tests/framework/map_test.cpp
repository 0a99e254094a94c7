// SPDX-License-Identifier: Apache-2.0
#include <tav/framework/map.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

using Map = vorn::cMap<std::string, int>;

TEST(Map, GivesTheValueOfAKey) {
  const Map map{{"a", 1}, {"b", 2}};
  int value = 0;
  EXPECT_TRUE(map.Get("b", value));
  EXPECT_EQ(value, 2);
}

TEST(Map, LeavesTheValueAloneWhenTheKeyIsAbsent) {
  const Map map{{"a", 1}};
  int value = 42;
  EXPECT_FALSE(map.Get("b", value));
  EXPECT_EQ(value, 42);
  EXPECT_EQ(map.size(), 1u);
}

TEST(Map, SetsInPlaceOfAnEarlierValue) {
  Map map;
  map.Set("a", 1);
  map.Set("a", 2);
  EXPECT_EQ(map.size(), 1u);
  EXPECT_EQ(map.at("a"), 2);
}

TEST(Map, RemovesAndSaysWhetherThereWasOne) {
  Map map{{"a", 1}};
  EXPECT_TRUE(map.Contains("a"));
  EXPECT_TRUE(map.Remove("a"));
  EXPECT_FALSE(map.Contains("a"));
  EXPECT_FALSE(map.Remove("a"));
}

TEST(Map, IsOrderedAndAStandardMap) {
  Map map;
  for (const char* key : {"c", "a", "b"}) map.Set(key, 0);
  std::vector<std::string> keys;
  for (const auto& [key, value] : map) keys.push_back(key);
  EXPECT_EQ(keys, (std::vector<std::string>{"a", "b", "c"}));
  const std::map<std::string, int>& standard = map;
  EXPECT_EQ(standard.size(), 3u);
}
