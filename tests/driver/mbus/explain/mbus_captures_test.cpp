// SPDX-License-Identifier: Apache-2.0
// Telegrams captured from real meters, each with the records it must give. They are not part of this tree: the variable
// TAV_TELEGRAMS names the folder that holds them, in mbus/.
#include <gateway/driver/mbus/explain/mbus_explain.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include <gateway/driver/capture_bytes.h>
#include <gateway/driver/mbus/reader/mbus_frame.h>
#include <tests/driver/mbus/mbus_digits.h>

using namespace tav::mbus;
using nlohmann::json;
namespace fs = std::filesystem;

namespace {

// Where the expected files and the standard differ, the standard has it.
constexpr const char* kCorrected =
    "a multiplicative correction (EN 13757-3, combinable VIFE 70 to 77) goes with codes of the tables FB and FD as "
    "well";
constexpr const char* kRecordError = "VIFE 15 and 18 say that there is no value (EN 13757-3, codes for record errors)";
constexpr const char* kMakersCodes =
    "what follows the manufacturer specific VIF FF is the maker's, no additive correction (EN 13757-3, VIF 7F)";
constexpr const char* kNoNumber = "no number (EN 13757-3, type H: IEEE 754)";
constexpr const char* kErrorDigits = "digits above 9 tell of an error (EN 13757-3, type A)";
constexpr const char* kInvalidTime = "bit 7 of the first byte says that the time is invalid (EN 13757-3, type F)";
constexpr const char* kEveryYear = "year 127 is every year (EN 13757-3, type F)";
constexpr const char* kTimeOf = "VIFE 6F turns the value into the time of its end (EN 13757-3, combinable VIFE)";

struct cDeparture {
  const char* capture;
  std::size_t record;
  const char* expected;
  const char* ours;
  const char* why;
};

// clang-format off
constexpr cDeparture kDepartures[] = {
  {"gombus_GAROFirstFrame",                            1, "37219.000000",        "3721900",             kCorrected},    // 04 / FB 82 75
  {"gombus_GAROFirstFrame",                            3, "-310.000000",         "-0.0310",             kCorrected},    // 04 / FB 97 72
  {"gombus_GAROFirstFrame",                            4, "2157.000000",         "0.2157",              kCorrected},    // 04 / FB B7 72
  {"gombus_GAROFirstFrame",                            5, "988.000000",          "0.988",               kCorrected},    // 02 / FD BA 73
  {"gombus_GAROSecondFrame",                           3, "-261.000000",         "-0.0261",             kCorrected},    // 84 40 / FB 97 72
  {"gombus_GAROSecondFrame",                           4, "75.000000",           "0.0075",              kCorrected},    // 84 80 40 / FB 97 72
  {"gombus_GAROSecondFrame",                           6, "2478.000000",         "0.2478",              kCorrected},    // 84 40 / FB B7 72
  {"gombus_GAROSecondFrame",                           7, "200.000000",          "0.0200",              kCorrected},    // 84 80 40 / FB B7 72
  {"gombus_GAROSecondFrame",                           9, "994.000000",          "0.994",               kCorrected},    // 82 40 / FD BA 73
  {"gombus_GAROSecondFrame",                          10, "927.000000",          "0.927",               kCorrected},    // 82 80 40 / FD BA 73
  {"jmbus_ABB_A41_513_100_electric_meter_Message_1",  19, "100101010101.000000", "hex:010101010110",    kRecordError},  // 0E / ED 18
  {"jmbus_ABB_A41_513_100_electric_meter_Message_1",  20, "80.010000",           "80",                  kMakersCodes},  // 02 / FF F9 8A 18
  {"jmbus_ABB_A41_513_100_electric_meter_Message_3",   2, "0.000000",            "hex:00",              kRecordError},  // 81 C0 40 / FD 9A 15
  {"jmbus_ABB_A41_513_100_electric_meter_Message_3",   3, "0.000000",            "hex:00",              kRecordError},  // 81 80 80 40 / FD 9A 15
  {"jmbus_ABB_A41_513_100_electric_meter_Message_3",   4, "0.000000",            "hex:00",              kRecordError},  // 81 40 / FD 9B 15
  {"jmbus_ABB_A41_513_100_electric_meter_Message_3",   5, "0.000000",            "hex:00",              kRecordError},  // 81 80 40 / FD 9B 15
  {"jmbus_ABB_A41_513_100_electric_meter_Message_3",   8, "0.000000",            "hex:00",              kRecordError},  // C1 40 / FD 9B 15
  {"jmbus_ABB_A41_513_100_electric_meter_Message_3",   9, "0.000000",            "hex:00",              kRecordError},  // C1 80 40 / FD 9B 15
  {"jmbus_ABB_A41_513_100_electric_meter_Message_4",   8, "39139.010000",        "39139",               kMakersCodes},  // 0E / FF F9 C4 00
  {"jmbus_ABB_A41_513_100_electric_meter_Message_4",   9, "3914.010000",         "3914",                kMakersCodes},  // 0E / FF F9 C9 00
  {"jmbus_Schneider_Electric_electricity_meter_message_3", 6, "-nan",            "hex:0000C0FF",        kNoNumber},     // 05 / FF 3A
  {"wired_iem3000_10",                                 6, "-nan",                "hex:0000C0FF",        kNoNumber},     // 05 / FF 3A
  {"wired_iem3000_7",                                  6, "-nan",                "hex:0000C0FF",        kNoNumber},     // 05 / FF 3A
  {"wired_relhca_1",                                   1, "1900-01-00T00:00:00Z", "hex:9C021732",       kInvalidTime},  // 04 / 6D
  {"ELS_Elster-F96-Plus",                              4, "13131113.000000",     "hex:BDEBDDDD",        kErrorDigits},  // 3C / 2B
  {"ELS_Elster-F96-Plus",                              5, "131.113000",          "hex:BDEBDD",          kErrorDigits},  // 3B / 3B
  {"REL-Relay-Padpuls2",                               1, "1900-01-00T00:00:00Z", "hex:A115E917",       kInvalidTime},  // 04 / 6D
  {"abb_f95",                                          2, "1311041.300000",      "hex:DDB4EBDD",        kErrorDigits},  // 3C / 2A
  {"abb_f95",                                          3, "11.041300",           "hex:DDB4EB",          kErrorDigits},  // 3B / 3A
  {"landis+gyr_ultraheat_t230",                       19, "0.000000",            "2000-00-00T00:00:00", kTimeOf},       // 94 10 / AD 6F
  {"landis+gyr_ultraheat_t230",                       20, "0.000000",            "2000-00-00T00:00:00", kTimeOf},       // 94 10 / BB 6F
  {"landis+gyr_ultraheat_t230",                       21, "41065374.600000",     "2011-08-26T20:50:00", kTimeOf},       // 94 10 / DA 6F
  {"landis+gyr_ultraheat_t230",                       22, "40953732.300000",     "2011-08-09T11:43:00", kTimeOf},       // 94 10 / DE 6F
  {"landis+gyr_ultraheat_t230",                       32, "2027-01-01T00:00:00Z", "--01-01T00:00:00",   kEveryYear},    // 84 8F 0F / 6D
};

// How the expected files write units: by their text, the quantity, and what the value has here.
struct cUnitRow {
  const char* expected;
  const char* quantity;
  const char* ours;
};
constexpr cUnitRow kUnits[] = {
  {"-",                "Time point (date & time)", ""},           // a point in time has no unit
  {"-",                "Time point (date)",        ""},
  {"-",                "cust. ID",                 "cust. ID"},   // what a plain text VIF says is the unit
  {"-",                "bat. time",                "bat. time"},
  {"-",                "C",                        "C"},
  {"-",                "c",                        "c"},
  {"-",                "%RH",                      "%RH"},
  {"-",                "PW",                       "PW"},
  {"Units for H.C.A.", "H.C.A.",                   ""},           // no unit of anything else
  {"Reserved",         "Reserved",                 "varh"},       // EN 13757-3, table FB: reactive energy
  {"Reserved",         "Reserved",                 ""},           // reactive and apparent power
  {"Reserved",         "Energy",                   "J"},          // EN 13757-3, table FB: 0.1 GJ
  {"m^3",              "Volume",                   "m³/pulse"},   // EN 13757-3, VIFE 28: increment per input pulse
  {"W",                "Power",                    ""},           // kTimeOf
  {"m^3/h",            "Volume flow",              ""},
  {"°C",               "Flow temperature",         ""},
  {"°C",               "Return temperature",       ""},
  {"m^3",              "Volume",                   "m³"},
  {"m^3/h",            "Volume flow",              "m³/h"},
};

struct cReason {
  const char* capture;
  const char* text;
};

constexpr cReason kMalformed[] = {
  {"premature_end_of_data1",       "byte 32: the data of a record end too early"},
  {"premature_end_of_dif1",        "byte 30: the telegram ends within a DIB"},
  {"premature_end_of_var_vif1",    "byte 43: the text of a VIF is longer than the telegram (13)"},
  {"too_long_var_vif",             "byte 43: the text of a VIF is longer than the telegram (F3)"},
  {"jmbus_Schneider_missing_bytes_2", "byte 248: the checksum is wrong (FF)"},
  {"pymeterbus_manual_frame1",     "byte 0: no frame starts with this byte (D0)"},
  {"pymeterbus_unknown_pl",
   "byte 6: data with the most significant byte first, a form that is withdrawn (76)"},
  {"invalid_length",               "byte 1: the length is below 3 (00)"},
  {"invalid_length2",              "byte 22: the fixed data structure ends too early"},
  {"manual_frame4",                "byte 4: a request of the master, no answer (53)"},
};

constexpr cReason kErrors[] = {
  {"buffer_too_long",   "buffer too long, truncated"},
  {"too_many_difes",    "more than 10 DIFE"},
  {"too_many_readouts", "too many readouts"},
  {"too_many_records",  "too many records"},
  {"too_many_vifes",    "more than 10 VIFE"},
  {"unimplemented_ci",  "control information not implemented"},
  {"unspecified_error", "unspecified error"},
};

constexpr cReason kMedia[] = {
  {"cold water", "K"}, {"electricity", "E"}, {"heat volume at inlet", "H"}, {"heat", "h"},
  {"heat/cooling load", "X"}, {"other", "Z"}, {"room sensor", "R"},
};
// clang-format on

std::string Load(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// What stands between the first such tags; empty when there are none.
std::string Element(const std::string& xml, const std::string& tag) {
  const std::string open = "<" + tag + ">";
  const std::size_t begin = xml.find(open), end = xml.find("</" + tag + ">");
  if (begin == std::string::npos || end == std::string::npos) return "";
  std::string text = xml.substr(begin + open.size(), end - begin - open.size());
  for (std::size_t at = 0; (at = text.find("&amp;", at)) != std::string::npos; ++at) text.erase(at + 1, 4);
  return text;
}

std::vector<std::string> Records(const std::string& xml) {
  std::vector<std::string> records;
  for (std::size_t at = 0; (at = xml.find("<DataRecord ", at)) != std::string::npos; ++at)
    records.push_back(xml.substr(at, xml.find("</DataRecord>", at) - at));
  return records;
}

std::string Text(const json& value) { return value.is_string() ? value.get<std::string>() : ""; }

std::string SixPlaces(const std::string& number) {
  char text[64];
  std::snprintf(text, sizeof text, "%.6Lf", std::strtold(number.c_str(), nullptr));
  return text;
}

// As the expected files write it: numbers rounded, local times with a Z, octets with blanks.
bool IsSame(const std::string& expected, const json& value) {
  if (value.at("base_value").is_string()) return SixPlaces(value.at("base_value")) == expected;
  const std::string ours = Text(value.at("value"));
  std::string digits = expected;
  digits.erase(std::remove(digits.begin(), digits.end(), ' '), digits.end());
  return ours == expected || ours + "Z" == expected || ours == "hex:" + digits;
}

std::string Ours(const json& value) {
  return Text(value.at(value.at("base_value").is_string() ? "base_value" : "value"));
}

std::string OurUnit(const json& value) {
  return Text(value.at(value.at("base_unit").is_string() ? "base_unit" : "unit"));
}

bool IsSameUnit(const std::string& expected, const std::string& quantity, const std::string& ours) {
  if (expected == ours) return true;
  return std::any_of(std::begin(kUnits), std::end(kUnits), [&](const cUnitRow& row) {
    return row.expected == expected && row.quantity == quantity && row.ours == ours;
  });
}

class MBusCaptures : public testing::Test {
 protected:
  void SetUp() override {
    const char* const folder = std::getenv("TAV_TELEGRAMS");
    if (folder == nullptr) GTEST_SKIP() << "TAV_TELEGRAMS does not name a folder of captured telegrams";
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(fs::path(folder) / "mbus"))
      if (entry.path().extension() == ".hex") files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    ASSERT_FALSE(files.empty()) << folder;
  }

  fs::path Find(const std::string& name) const {
    const auto file =
        std::find_if(files.begin(), files.end(), [&](const fs::path& each) { return each.stem() == name; });
    return file != files.end() ? *file : fs::path(name);
  }
  static json Telegram(const fs::path& file) { return json::parse(ExplainMBus(Load(file)).json).at("telegrams").at(0); }
  static std::string Beside(const fs::path& file, const std::string& ending) {
    return Load(file.parent_path() / (file.stem().string() + ending));
  }

  std::vector<fs::path> files;
};

// Departures must be those of the table, and every one of the table must be there.
void CompareValue(const std::string& name, std::size_t number, const std::string& expected, const json& value) {
  const auto* const departure =
      std::find_if(std::begin(kDepartures), std::end(kDepartures),
                   [&](const cDeparture& row) { return row.capture == name && row.record == number; });
  if (departure == std::end(kDepartures)) {
    EXPECT_TRUE(IsSame(expected, value)) << "expected " << expected << ", found " << value;
    return;
  }
  EXPECT_EQ(expected, departure->expected);
  EXPECT_EQ(Ours(value), departure->ours) << departure->why;
  EXPECT_FALSE(IsSame(expected, value)) << "no departure any more: " << departure->why;
}

void CompareRecord(const std::string& name, std::size_t number, const std::string& expected, const json& value) {
  SCOPED_TRACE(name + " record " + std::to_string(number));
  const auto number_of = [&](const char* tag) { return std::strtoull(Element(expected, tag).c_str(), nullptr, 10); };
  EXPECT_EQ(value.at("record"), number);
  EXPECT_EQ(value.at("function"), Element(expected, "Function"));
  EXPECT_EQ(value.at("storage"), number_of("StorageNumber"));
  EXPECT_EQ(value.at("tariff"), number_of("Tariff"));
  EXPECT_EQ(value.at("subunit"), number_of("Device"));
  EXPECT_TRUE(IsSameUnit(Element(expected, "Unit"), Element(expected, "Quantity"), OurUnit(value)))
      << "expected " << Element(expected, "Unit") << ", found " << value;
  CompareValue(name, number, Element(expected, "Value"), value);
}

void CompareHeader(const std::string& expected, const json& telegram) {
  const std::string id = Element(expected, "Id");  // without leading zeros
  EXPECT_EQ(telegram.at("meter"), std::string(8 - id.size(), '0') + id);
  const std::string manufacturer = Element(expected, "Manufacturer");  // "@@@" where the meter has none
  EXPECT_EQ(Text(telegram.at("manufacturer")), manufacturer == "@@@" ? "" : manufacturer);
  EXPECT_EQ(telegram.at("version").dump(), Element(expected, "Version"));
  EXPECT_EQ(telegram.at("access").dump(), Element(expected, "AccessNumber"));
  EXPECT_EQ(telegram.at("status"), std::strtoul(Element(expected, "Status").c_str(), nullptr, 16));
}

}  // namespace

