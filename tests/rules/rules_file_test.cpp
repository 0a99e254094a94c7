// SPDX-License-Identifier: Apache-2.0
#include <gateway/rules/rules_file.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include <tests/support/temp_folder.h>

namespace tav::rules {
namespace {

class RulesFile : public testing::Test {
 protected:
  bool Read(const std::string& text) {
    std::ofstream(File()) << text;
    return ReadRulesFile(File(), m_map, m_error);
  }
  // Of a text that must be refused; the file's name stands for itself.
  std::string Error(const std::string& text) {
    EXPECT_FALSE(Read(text)) << text;
    const std::size_t at = m_error.find(File());
    return at == std::string::npos ? m_error : m_error.replace(at, File().size(), "FILE");
  }
  std::string File() const { return m_folder.File("rules.toml"); }

  cTempFolder m_folder;
  cObisMap m_map;
  std::string m_error;
};

TEST_F(RulesFile, GivesItsRulesToTheMap) {
  ASSERT_TRUE(Read(R"(
# what the house wants to know
[[rule]]
id = 7
name = "Energy import"
obis = "1-0:1.8.0"

[[rule]]
name = "Energy export"
obis = "1-0:2.8.0"
map = "protocol=dlms"

[[rule]]
id = 3
name = "Power"
obis = "1-0:16.7.0"
map = ""
)")) << m_error;
  EXPECT_EQ(m_map.ToString(), "1-0:16.7.0 Power; 1-0:1.8.0 Energy import; 1-0:2.8.0 Energy export protocol=dlms");
  EXPECT_TRUE(m_map.GetEntries().Contains(3));
  EXPECT_TRUE(m_map.GetEntries().Contains(7));
  EXPECT_TRUE(m_map.GetEntries().Contains(8));  // counts on
}

TEST_F(RulesFile, NumbersFromOneWithoutIds) {
  ASSERT_TRUE(Read("[[rule]]\nname='A'\nobis='1-0:1.8.0'\n[[rule]]\nname='B'\nobis='1-0:2.8.0'\n")) << m_error;
  EXPECT_TRUE(m_map.GetEntries().Contains(1));
  EXPECT_TRUE(m_map.GetEntries().Contains(2));
}

TEST_F(RulesFile, TakesAnIdAboveTheNumbersOfTomlAsAText) {
  ASSERT_TRUE(
      Read("[[rule]]\nid='9223372036854775808'\nname='A'\nobis='1-0:1.8.0'\n"
           "[[rule]]\nname='B'\nobis='1-0:2.8.0'\n[[rule]]\nid=9223372036854775807\nname='C'\nobis='1-0:3.8.0'\n"))
      << m_error;
  EXPECT_EQ(m_map.ToString(), "1-0:3.8.0 C; 1-0:1.8.0 A; 1-0:2.8.0 B");
  EXPECT_TRUE(m_map.GetEntries().Contains(9223372036854775809u));
}

TEST_F(RulesFile, GivesRulesAsTheyStandThereWithTheirLines) {
  std::vector<cRawRule> rules;
  ASSERT_TRUE(ReadRawRules("[[rule]]\nname=''\nobis='1.8'\nmap='x'\n\n[[rule]]\nid=1\nname='B'\nobis='1-0:2.8.0'\n",
                           "text", rules, m_error))
      << m_error;
  ASSERT_EQ(rules.size(), 2u);
  EXPECT_EQ(rules[0].id, 1u);
  EXPECT_EQ(rules[0].obis, "1.8") << "right or wrong";
  EXPECT_EQ(rules[0].map, "x");
  EXPECT_EQ(rules[0].place, "text:1");
  EXPECT_EQ(rules[1].id, 1u) << "a second time";
  EXPECT_EQ(rules[1].place, "text:6");
}

TEST_F(RulesFile, LeavesTheRulesAloneWhenTheTextIsRefused) {
  std::vector<cRawRule> rules(3);
  EXPECT_FALSE(ReadRawRules("[[rule]]\nname='A'\nobis='1-0:1.8.0'\n[[rule]]\n", "text", rules, m_error));
  EXPECT_EQ(m_error, "text:4: key 'name' is missing");
  EXPECT_EQ(rules.size(), 3u);
}

TEST_F(RulesFile, ReplacesWhatTheMapHeld) {
  m_map.Add(cObisMapEntry(99, "Old", "1-0:9.8.0", ""));
  ASSERT_TRUE(Read("[[rule]]\nname='A'\nobis='1-0:1.8.0'\n")) << m_error;
  EXPECT_EQ(m_map.ToString(), "1-0:1.8.0 A");
}

TEST_F(RulesFile, NamesLineAndFaultOfWhatItRefuses) {
  const struct {
    const char* text;
    const char* error;
  } kCases[] = {
      {"", "FILE: no [[rule]] in it"},
      {"# nothing\n", "FILE: no [[rule]] in it"},
      {"rule = []\n", "FILE: no [[rule]] in it"},
      {"name = 'A'\n", "FILE:1: expected [[rule]] tables only, found 'name'"},
      {"[[rule]]\nname='A'\nobis='1-0:1.8.0'\n[general]\nx=1\n",
       "FILE:4: expected [[rule]] tables only, found 'general'"},
      {"[rule]\nname='A'\n", "FILE:1: expected [[rule]] tables only, found 'rule'"},
      {"rule = ['A']\n", "FILE:1: a rule is a table"},
      {"[[rule]]\nobis='1-0:1.8.0'\n", "FILE:1: key 'name' is missing"},
      {"\n\n[[rule]]\nname='A'\n", "FILE:3: key 'obis' is missing"},
      {"[[rule]]\nname=1\nobis='1-0:1.8.0'\n", "FILE:1: key 'name' is no text"},
      {"[[rule]]\nname='A'\nobis=1.8\n", "FILE:1: key 'obis' is no text"},
      {"[[rule]]\nname='A'\nobis='1-0:1.8.0'\nmap=true\n", "FILE:1: key 'map' is no text"},
      {"[[rule]]\nid='1'\nname='A'\nobis='1-0:1.8.0'\n", "FILE:1: key 'id' is no whole number from 0"},
      {"[[rule]]\nid=-1\nname='A'\nobis='1-0:1.8.0'\n", "FILE:1: key 'id' is no whole number from 0"},
      {"[[rule]]\nid='9223372036854775807'\nname='A'\nobis='1-0:1.8.0'\n",
       "FILE:1: key 'id' is no whole number from 0"},
      {"[[rule]]\nid='18446744073709551616'\nname='A'\nobis='1-0:1.8.0'\n",
       "FILE:1: key 'id' is no whole number from 0"},
      {"[[rule]]\nid='18446744073709551615'\nname='A'\nobis='1-0:1.8.0'\n[[rule]]\nname='B'\nobis='1-0:2.8.0'\n",
       "FILE:5: there is no id behind 18446744073709551615; give this rule one"},
      {"[[rule]]\nid=1.5\nname='A'\nobis='1-0:1.8.0'\n", "FILE:1: key 'id' is no whole number from 0"},
      {"[[rule]]\nname='A'\nobis='1-0:1.8.0'\ncomment='x'\n", "FILE:1: unknown key 'comment'"},
      {"[[rule]]\nname=''\nobis='1-0:1.8.0'\n", "FILE:1: rule for '1-0:1.8.0': missing parameters"},
      {"[[rule]]\nname='A'\nobis='1.8.0'\n", "FILE:1: rule for '1.8.0': obis-id invalid"},
      {"[[rule]]\nname='A'\nobis='1-0:1.8.0'\nmap='mbus'\n", "FILE:1: rule for '1-0:1.8.0': syntax error in mapping"},
      {"[[rule]]\nname='A'\nobis='1-0:1.8.0'\nmap='protocol=zigbee'\n",
       "FILE:1: rule for '1-0:1.8.0': unknown protocol"},
      {"[[rule]]\nname='A'\nobis='1-0:1.8.0'\n\n[[rule]]\nid=1\nname='B'\nobis='1-0:2.8.0'\n",
       "FILE:5: a second rule with id 1"},
  };
  for (const auto& [text, error] : kCases) EXPECT_EQ(Error(text), error) << text;
}

TEST_F(RulesFile, NamesThePlaceWhereItIsNoToml) {
  EXPECT_EQ(Error("[[rule]]\nname='A'\nobis=\n").rfind("FILE:3: ", 0), 0u) << m_error;
  EXPECT_EQ(Error("[[rule]]\nname='A'\nname='B'\n").rfind("FILE:3: ", 0), 0u) << m_error;
  EXPECT_EQ(Error(std::string("[[rule]]\nname='\xFF\xFE'\n")).rfind("FILE:2: ", 0), 0u) << m_error;
}

TEST_F(RulesFile, SaysWhenItCannotBeRead) {
  EXPECT_FALSE(ReadRulesFile(m_folder.File("missing.toml"), m_map, m_error));
  EXPECT_EQ(m_error, m_folder.File("missing.toml") + ": No such file or directory");
  EXPECT_FALSE(ReadRulesFile(m_folder.GetPath(), m_map, m_error));
  EXPECT_EQ(m_error, m_folder.GetPath() + ": Is a directory");
}

TEST_F(RulesFile, LeavesTheMapAloneWhenItIsRefused) {
  m_map.Add(cObisMapEntry(99, "Old", "1-0:9.8.0", ""));
  EXPECT_FALSE(Read("[[rule]]\nname='A'\nobis='1-0:1.8.0'\n[[rule]]\nname='B'\n"));
  EXPECT_EQ(m_map.ToString(), "1-0:9.8.0 Old");
}

// Found by fuzzing: the TOML library asserts that a name begins here.
TEST_F(RulesFile, RefusesGarbageInAHeader) {
  EXPECT_FALSE(Read(std::string("[[\1\0\0\0\0\0\0\x1brue[lr", 16)));
  EXPECT_NE(m_error, "");
}

}  // namespace
}  // namespace tav::rules
