// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/view/value_export.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <tests/support/time_zone.h>

namespace tav::pages {
namespace {

vorn::cRecord Row(const std::string& value, const std::string& meter = "m1", const std::string& unit = "Wh") {
  vorn::cRecord row;
  row.AppendTextPar("meterID", meter);
  row.AppendTextPar("obis-id", "1-0:1.8.0");
  row.AppendTextPar("value", value);
  row.AppendTextPar("unit", unit);
  row.AppendUIntPar("timestamp", 1'709'294'400);
  row.AppendTextPar("time-source", "rtc");
  return row;
}

class ValueExport : public testing::Test {
 protected:
  const cTimeZone m_zone{"UTC0"};
};

TEST_F(ValueExport, HasTwoForms) {
  EXPECT_NE(MakeValueExport("csv"), nullptr);
  EXPECT_NE(MakeValueExport("json"), nullptr);
  for (const char* other : {"", "CSV", "xml"}) EXPECT_EQ(MakeValueExport(other), nullptr) << other;
}

TEST_F(ValueExport, CsvHasATitleAndALineAValue) {
  const auto csv = MakeValueExport("csv");
  EXPECT_EQ(csv->ContentType(), "text/csv; charset=utf-8");
  EXPECT_EQ(csv->End(), "");
  EXPECT_EQ(csv->Begin() + csv->Row(Row("0012.50")),
            "meterID,timestamp,time-source,obis-id,value,unit\r\n"
            "m1,2024-03-01T12:00:00+00:00,rtc,1-0:1.8.0,0012.50,Wh\r\n");
}

TEST_F(ValueExport, CsvQuotesWhatWouldBreakALineOrRun) {
  const std::pair<std::string, std::string> cases[] = {
      {"a,b", "\"a,b\""},
      {"say \"no\"", "\"say \"\"no\"\"\""},
      {"two\nlines", "\"two\nlines\""},
      {"=1+1", "'=1+1"},
      {"+49", "'+49"},
      {"@cmd", "'@cmd"},
      {"-cmd", "'-cmd"},
      {"\tx", "'\tx"},
      {"=a,\"b\"", "\"'=a,\"\"b\"\"\""},
      {"-12.5", "-12.5"},
      {"", ""},
  };
  for (const auto& [text, field] : cases) {
    const std::string line = MakeValueExport("csv")->Row(Row(text));
    EXPECT_EQ(line, "m1,2024-03-01T12:00:00+00:00,rtc,1-0:1.8.0," + field + ",Wh\r\n") << text;
  }
}

TEST_F(ValueExport, JsonIsAnArrayOfObjects) {
  const auto json = MakeValueExport("json");
  std::string text = json->Begin();
  text += json->Row(Row("12.50"));
  text += json->Row(Row("text \"x\"", "m<2>", "m\xB3"));
  text += json->End();
  EXPECT_EQ(text,
            "[\n{\"meterID\":\"m1\",\"timestamp\":\"2024-03-01T12:00:00+00:00\",\"time-source\":\"rtc\","
            "\"obis-id\":\"1-0:1.8.0\",\"value\":\"12.50\",\"unit\":\"Wh\"},\n"
            "{\"meterID\":\"m<2>\",\"timestamp\":\"2024-03-01T12:00:00+00:00\",\"time-source\":\"rtc\","
            "\"obis-id\":\"1-0:1.8.0\",\"value\":\"text \\\"x\\\"\",\"unit\":\"m\xC2\xB3\"}\n]\n");
  EXPECT_TRUE(nlohmann::json::accept(text));
  const auto none = MakeValueExport("json");
  const std::string begin = none->Begin();
  EXPECT_TRUE(nlohmann::json::accept(begin + none->End()));
}

TEST_F(ValueExport, AValueIsAJsonNumberWhereItIsOne) {
  for (const char* number : {"0", "-0", "7", "-7", "12.50", "0.001", "123456789012345678901234567890", "10"})
    EXPECT_EQ(JsonValue(number), number);
  for (const char* text : {"", "-", "+1", "01", "00.5", ".5", "5.", "1e5", "0x10", "1 ", " 1", "--1", "1.2.3", "NaN"})
    EXPECT_EQ(JsonValue(text), "\"" + std::string(text) + "\"");
  EXPECT_TRUE(nlohmann::json::accept(JsonValue(std::string("\x01\xFF\0", 3))));
}

}  // namespace
}  // namespace tav::pages