TEST_F(MBusCaptures, GiveTheExpectedRecords) {
  std::size_t count = 0;
  for (const fs::path& file : files) {
    const std::string name = file.stem(), xml = Beside(file, ".norm.xml");
    if (xml.empty()) continue;
    SCOPED_TRACE(name);
    const json telegram = Telegram(file);
    EXPECT_EQ(telegram.at("good"), true) << telegram.at("reason");
    CompareHeader(xml, telegram);
    const std::vector<std::string> expected = Records(xml);
    ASSERT_EQ(telegram.at("values").size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) CompareRecord(name, i, expected[i], telegram.at("values").at(i));
    count += expected.size();
  }
  EXPECT_GT(count, 1000u);
}

TEST_F(MBusCaptures, AreThereForEveryDeparture) {
  for (const cDeparture& row : kDepartures) EXPECT_TRUE(fs::exists(Find(row.capture))) << row.capture;
}

TEST_F(MBusCaptures, ThatAreMalformedAreRefusedWithTheByte) {
  for (const cReason& row : kMalformed) {
    const std::string capture = Load(Find(row.capture));
    EXPECT_FALSE(ExplainMBus(capture).AllGood()) << row.capture;
    const json telegrams = json::parse(ExplainMBus(capture).json).at("telegrams");
    ASSERT_FALSE(telegrams.empty()) << row.capture;
    EXPECT_EQ(telegrams.at(0).at("reason"), row.text) << row.capture;
  }
}

