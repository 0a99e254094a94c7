// SPDX-License-Identifier: Apache-2.0
#include <tavctl/sql_command.h>

#include <tests/tavctl/tavctl_world.h>

namespace tav::ctl {
namespace {

using testing::HasSubstr;

class SqlCommand : public TavctlWithGateway {
 protected:
  void SetUp() override {
    TavctlWithGateway::SetUp();
    for (unsigned int i = 0; i < 5; ++i) Store(Reading("M", kNoon + i, {{"1-0:1.8.0", std::to_string(i)}}));
  }
};

TEST_F(SqlCommand, ShowsTheRowsUnderTheNamesOfTheirColumns) {
  EXPECT_EQ(Run({"sql", "SELECT meter, obis, value FROM reading_values ORDER BY time LIMIT 2"}).out,
            "meter  obis       value\nM      1-0:1.8.0  0\nM      1-0:1.8.0  1\n");
}

TEST_F(SqlCommand, KeepsTheTypesOfCellsInJson) {
  EXPECT_EQ(
      Run({"--json", "sql", "SELECT 1 a, -5 b, 9007199254740993 c, 1.5 d, 't' e, x'00ff' f, NULL g, 2 a"}).Json(),
      nlohmann::json::parse(R"([{"a":1,"b":-5,"c":9007199254740993,"d":"1.5","e":"t","f":"00FF","g":null,"a#8":2}])"));
}

TEST_F(SqlCommand, EndsAtTheLimitAndSaysSo) {
  const std::string all = "SELECT value FROM reading_values";
  const cOutput output = Run({"--json", "sql", all, "--limit", "3"});
  EXPECT_EQ(output.Json().size(), 3u);
  EXPECT_EQ(output.err, "tavctl: there are more rows; --limit 0 lists all\n");
  EXPECT_EQ(Run({"sql", all, "--limit", "5"}).err, "");
  EXPECT_EQ(Run({"--json", "sql", all, "--limit", "0"}).Json().size(), 5u);
}

TEST_F(SqlCommand, ChangesOnlyWhatItIsAskedToChange) {
  const std::string change = "UPDATE meter_config SET vendor='V'";
  const cOutput refused = Run({"sql", change});
  EXPECT_EQ(refused.exit, eExitRefused);
  EXPECT_THAT(refused.err, HasSubstr("tavctl: service 'data' refused sql-exec: "));
  Run({"interface", "set", "SIM", "enabled=true"});
  Run({"meter", "set", "M", "interface-name=SIM", "interface-protocol=SML"});
  const cOutput done = Run({"sql", "--write", change});
  EXPECT_EQ(done.exit, eExitDone) << done.err;
  EXPECT_EQ(done.err, "tavctl: 1 row(s) changed\n");
  EXPECT_EQ(Run({"--json", "meter", "show", "M"}).Json()["vendor"], "V");
}

TEST_F(SqlCommand, TellsWhatIsWrongWithAStatement) {
  EXPECT_THAT(Run({"sql", "SELEC 1"}).err, HasSubstr("syntax error"));
  EXPECT_EQ(Run({"sql", "SELEC 1"}).exit, eExitRefused);
  EXPECT_EQ(Run({"--json", "sql", "SELECT 1 WHERE 0"}).out, "[]\n");
}

}  // namespace
}  // namespace tav::ctl
