// SPDX-License-Identifier: Apache-2.0
#include <tavctl/obis/obis_command.h>
#include <tavctl/obis/rule_document.h>

#include <filesystem>

#include <gateway/rules/default_rules.h>
#include <tests/tavctl/obis/rules_world.h>

namespace tav::ctl {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr const char* kRule = "[[rule]]\nid = 7\nname = \"A\"\nobis = \"1-0:1.8.0\"\nmap = \"protocol=dlms\"\n";

class ObisCommand : public TavctlWithRules {
 protected:
  void HasTwo() {
    Has(5, "Energy", "1-0:1.8.0", "protocol=dlms");
    Has(12, "W\xC3\xA4rme", "6-0:1.0.0", "protocol=mbus,dif=0C,vif=06");
  }
  std::string Rules() const { return m_rules->map.ToString(); }
};

TEST_F(ObisCommand, ListsTheRules) {
  EXPECT_EQ(Run({"obis", "list"}).err,
            "tavctl: there is no rule yet; the shipped ones: tavctl obis import --defaults\n");
  EXPECT_EQ(Run({"--json", "obis", "list"}).out, "[]\n");
  HasTwo();
  EXPECT_EQ(Run({"obis", "list"}).out,
            "ID  OBIS       NAME    MAP\n"
            "5   1-0:1.8.0  Energy  protocol=dlms\n"
            "12  6-0:1.0.0  W\xC3\xA4rme   protocol=mbus,dif=0C,vif=06\n");
  EXPECT_EQ(
      Run({"--json", "obis", "list", "--filter", "6-0"}).Json(),
      nlohmann::json::parse(R"([{"ID":12,"obis":"6-0:1.0.0","name":"Wärme","map":"protocol=mbus,dif=0C,vif=06"}])"));
}

TEST_F(ObisCommand, ListsThoseThatHoldAText) {
  HasTwo();
  for (const char* text : {"12", "0:1.0", "rme", "vif=06"}) {
    EXPECT_THAT(Run({"obis", "list", "--filter", text}).out, HasSubstr("6-0:1.0.0")) << text;
    EXPECT_THAT(Run({"obis", "list", "--filter", text}).out, Not(HasSubstr("Energy"))) << text;
  }
  EXPECT_EQ(Run({"obis", "list", "--filter", "none"}).out, "");
}

TEST_F(ObisCommand, ShowsARule) {
  HasTwo();
  EXPECT_EQ(Run({"obis", "show", "5"}).out,
            "id = 5\nname = \"Energy\"\nobis = \"1-0:1.8.0\"\nmap = \"protocol=dlms\"\n");
  EXPECT_EQ(Run({"--json", "obis", "show", "5"}).out,
            "{\"ID\":5,\"name\":\"Energy\",\"obis\":\"1-0:1.8.0\",\"map\":\"protocol=dlms\"}\n");
  const cOutput none = Run({"obis", "show", "6"});
  EXPECT_EQ(none.exit, eExitNegative);
  EXPECT_EQ(none.err, "tavctl: there is no rule 6; see tavctl obis list\n");
  const cOutput wrong = Run({"obis", "show", "five"});
  EXPECT_EQ(wrong.exit, eExitUsage);
  EXPECT_EQ(wrong.err, "tavctl: obis: RULE: expected a whole number from 0 on, found \"five\"\n");
}

TEST_F(ObisCommand, TakesEveryIdThatARuleCanHave) {
  const std::string largest = "18446744073709551615";
  ASSERT_EQ(Run({"obis", "set", largest, "--obis", "1-0:1.8.0", "--name", "A", "--map", "protocol=dlms"}).exit, 0);
  EXPECT_THAT(Run({"obis", "show", largest}).out, StartsWith("id = \"" + largest + "\"\n"));
  EXPECT_THAT(Run({"--json", "obis", "show", largest}).out, StartsWith("{\"ID\":" + largest));
  for (const char* id : {"18446744073709551616", "-1", "1.5", "0x5", "5 "})
    EXPECT_EQ(Run({"obis", "show", id}).exit, eExitUsage) << id;
  const cOutput full = Run({"obis", "set", "--obis", "1-0:2.8.0", "--name", "B", "--map", "protocol=dlms"});
  EXPECT_EQ(full.exit, eExitUsage);
  EXPECT_EQ(full.err, "tavctl: obis set: there is no ID above " + largest + "; give one\n");
}

TEST_F(ObisCommand, MakesARuleBehindAllOthers) {
  const std::vector<std::string> words = {"obis",   "set",    "--obis", "1-0:2.8.0",
                                          "--name", "Export", "--map",  "protocol=dlms"};
  EXPECT_EQ(Run(words).err, "tavctl: set rule 1: 1-0:2.8.0 Export protocol=dlms\n");
  Has(12, "Heat", "6-0:1.0.0", "protocol=mbus,dif=0C,vif=06");
  EXPECT_EQ(Run({"obis", "set", "--obis", "1-0:1.8.0", "--name", "Import", "--map", "protocol=dlms"}).exit, eExitDone);
  EXPECT_TRUE(m_rules->map.GetEntries().Contains(13));
}

TEST_F(ObisCommand, LeavesTheIdsOfTheShippedRulesFree) {
  const std::vector<std::string> words = {"obis",   "set",  "--obis", "1-0:2.8.0*7",
                                          "--name", "Mine", "--map",  "protocol=dlms"};
  Has(rules::kFirstDefaultId - 1, "Edge", "1-0:1.8.0", "protocol=dlms");
  ASSERT_EQ(Run(words).exit, eExitDone);
  EXPECT_TRUE(m_rules->map.GetEntries().Contains(rules::kEndOfDefaultIds));
  m_rules->map = rules::MakeDefaultRules();
  ASSERT_EQ(Run(words).exit, eExitDone);
  EXPECT_TRUE(m_rules->map.GetEntries().Contains(rules::kEndOfDefaultIds));
  ASSERT_EQ(Run(words).exit, eExitDone);
  EXPECT_TRUE(m_rules->map.GetEntries().Contains(rules::kEndOfDefaultIds + 1));
}

TEST_F(ObisCommand, KeepsWhatIsNotNamed) {
  HasTwo();
  EXPECT_EQ(Run({"obis", "set", "5", "--name", "Import"}).exit, eExitDone);
  EXPECT_THAT(Rules(), StartsWith("1-0:1.8.0 Import protocol=dlms; "));
  EXPECT_EQ(Run({"obis", "set", "5", "--map", "protocol=modbus,register=7"}).exit, eExitDone);
  EXPECT_THAT(Rules(), StartsWith("1-0:1.8.0 Import protocol=modbus,register=7; "));
  EXPECT_EQ(Run({"obis", "set", "5", "--obis", "1-0:2.8.0"}).exit, eExitDone);
  EXPECT_THAT(Rules(), StartsWith("1-0:2.8.0 Import protocol=modbus,register=7; "));
}

TEST_F(ObisCommand, WantsAllOfANewRule) {
  const cOutput output = Run({"obis", "set", "5", "--obis", "1-0:1.8.0", "--name", "A"});
  EXPECT_EQ(output.exit, eExitUsage);
  EXPECT_EQ(output.err, "tavctl: obis set: rule 5 is new: --map is missing\n");
  EXPECT_EQ(Rules(), "");
}

TEST_F(ObisCommand, RefusesARuleThatNoValueFits) {
  HasTwo();
  const cOutput form = Run({"obis", "set", "12", "--map", "protocol=mbus,dif=0c,vif=06"});
  EXPECT_EQ(form.exit, eExitNegative);
  EXPECT_EQ(form.err, "tavctl: rule 12: dif is compared as a text, and '0c' is never it; write '0C'\n");
  EXPECT_EQ(Run({"obis", "set", "12", "--map", ""}).exit, eExitNegative);
  EXPECT_EQ(Run({"obis", "set", "12", "--obis", "1.8.0"}).exit, eExitNegative);
  EXPECT_THAT(Rules(), HasSubstr("vif=06"));
}

TEST_F(ObisCommand, SaysWhichRulesANewOneMeets) {
  HasTwo();
  EXPECT_THAT(Run({"obis", "set", "9", "--obis", "1-0:1.8.0", "--name", "House", "--map", "protocol=dlms"}).err,
              HasSubstr("warning: rule 9: is never used, since rule 5 (Energy)"));
  EXPECT_THAT(Run({"obis", "set", "1", "--obis", "1-0:1.8.0", "--name", "House", "--map", "protocol=dlms"}).err,
              HasSubstr("warning: rule 5: is never used, since rule 1 (House)"));
}

TEST_F(ObisCommand, SaysWhyTheServiceRefuses) {
  HasTwo();
  m_rules->refusing = true;
  const cOutput output = Run({"obis", "set", "5", "--name", "B"});
  EXPECT_EQ(output.exit, eExitRefused);
  EXPECT_EQ(output.err, "tavctl: service 'obis' refused set-rule: the rule is not taken\n");
  EXPECT_EQ(Run({"obis", "import", "--defaults"}).exit, eExitRefused);
}

TEST_F(ObisCommand, DeletesRules) {
  HasTwo();
  Has(13, "Third", "1-0:3.8.0", "protocol=dlms");
  const cOutput unknown = Run({"obis", "delete", "5", "6"});
  EXPECT_EQ(unknown.exit, eExitNegative);
  EXPECT_EQ(m_rules->map.GetEntries().size(), 3u) << "nothing goes when one is not there";
  EXPECT_EQ(Run({"obis", "delete", "5", "13"}).err,
            "tavctl: deleted rule 5: 1-0:1.8.0 Energy protocol=dlms\n"
            "tavctl: deleted rule 13: 1-0:3.8.0 Third protocol=dlms\n");
  EXPECT_EQ(m_rules->map.GetEntries().size(), 1u);
}

TEST_F(ObisCommand, ChecksTheRulesOfTheService) {
  HasTwo();
  EXPECT_EQ(Run({"obis", "check"}).err, "tavctl: nothing is wrong with 2 rule(s)\n");
  EXPECT_EQ(Run({"obis", "check"}).exit, eExitDone);
  Has(20, "Import", "1-0:1.8.0", "protocol=dlms");
  const cOutput output = Run({"obis", "check"});
  EXPECT_EQ(output.exit, eExitDone) << "a warning is no error";
  EXPECT_THAT(output.out,
              StartsWith("LEVEL    RULE  OTHER  FINDING\nwarning    20      5  is never used, since rule 5"));
  Has(21, "Bad", "1-0:9.8.0", "protocol=mbus");
  EXPECT_EQ(Run({"obis", "check"}).exit, eExitNegative);
  const auto json = Run({"--json", "obis", "check"}).Json();
  EXPECT_EQ(json[0]["level"], "warning");
  EXPECT_EQ(json[0]["ID"], 20);
  EXPECT_EQ(json[0]["other"], 5);
  EXPECT_EQ(json[1]["other"], nullptr);
}

TEST_F(ObisCommand, ChecksAFileWithoutAService) {
  m_rules.reset();
  EXPECT_EQ(Run({"obis", "check", File(kRule)}).exit, eExitDone);
  EXPECT_EQ(Run({"obis", "check", "-"}, kRule).exit, eExitDone);
  const std::string file = File(std::string(kRule) + "\n" + kRule);
  const cOutput output = Run({"obis", "check", file});
  EXPECT_EQ(output.exit, eExitNegative);
  EXPECT_EQ(output.out,
            "LEVEL  RULE  OTHER  FINDING                                                       PLACE\n"
            "error     7      7  an earlier rule has this ID too; give one of them another ID  " +
                file + ":7\n")
      << "by its line";
}

TEST_F(ObisCommand, NamesFileAndLineOfWhatIsNoRule) {
  const std::string file = File("[[rule]]\nname = 5\n");
  const cOutput output = Run({"obis", "check", file});
  EXPECT_EQ(output.exit, eExitNegative);
  EXPECT_EQ(output.err, "tavctl: " + file + ":1: key 'name' is no text\n");
  EXPECT_EQ(Run({"obis", "check", m_folder.File("none")}).exit, eExitFile);
  EXPECT_THAT(Run({"obis", "import", "-"}, "x").err, StartsWith("tavctl: standard input:1: "));
  std::filesystem::resize_file(file, kMaxRulesFile + 1);
  EXPECT_EQ(Run({"obis", "check", file}).exit, eExitFile);
}

TEST_F(ObisCommand, ImportsAFile) {
  HasTwo();
  const std::string file = File(kRule);
  EXPECT_EQ(Run({"obis", "import", file}).err, "tavctl: took 1 rule(s) of " + file + ": 1 change(s)\n");
  EXPECT_EQ(m_rules->map.GetEntries().size(), 3u);
  EXPECT_EQ(Run({"obis", "import", file}).err, "tavctl: took 1 rule(s) of " + file + ": 0 change(s)\n");
  EXPECT_EQ(Run({"obis", "import", "-", "--replace"}, kRule).err,
            "tavctl: took 1 rule(s) of standard input: 2 change(s)\n");
  EXPECT_EQ(Rules(), "1-0:1.8.0 A protocol=dlms");
}

TEST_F(ObisCommand, SaysWhatAnImportWouldChange) {
  HasTwo();
  const std::string file = File(kRule);
  EXPECT_EQ(Run({"obis", "import", file, "--dry-run"}).err,
            "tavctl: would take 1 rule(s) of " + file + ": 1 change(s)\n");
  EXPECT_EQ(Run({"obis", "import", file, "--dry-run", "--replace"}).err,
            "tavctl: would take 1 rule(s) of " + file + ": 3 change(s)\n");
  EXPECT_EQ(m_rules->applied, 0u);
}

TEST_F(ObisCommand, ImportsNothingOfAFileWithAnError) {
  const std::string file = File(std::string(kRule) + "[[rule]]\nname = \"B\"\nobis = \"1.8\"\n");
  const cOutput output = Run({"obis", "import", file});
  EXPECT_EQ(output.exit, eExitNegative);
  EXPECT_EQ(output.err, "tavctl: " + file +
                            ":6: error: rule 8: '1.8' is no OBIS identifier; write A-B:C.D.E, such as 1-0:1.8.0\n"
                            "tavctl: " +
                            file +
                            ":6: error: rule 8: the map text is empty, and the OBIS service refuses such a rule; "
                            "write such as protocol=dlms\n"
                            "tavctl: nothing was changed\n");
  EXPECT_EQ(m_rules->applied, 0u);
}

TEST_F(ObisCommand, ImportsAFileWithWarnings) {
  const std::string file =
      File(std::string(kRule) + "[[rule]]\nname = \"B\"\nobis = \"1-0:1.8.0\"\nmap = \"protocol=dlms\"\n");
  const cOutput output = Run({"obis", "import", file});
  EXPECT_EQ(output.exit, eExitDone);
  EXPECT_THAT(output.err, HasSubstr(":6: warning: rule 8: is never used"));
  EXPECT_EQ(m_rules->map.GetEntries().size(), 2u);
}

TEST_F(ObisCommand, ImportsTheShippedRules) {
  EXPECT_EQ(Run({"obis", "import", "--defaults"}).exit, eExitDone);
  EXPECT_EQ(m_rules->map.ToRecord(), rules::MakeDefaultRules().ToRecord());
  EXPECT_EQ(Run({"obis", "check"}).exit, eExitDone);
}

TEST_F(ObisCommand, ImportsAFileOrTheShippedRules) {
  EXPECT_EQ(Run({"obis", "import"}).exit, eExitUsage);
  EXPECT_EQ(Run({"obis", "import", "--defaults", File(kRule)}).exit, eExitUsage);
  EXPECT_THAT(Run({"obis", "import"}).err, HasSubstr("expected FILE or --defaults, found none"));
}

TEST_F(ObisCommand, ExportsWhatItImports) {
  HasTwo();
  const std::string text = Run({"obis", "export"}).out;
  EXPECT_THAT(text, StartsWith("# OBIS mapping rules of a gateway"));
  EXPECT_EQ(Run({"obis", "export", "-"}).out, text);
  const cOutput output = Run({"obis", "export", m_folder.File("out.toml")});
  EXPECT_EQ(output.err, "tavctl: wrote " + m_folder.File("out.toml") + ": 2 rule(s)\n");
  const std::string before = Rules();
  m_rules->map.Clear();
  EXPECT_EQ(Run({"obis", "import", m_folder.File("out.toml")}).exit, eExitDone);
  EXPECT_EQ(Rules(), before);
  EXPECT_EQ(Run({"--json", "obis", "export"}).Json(), Run({"--json", "obis", "list"}).Json());
}

TEST_F(ObisCommand, SaysThatThereIsNoService) {
  m_rules.reset();
  for (const std::vector<std::string>& words : std::vector<std::vector<std::string>>{
           {"obis", "list"}, {"obis", "check"}, {"obis", "export"}, {"obis", "import", "--defaults", "--dry-run"}}) {
    const cOutput output = Run(words);
    EXPECT_EQ(output.exit, eExitUnreachable) << words[1];
    EXPECT_THAT(output.err, StartsWith("tavctl: service 'obis': ")) << words[1];
  }
}

TEST_F(ObisCommand, ShowsNoControlCharacters) {
  ASSERT_TRUE(m_rules->map.Add({1, "a\x1b[2J", "1-0:1.8.0", "protocol=dlms"}));
  EXPECT_THAT(Run({"obis", "list"}).out, HasSubstr("a\\x1b[2J"));
  EXPECT_THAT(Run({"obis", "delete", "1"}).err, Not(HasSubstr("\x1b")));
}

}  // namespace
}  // namespace tav::ctl