TEST_F(MBusCaptures, WithoutExpectedRecordsAreInOneOfTheTables) {
  std::size_t found = 0;
  for (const fs::path& file : files) found += Beside(file, ".norm.xml").empty() ? 1 : 0;
  EXPECT_EQ(found, std::size(kMalformed) + std::size(kErrors));
}

TEST_F(MBusCaptures, OfApplicationErrorsSayWhich) {
  for (const cReason& row : kErrors) {
    const json telegram = Telegram(Find(row.capture));
    EXPECT_EQ(telegram.at("good"), true) << row.capture;
    EXPECT_EQ(telegram.at("error"), row.text) << row.capture;
    EXPECT_EQ(telegram.at("values").size(), 0u) << row.capture;
  }
}

TEST_F(MBusCaptures, TellTheMeterThatWasPublished) {
  std::size_t found = 0;
  for (const fs::path& file : files) {
    const std::string text = Beside(file, ".expected.json");
    if (text.empty()) continue;
    SCOPED_TRACE(file.stem());
    const json published = json::parse(text), telegram = Telegram(file);
    EXPECT_EQ(telegram.at("meter"), published.at("published").at("id"));
    for (const cReason& row : kMedia)
      if (published.at("published").at("media") == row.capture) {
        EXPECT_EQ(telegram.at("medium"), row.text);
        ++found;
      }
  }
  EXPECT_EQ(found, 20u);
}
