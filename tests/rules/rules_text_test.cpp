// SPDX-License-Identifier: Apache-2.0
#include <gateway/rules/rules_text.h>

#include <gtest/gtest.h>

#include <random>

#include <gateway/rules/rules_file.h>

namespace tav::rules {
namespace {

cObisMap MapOf(std::initializer_list<cObisMapEntry> rules) {
  cObisMap map;
  for (const cObisMapEntry& rule : rules) map.Add(rule);
  return map;
}

cObisMap ReadAgain(const cObisMap& map) {
  cObisMap again;
  std::string error;
  EXPECT_TRUE(ReadRulesText(WriteRulesText(map, "rules"), "text", again, error)) << error;
  return again;
}

TEST(RulesText, IsWhatPeopleWrite) {
  EXPECT_EQ(
      WriteRulesText(MapOf({{7, "Energy", "1-0:1.8.0", "protocol=dlms"}, {3, "Power", "1-0:16.7.0", ""}}), "mine"),
      "# mine\n"
      "\n[[rule]]\nid = 3\nname = \"Power\"\nobis = \"1-0:16.7.0\"\nmap = \"\"\n"
      "\n[[rule]]\nid = 7\nname = \"Energy\"\nobis = \"1-0:1.8.0\"\nmap = \"protocol=dlms\"\n");
  EXPECT_EQ(WriteRulesText({}, "none"), "# none\n");
}

TEST(RulesText, KeepsTheCommentInOneLine) {
  const cObisMap map = MapOf({{1, "A", "1-0:1.8.0", ""}});
  EXPECT_EQ(WriteRulesText(map, "a\n[[rule]]\x7F\x01").substr(0, 16), "# a [[rule]]  \n\n");
}

TEST(RulesText, ReadAgainIsTheSameMap) {
  const std::string kNames[] = {"a \"b\" \\ c",     "line\nfeed\ttab\r", std::string("nul\0x", 5),
                                "\x01\x1F\x7F",     "'''\"\"\"",         "W\xC3\xA4rme \xE2\x82\xAC \xF0\x9F\x94\xA5",
                                "\xC2\x80\xC2\x9F", "# no comment",      "\\u0041"};
  cObisMap map;
  unsigned long long id = 0;
  for (const std::string& name : kNames) map.Add({id++, name, "1-0:1.8.0*1", "x=" + name + ",y="});
  map.Add({INT64_MAX, "largest number of TOML", "a-b:c.d.e", "protocol=dlms"});
  map.Add({static_cast<unsigned long long>(INT64_MAX) + 1, "one above", "1-0:1.8.0", "protocol=dlms"});
  map.Add({UINT64_MAX, "last", "1-0:1.8.0", "protocol=dlms"});
  EXPECT_EQ(ReadAgain(map).ToRecord(), map.ToRecord());
}

TEST(RulesText, ReadAgainIsTheSameMapForAnyUtf8) {
  std::mt19937 random(7);
  for (int round = 0; round < 300; ++round) {
    std::string name;
    for (auto i = random() % 12 + 1; i > 0; --i) {
      const auto point = static_cast<unsigned int>(random() % 0x800);
      if (point < 0x80)
        name += static_cast<char>(point);
      else
        (name += static_cast<char>(0xC0 | point >> 6)) += static_cast<char>(0x80 | (point & 0x3F));
    }
    const cObisMap map = MapOf({{random(), name, "1-0:1.8.0", "o=" + name}});
    ASSERT_EQ(ReadAgain(map).ToRecord(), map.ToRecord()) << WriteRulesText(map, "");
  }
}

TEST(RulesText, TakesWhatIsNotUtf8AsIso8859) {
  for (const char* name : {"W\xE4rme", "\xFF\xFE", "\xC3", "\xED\xA0\x80"}) {
    const cObisMap again = ReadAgain(MapOf({{1, name, "1-0:1.8.0", "protocol=dlms"}}));
    ASSERT_EQ(again.GetEntries().size(), 1u);
    EXPECT_NE(again.GetEntries().begin()->second.GetName(), "");
  }
  EXPECT_EQ(ReadAgain(MapOf({{1, "W\xE4rme", "1-0:1.8.0", "x=1"}})).ToString(), "1-0:1.8.0 W\xC3\xA4rme x=1");
}

}  // namespace
}  // namespace tav::rules
