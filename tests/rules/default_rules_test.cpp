// SPDX-License-Identifier: Apache-2.0
#include <gateway/rules/default_rules.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <limits>

#include <gateway/rules/rule_check.h>
#include <gateway/rules/rules_file.h>
#include <gateway/rules/rules_text.h>
#include <tav/record/meter_tav.h>

namespace tav::rules {
namespace {

std::string NameByBlocks(const char* medium, const char* dif, const char* vif) {
  vorn::cData dib, vib;
  vorn::cData::FromHex(dif, dib);
  vorn::cData::FromHex(vif, vib);
  cObisMapEntry entry;
  return MakeDefaultRules().GetEntryByDibVibFromMBUS("7", "", medium, dib, vib, entry)
             ? entry.GetObisID() + " " + entry.GetName()
             : "";
}

std::string Name(const char* obis) { return cMeterTav::ObisName(obis, MakeDefaultRules()); }

TEST(DefaultRules, AreThereInTheRangeThatIsTheirs) {
  const cObisMap map = MakeDefaultRules();
  ASSERT_GT(map.GetEntries().size(), 200u);
  for (const auto& [id, rule] : map.GetEntries()) {
    EXPECT_GE(id, kFirstDefaultId);
    EXPECT_LT(id, kEndOfDefaultIds);
  }
}

TEST(DefaultRules, AreTakenByTheService) {
  const cObisMap map = MakeDefaultRules();
  for (const auto& [id, rule] : map.GetEntries()) {
    cObisMapEntry again;
    EXPECT_TRUE(again.FromRecord(rule.ToRecord())) << id;
    EXPECT_NE(rule.GetProtocol(), cObisMapEntry::eMapProtoNone) << id;
  }
}

TEST(DefaultRules, HaveNothingWrongWithThem) {
  for (const cFinding& finding : Check(MakeDefaultRules())) ADD_FAILURE() << finding.id << ": " << finding.text;
}

TEST(DefaultRules, AreTheSameWhenTheyAreWrittenAndRead) {
  cObisMap again;
  std::string error;
  ASSERT_TRUE(ReadRulesText(WriteRulesText(MakeDefaultRules(), "shipped"), "text", again, error)) << error;
  EXPECT_EQ(again.ToRecord(), MakeDefaultRules().ToRecord());
}

TEST(DefaultRules, NameWhatElectricityMetersSend) {
  EXPECT_EQ(Name("1-0:1.8.0*255"), "Active energy import, total");
  EXPECT_EQ(Name("1-1:2.8.2*255"), "Active energy export, tariff 2");
  EXPECT_EQ(Name("1-0:16.7.0*255"), "Active power, import less export");
  EXPECT_EQ(Name("1-0:52.7.0*255"), "Voltage, phase L2");
  EXPECT_EQ(Name("129-129:199.130.3*255"), "Manufacturer");
  EXPECT_EQ(Name("1-0:1.8.0*99"), "Active energy import, past period");
  EXPECT_EQ(Name("1-0:99.99.99*255"), "unknown");
}

TEST(DefaultRules, NameWhatMetersOfTheOtherMediaSend) {
  const struct {
    const char* medium;
    const char* dif;
    const char* vif;
    const char* named;
  } kCases[] = {
      {"h", "0C", "06", "6-0:1.0.0 Heat energy"},
      {"H", "04", "06", "6-0:1.0.0 Heat energy"},
      {"h", "4C", "06", "6-0:1.2.0 Heat energy, set date"},
      {"H", "0A", "5A", "6-0:10.0.0 Heat flow temperature"},
      {"c", "04", "06", "5-0:1.0.0 Cooling energy"},
      {"G", "0C", "14", "7-0:3.0.0 Gas volume"},
      {"w", "04", "13", "8-0:1.0.0 Water volume"},
      {"K", "44", "13", "8-0:1.2.0 Water volume, set date"},
      {"W", "0C", "13", "9-0:1.0.0 Hot water volume"},
      {"V", "02", "6E", "4-0:1.0.0 Heat cost units"},
      {"E", "8C 10", "04", "1-0:1.8.1 Active energy import, tariff 1"},
      {"E", "02", "FD 48", "1-0:12.7.0 Voltage"},
      {"A", "0C", "78", "0-0:96.1.0 Serial number"},
      {"E", "0C", "06", "1-0:1.8.0 Active energy import, total"},
      {"G", "0C", "06", ""},
  };
  for (const auto& [medium, dif, vif, named] : kCases)
    EXPECT_EQ(NameByBlocks(medium, dif, vif), named) << medium << ' ' << dif << ' ' << vif;
}

TEST(DefaultRules, NameRegistersOfTheCommonModelOfMeters) {
  cObisMapEntry entry;
  ASSERT_TRUE(MakeDefaultRules().GetEntryFromMODBUS("240", "", "E", "40087", entry));
  EXPECT_EQ(entry.GetObisID(), "1-0:16.7.0");
  ASSERT_TRUE(MakeDefaultRules().GetEntryFromMODBUS("1", "", "E", "40115", entry));
  EXPECT_EQ(entry.GetName(), "Active energy import, total");
}

TEST(DefaultRules, NameAnIdentifierInOneWayOnly) {
  const cObisMap map = MakeDefaultRules();
  for (const auto& [id, rule] : map.GetEntries())
    EXPECT_EQ(cMeterTav::ObisName(rule.GetObisID(), map), rule.GetName()) << id;
}

TEST(DefaultRules, GiveWayToASmallerId) {
  cObisMap map = MakeDefaultRules();
  map.Add({1, "House", "1-0:1.8.0", "protocol=dlms"});
  EXPECT_EQ(cMeterTav::ObisName("1-0:1.8.0*255", map), "House");
}

// Captures of real meters, in the folder that the environment variable TAV_TELEGRAMS names: lists of the values that
// SML meters have sent, one a line behind a line of titles, the identifier in the second column.
TEST(DefaultRules, NameEveryValueOfTheCapturesOfSmlMeters) {
  const char* const folder = std::getenv("TAV_TELEGRAMS");
  if (folder == nullptr) GTEST_SKIP() << "TAV_TELEGRAMS does not name a folder of captured telegrams";
  const cObisMap map = MakeDefaultRules();
  std::size_t values = 0;
  for (const auto& file : std::filesystem::directory_iterator(std::filesystem::path(folder) / "sml")) {
    if (file.path().string().find(".expected.csv") == std::string::npos) continue;
    std::ifstream lines(file.path());
    std::string line;
    std::getline(lines, line);
    while (std::getline(lines, line)) {
      const std::size_t comma = line.find(',');
      const std::string obis = line.substr(comma + 1, line.find(',', comma + 1) - comma - 1);
      cObisMapEntry entry;
      EXPECT_TRUE(map.GetEntryByObisId(obis, entry, true)) << obis << " in " << file.path();
      ++values;
    }
  }
  EXPECT_GT(values, 100u);
}

TEST(DefaultRules, LeaveIdsForRulesOfOnesOwn) {
  constexpr unsigned long long kLargest = std::numeric_limits<unsigned long long>::max();
  const auto above = [](unsigned long long id) {
    return FreeRuleId(MapOf({{id, "Import", "1-0:1.8.0", "protocol=dlms", {}}}));
  };
  EXPECT_EQ(FreeRuleId({}), 1u);
  EXPECT_EQ(above(kFirstDefaultId - 2), kFirstDefaultId - 1);
  EXPECT_EQ(above(kFirstDefaultId - 1), kEndOfDefaultIds);
  EXPECT_EQ(above(kEndOfDefaultIds - 1), kEndOfDefaultIds);
  EXPECT_EQ(above(kEndOfDefaultIds), kEndOfDefaultIds + 1);
  EXPECT_EQ(above(kLargest - 1), kLargest);
  EXPECT_EQ(above(kLargest), std::nullopt);
}

}  // namespace
}  // namespace tav::rules
