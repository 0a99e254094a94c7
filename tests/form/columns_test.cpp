// SPDX-License-Identifier: Apache-2.0
#include <gateway/form/columns.h>

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <tests/support/sample_record.h>
#include <tests/support/time_zone.h>

namespace tav::form {
namespace {

constexpr cColumn kColumns[] = {{"name", "NAME"},
                                {"n", "N", eForm::Number},
                                {"time", "TIME", eForm::Time},
                                {"medium", "MEDIUM", eForm::Medium},
                                {"more", "MORE", eForm::Record},
                                {"raw", "RAW", eForm::Data}};

vorn::cRecord Row() {
  vorn::cRecord row = Holding("name", "m\xB3");
  row.AppendUInt64Par("n", 5);
  row.AppendUIntPar("time", 1'709'294'400);
  row.AppendTextPar("medium", "E");
  row.AppendRecordPar("more", Holding("a", "b"));
  row.AppendDataPar("raw", vorn::cData("\x0a", 1));
  row.AppendTextPar("other", "not a column");
  return row;
}

class CellsOfColumns : public testing::Test {
 protected:
  cTimeZone zone;
};

TEST_F(CellsOfColumns, MakeAnObjectOfARow) {
  EXPECT_EQ(ToLine(RowToJson(Row(), kColumns)),
            "{\"name\":\"m\xC2\xB3\",\"n\":5,\"time\":\"2024-03-01T13:00:00+01:00\",\"medium\":\"E\","
            "\"more\":{\"a\":\"b\"},\"raw\":\"0A\"}");
}

TEST_F(CellsOfColumns, HaveEveryKeyInEveryRow) {
  vorn::cRecord row;
  row.AppendUIntPar("time", 0);
  EXPECT_EQ(ToLine(RowToJson(row, kColumns)),
            R"({"name":null,"n":null,"time":null,"medium":null,"more":null,"raw":null})");
  EXPECT_EQ(ToLine(RowToJson(row, {})), "{}");
}

TEST_F(CellsOfColumns, SayWhatPeopleReadInThem) {
  const char* const texts[] = {"m\xC2\xB3", "5", "2024-03-01T13:00:00+01:00", "Electricity", "{\"a\":\"b\"}", "0A"};
  for (std::size_t i = 0; i < std::size(kColumns); ++i) {
    EXPECT_EQ(CellText(Row(), kColumns[i]), texts[i]) << kColumns[i].key;
    EXPECT_EQ(CellText({}, kColumns[i]), "") << kColumns[i].key;
  }
}

}  // namespace
}  // namespace tav::form
