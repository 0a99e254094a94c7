// SPDX-License-Identifier: Apache-2.0
// Explaining captures and values by mapping rules: those of the service, or of a file.
#include <tavctl/obis/rule_query.h>

#include <gateway/driver/sml/sml_simulator.h>
#include <gateway/rules/default_rules.h>
#include <tests/tavctl/obis/rules_world.h>

namespace tav::ctl {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class ExplainByRules : public TavctlWithRules {
 protected:
  void HasThree() {
    Has(5, "Energy", "1-0:1.8.0", "protocol=dlms");
    Has(7, "Water", "8-0:1.0.0", "protocol=mbus,medium=w,dif=0C,vif=13");
    Has(9, "Power", "1-0:16.7.0", "protocol=modbus,register=40087");
  }
  static std::string Telegram() { return sml::cSmlSimulator({}).Telegram(kNoon + 100'000'000); }
  static nlohmann::json RuleOf(const cOutput& output, const std::string& obis) {
    const auto document = output.Json();
    for (const auto& value : document["telegrams"][0]["values"])
      if (value["obis"] == obis) return value["rule"];
    return "no such value";
  }
};

TEST_F(ExplainByRules, NamesTheValuesOfACaptureByTheRulesOfTheService) {
  HasThree();
  const cOutput output = Run({"--json", "explain", "-"}, Telegram());
  EXPECT_EQ(output.exit, eExitDone) << output.err;
  EXPECT_EQ(RuleOf(output, "1-0:1.8.0*255"), nlohmann::json::parse(R"({"id":5,"name":"Energy","obis":"1-0:1.8.0"})"));
  EXPECT_EQ(RuleOf(output, "1-0:0.0.9*255"), nullptr);
  EXPECT_THAT(
      Run({"explain", "-"}, Telegram()).out,
      AllOf(HasSubstr("1-0:1.8.0*255 Energy = "),
            HasSubstr("\n      rule 5 (1-0:1.8.0 Energy protocol=dlms) names it\n"), HasSubstr("no rule names it")));
}

TEST_F(ExplainByRules, NamesByAFileInPlaceOfTheService) {
  HasThree();
  const std::string file = File("[[rule]]\nid = 2\nname = \"Mine\"\nobis = \"1-0:1.8.0\"\n");
  EXPECT_EQ(RuleOf(Run({"--json", "explain", "-", "--rules", file}, Telegram()), "1-0:1.8.0*255")["name"], "Mine");
  const cOutput wrong = Run({"explain", "-", "--rules", File("[[rule]]\nname = \"Mine\"\n")}, Telegram());
  EXPECT_EQ(wrong.exit, eExitNegative);
  EXPECT_THAT(wrong.err, HasSubstr("rules.toml:1: key 'obis' is missing"));
}

TEST_F(ExplainByRules, NamesByNoRulesWhenToldSoOrWhenThereAreNone) {
  HasThree();
  const cOutput told = Run({"explain", "-", "--no-rules"}, Telegram());
  EXPECT_THAT(told.out, Not(HasSubstr("rule ")));
  m_rules.reset();
  const cOutput none = Run({"explain", "-"}, Telegram());
  EXPECT_EQ(none.out, told.out);
  EXPECT_EQ(none.err, "");
  EXPECT_EQ(none.exit, eExitDone);
  EXPECT_EQ(RuleOf(Run({"--json", "explain", "-"}, Telegram()), "1-0:1.8.0*255"), nullptr);
}

TEST_F(ExplainByRules, TellsWhichRuleNamesAValue) {
  HasThree();
  const cOutput output = Run({"explain", "--value", "1-1:1.8.0*255"});
  EXPECT_EQ(output.exit, eExitDone);
  EXPECT_THAT(output.out,
              StartsWith("FIT    ID  OBIS        NAME    MAP                                   WHY\n"
                         "names   5  1-0:1.8.0   Energy  protocol=dlms                         names it\n"));
  const auto json = Run({"--json", "explain", "--value", "1-0:1.8.0"}).Json();
  EXPECT_EQ(json.size(), 3u);
  EXPECT_EQ(json[0], nlohmann::json::parse(R"({"fit":"names","ID":5,"obis":"1-0:1.8.0","name":"Energy",
                                               "map":"protocol=dlms","why":"names it"})"));
}

TEST_F(ExplainByRules, AsksByTheProtocolOfTheValue) {
  HasThree();
  const struct {
    std::vector<std::string> words;
    int id;  // 0: none
  } kCases[] = {
      {{"--protocol", "dlms", "--value", "1-0:1.8.0"}, 5},
      {{"--protocol", "dlms", "--value", "1-1:1.8.0"}, 0},
      {{"--protocol", "mbus", "--medium", "w", "--dif", "0C", "--vif", "13"}, 7},
      {{"--protocol", "mbus", "--medium", "w", "--dif", "0c", "--vif", "13"}, 7},
      {{"--protocol", "mbus", "--medium", "W", "--dif", "0C", "--vif", "13"}, 0},
      {{"--protocol", "modbus", "--meteraddr", "3", "--register", "40087"}, 9},
      {{"--protocol", "modbus", "--meteraddr", "3"}, 0},
  };
  for (const auto& [words, id] : kCases) {
    std::vector<std::string> all = {"--json", "explain"};
    all.insert(all.end(), words.begin(), words.end());
    const cOutput output = Run(all);
    EXPECT_EQ(output.exit, id != 0 ? eExitDone : eExitNegative) << testing::PrintToString(words);
    const auto json = output.Json();
    EXPECT_EQ(json[0]["fit"], id != 0 ? "names" : "no");
    if (id != 0) {
      EXPECT_EQ(json[0]["ID"], id);
    }
  }
  const cOutput none = Run({"explain", "--protocol", "mbus", "--medium", "W", "--dif", "0C", "--vif", "13"});
  EXPECT_THAT(none.out, HasSubstr("medium: the rule is for w, the value is W"));
  EXPECT_EQ(none.err, "tavctl: no rule names it\n");
  EXPECT_THAT(Run({"explain", "--protocol", "modbus", "--value", "1-0:1.8.0", "--register", "1"}).err,
              StartsWith("tavctl: --value is not looked at: modbus values"));
}

TEST_F(ExplainByRules, TellsOfTheNearestOnlyUnlessAskedForAll) {
  m_rules->map = rules::MakeDefaultRules();
  const std::vector<std::string> words = {"--json", "explain", "--value", "1-0:1.99.0"};
  EXPECT_EQ(Run(words).Json().size(), cRuleQuery::kNearest);
  std::vector<std::string> all = words;
  all.emplace_back("--all");
  EXPECT_EQ(Run(all).Json().size(), m_rules->map.GetEntries().size());
}

TEST_F(ExplainByRules, ReadsRulesOfAFileWithoutAService) {
  m_rules.reset();
  const std::string file = File("[[rule]]\nname = \"Mine\"\nobis = \"1-0:1.8.0\"\n");
  EXPECT_THAT(Run({"explain", "--value", "1-0:1.8.0", "--rules", file}).out, HasSubstr("names it"));
  const cOutput none = Run({"explain", "--value", "1-0:1.8.0"});
  EXPECT_EQ(none.exit, eExitUnreachable);
  EXPECT_THAT(none.err, StartsWith("tavctl: service 'obis': "));
}

TEST_F(ExplainByRules, RefusesWhatIsNoValue) {
  const struct {
    std::vector<std::string> words;
    const char* error;
  } kCases[] = {
      {{}, "expected FILE or --value, found none; see tavctl explain --help"},
      {{"-", "--value", "1-0:1.8.0"}, "expected FILE or --value, found both; see tavctl explain --help"},
      {{"-", "--no-rules", "--rules", "x"}, "--no-rules does not go with --rules"},
      {{"--value", "1-0:1.8.0", "--no-rules"}, "--no-rules does not go with --value"},
      {{"--value", "energy"}, "--value: expected an OBIS identifier, such as 1-0:1.8.0, found \"energy\""},
      {{"--protocol", "dlms"}, "--value: expected an OBIS identifier, such as 1-0:1.8.0, found \"\""},
      {{"--value", "1-0:1.8.0", "--protocol", "sml"}, "--protocol: expected dlms, mbus or modbus, found \"sml\""},
      {{"--protocol", "mbus", "--dif", "0"}, "--dif: expected two hexadecimal digits a byte, found \"0\""},
      {{"--protocol", "mbus", "--vif", "XY"}, "--vif: expected two hexadecimal digits a byte, found \"XY\""},
      {{"--protocol", "modbus", "--vif", "13"}, "--dif and --vif are for --protocol mbus"},
      {{"--protocol", "mbus", "--register", "1"}, "--register is for --protocol modbus"},
      {{"--value", "1-0:1.8.0", "--medium", "E"}, "--meteraddr and --medium are for --protocol mbus or modbus"},
  };
  for (const auto& [words, error] : kCases) {
    std::vector<std::string> all = {"explain"};
    all.insert(all.end(), words.begin(), words.end());
    const cOutput output = Run(all, "x");
    EXPECT_EQ(output.exit, eExitUsage) << error;
    EXPECT_EQ(output.err, std::string("tavctl: explain: ") + error + "\n");
  }
}

}  // namespace
}  // namespace tav::ctl
