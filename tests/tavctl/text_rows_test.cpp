// SPDX-License-Identifier: Apache-2.0
#include <tavctl/text_rows.h>

#include <gtest/gtest.h>

#include <sstream>

#include <tests/support/time_zone.h>

namespace tav::ctl {
namespace {

constexpr cColumn kColumns[] = {
    {"name", "NAME"}, {"value", "VALUE", eForm::Number}, {"unit", "", eForm::Unit}, {"time", "TIME", eForm::Time}};

vorn::cRecord Row(const std::string& name, const std::string& value, const std::string& unit, unsigned int time) {
  vorn::cRecord row;
  row.AppendTextPar("name", name);
  row.AppendTextPar("value", value);
  row.AppendTextPar("unit", unit);
  row.AppendUIntPar("time", time);
  return row;
}

class TextRows : public testing::Test {
 protected:
  cTimeZone zone;
  std::ostringstream out;
};

TEST_F(TextRows, AlignsColumnsAndKeepsUnitsBesideNumbers) {
  cTextRows rows(out, kColumns, false);
  rows.Write(Row("energy", "1234.5", "kWh", 1'709'294'400));
  rows.Write(Row("p", "7", "W", 0));
  rows.End();
  EXPECT_EQ(out.str(),
            "NAME     VALUE      TIME\n"
            "energy  1234.5 kWh  2024-03-01T13:00:00+01:00\n"
            "p            7 W    -\n");
}

TEST_F(TextRows, MeasuresWhatATerminalShows) {
  cTextRows rows(out, kColumns, false);
  rows.Write(Row("Z\xC3\xA4hler", "1", "m\xB3", 0));
  rows.Write(Row("\xE6\xB0\xB4", "1", "W", 0));
  rows.End();
  EXPECT_EQ(out.str(),
            "NAME    VALUE     TIME\n"
            "Z\xC3\xA4hler      1 m\xC2\xB3  -\n"
            "\xE6\xB0\xB4          1 W   -\n");
}

TEST_F(TextRows, IsNothingWithoutRows) {
  cTextRows rows(out, kColumns, true);
  rows.End();
  EXPECT_EQ(out.str(), "");
}

TEST_F(TextRows, MarksWhatIsNotThere) {
  cTextRows rows(out, kColumns, false);
  rows.Write(vorn::cRecord());
  rows.End();
  EXPECT_EQ(out.str(), "NAME  VALUE   TIME\n-         -   -\n");
}

TEST_F(TextRows, SetsTheTitlesOffOnATerminal) {
  cTextRows rows(out, kColumns, true);
  rows.Write(Row("a", "1", "W", 0));
  rows.End();
  EXPECT_EQ(out.str(), "\x1b[1mNAME  VALUE    TIME\x1b[0m\na         1 W  -\n");
}

TEST_F(TextRows, WidensAColumnForALateRow) {
  cTextRows rows(out, kColumns, false);
  rows.Write(Row("a", "1", "W", 0));
  rows.Flush();
  rows.Write(Row("much longer", "1", "W", 0));
  rows.Write(Row("a", "1", "W", 0));
  EXPECT_EQ(out.str(),
            "NAME  VALUE    TIME\n"
            "a         1 W  -\n"
            "much longer      1 W  -\n"
            "a                1 W  -\n");
}

TEST_F(TextRows, HoldsNoMoreThanItNeedsForTheWidths) {
  cTextRows rows(out, kColumns, false);
  for (std::size_t i = 1; i < cTextRows::kHeldRows; ++i) rows.Write(Row("a", "1", "W", 0));
  EXPECT_EQ(out.str(), "");
  rows.Write(Row("a", "1", "W", 0));
  EXPECT_NE(out.str(), "");
}

TEST_F(TextRows, ShowsMediaByNameAndHidesData) {
  constexpr cColumn columns[] = {
      {"medium", "MEDIUM", eForm::Medium}, {"raw", "RAW", eForm::Data}, {"event", "EVENT", eForm::Record}};
  vorn::cRecord event, row;
  event.AppendUIntPar("code", 5);
  row.AppendTextPar("medium", "E");
  row.AppendDataPar("raw", vorn::cData("\x01", 1));
  row.AppendRecordPar("event", event);
  cTextRows rows(out, columns, false);
  rows.Write(row);
  rows.End();
  EXPECT_EQ(out.str(), "MEDIUM       EVENT\nElectricity  code=5\n");
}

}  // namespace
}  // namespace tav::ctl
