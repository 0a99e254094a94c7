// SPDX-License-Identifier: Apache-2.0
#include <tavctl/json_rows.h>

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include <tests/support/time_zone.h>

namespace tav::ctl {
namespace {

constexpr cColumn kColumns[] = {
    {"name", "NAME"}, {"n", "N", eForm::Number}, {"time", "TIME", eForm::Time}, {"raw", "RAW", eForm::Data}};

vorn::cRecord Row(const std::string& name) {
  vorn::cRecord row;
  row.AppendTextPar("name", name);
  row.AppendUInt64Par("n", 5);
  row.AppendUIntPar("time", 1'709'294'400);
  row.AppendDataPar("raw", vorn::cData("\x0a", 1));
  return row;
}

class JsonRows : public testing::Test {
 protected:
  cTimeZone zone;
  std::ostringstream out;
};

TEST_F(JsonRows, AreOneArrayWithAnObjectALine) {
  cJsonRows rows(out, kColumns);
  rows.Write(Row("a"));
  rows.Write(Row("b"));
  rows.End();
  EXPECT_EQ(out.str(),
            "[\n {\"name\":\"a\",\"n\":5,\"time\":\"2024-03-01T13:00:00+01:00\",\"raw\":\"0A\"}\n"
            ",{\"name\":\"b\",\"n\":5,\"time\":\"2024-03-01T13:00:00+01:00\",\"raw\":\"0A\"}\n]\n");
  EXPECT_EQ(nlohmann::json::parse(out.str()).size(), 2u);
}

TEST_F(JsonRows, AreAnEmptyArrayWithoutRows) {
  cJsonRows rows(out, kColumns);
  rows.End();
  EXPECT_EQ(out.str(), "[]\n");
}

TEST_F(JsonRows, HaveEveryKeyInEveryRow) {
  cJsonRows rows(out, kColumns);
  vorn::cRecord row;
  row.AppendUIntPar("time", 0);
  rows.Write(row);
  rows.End();
  EXPECT_EQ(out.str(), "[\n {\"name\":null,\"n\":null,\"time\":null,\"raw\":null}\n]\n");
}

TEST_F(JsonRows, CloseAnArrayThatWasBegunAndWriteNothingElse) {
  { const cJsonRows unused(out, kColumns); }
  EXPECT_EQ(out.str(), "");
  {
    cJsonRows cut(out, kColumns);
    cut.Write(Row("a"));
  }
  EXPECT_EQ(nlohmann::json::parse(out.str()).size(), 1u);
}

TEST_F(JsonRows, AreUtf8WhateverTheTextsAre) {
  cJsonRows rows(out, kColumns);
  rows.Write(Row("m\xB3"));
  rows.Write(form::cJson{{"name", "\xC3"}});
  rows.End();
  const auto document = nlohmann::json::parse(out.str());
  EXPECT_EQ(document[0]["name"], "m\xC2\xB3");
  EXPECT_EQ(document[1]["name"], "\xEF\xBF\xBD") << "the replacement character";
}

}  // namespace
}  // namespace tav::ctl
