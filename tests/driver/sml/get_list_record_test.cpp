// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/get_list_record.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include <gateway/driver/sml/dlms_units.h>
#include <tav/record/meter_record.h>
#include <tests/support/parameters.h>

#include "sml_telegrams.h"

using namespace tav::sml;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr std::uint64_t kEnergy = PackObis(1, 0, 1, 8, 0);

// The record of a telegram with these entries.
vorn::cRecord RecordOf(const std::vector<cTestEntry>& entries) {
  struct cSink : cSmlSink {
    void OnList(const cSmlFrame&, const cSmlList& list) override { record = ToGetListRecord(list); }
    vorn::cRecord record;
  } sink;
  const auto reader = std::make_unique<cSmlReader>(sink);
  const std::string payload = Payload(entries);
  reader->ReadPayload(View(payload));
  return sink.record;
}

// The parameters of its entries.
std::vector<std::string> EntriesOf(const std::vector<cTestEntry>& entries) {
  return Parameters(RecordOf(entries).GetRecordPar("valList"));
}

// The reading that the library makes of it.
tav::cMeterRecord Import(const std::vector<cTestEntry>& entries) {
  AddDlmsUnits();
  tav::cMeterRecord reading;
  EXPECT_TRUE(reading.FromSmlGetListRes("ehzif", "E", tav::cMeterTav::eTsRtc, 1393675200, RecordOf(entries)));
  return reading;
}

std::vector<std::string> ValuesOf(const std::vector<cTestEntry>& entries) {
  const tav::cMeterRecord reading = Import(entries);
  std::vector<std::string> values;
  for (const tav::cMeasurementEntry& entry : reading.GetMeasurementEntries())
    values.push_back(entry.GetName() + "=" + entry.GetValue() + " " + entry.GetUnit());
  return values;
}

std::string ValueOf(const std::string& value, const std::string& scaler) {
  const std::vector<std::string> values = ValuesOf({{kEnergy, "", "", "621E", scaler, value, ""}});
  return values.size() == 1 ? values[0] : "no single value";
}

}  // namespace

TEST(GetListRecord, HasTheFormThatTheImportReads) {
  const vorn::cRecord record = RecordOf({{kEnergy, "", "", "621E", "52FF", "6300FF", "0301 02"}});
  EXPECT_THAT(Parameters(record),
              ElementsAre("serverId data=0A 01 54 53 54 00 01 02 03 04",
                          "valList record={valListEntry record={objName uint64=1099528929535, value uint=255, "
                          "scaler int=-1, unit uint=30, signature data=01 02}}"));
}

TEST(GetListRecord, LeavesOutWhatTheMeterDidNotSend) {
  EXPECT_THAT(EntriesOf({{kEnergy, "", "", "", "", "", ""}}),
              ElementsAre("valListEntry record={objName uint64=1099528929535}"));
}

TEST(GetListRecord, GivesNumbersTheTypeTheyFit) {
  const struct {
    const char* value;
    const char* parameter;
  } kCases[] = {
      {"62FF", "value uint=255"},
      {"65FFFFFFFF", "value uint=4294967295"},
      {"660100000000", "value uint64=4294967296"},
      {"69FFFFFFFFFFFFFFFF", "value uint64=18446744073709551615"},
      {"52FF", "value int=-1"},
      {"5900000000 7FFFFFFF", "value int=2147483647"},
      {"5900000000 80000000", "value uint=2147483648"},
      {"597FFFFFFFFFFFFFFF", "value uint64=9223372036854775807"},
      {"59FFFFFFFF 80000000", "value int=-2147483648"},
      {"59FFFFFFFF 7FFFFFFF", "value text=-2147483649"},
      {"598000000000000000", "value text=-9223372036854775808"},
      {"4201", "value bool=true"},
      {"04544156", "value data=54 41 56"},
      {"72620172620165000000FF", "value data=72 62 01 72 62 01 65 00 00 00 FF"},
  };
  for (const auto& c : kCases) {
    const std::vector<std::string> entries = EntriesOf({{kObisServerId, "", "", "", "", c.value, ""}});
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_THAT(entries[0], testing::HasSubstr(c.parameter)) << c.value;
  }
}

TEST(GetListRecord, ComesOutOfTheImportWithTheRightDecimals) {
  const struct {
    const char* value;
    const char* scaler;
    const char* text;
  } kCases[] = {
      {"65033C9389", "52FF", "5430157.7"},
      {"538B28", "52FE", "-299.12"},
      {"52FB", "52FE", "-0.05"},  // the import alone would shift the point into 0.-5
      {"52FB", "52FF", "-0.5"},   // and this into -.5
      {"52FB", "52FD", "-0.005"},
      {"52FB", "5202", "-500"},
      {"52FB", "", "-5"},
      {"6205", "52FF", "0.5"},
      {"620C", "52FD", "0.012"},
      {"6200", "52FF", "0.0"},
      {"6200", "5203", "0"},  // and this into 0000
      {"5200", "5203", "0"},
      {"630914", "5203", "2324000"},
      {"59FFFFFFFF 7FFFFFFF", "52FF", "-214748364.9"},
      {"598000000000000000", "52ED", "-0.9223372036854775808"},
      {"598000000000000000", "52EE", "-9.223372036854775808"},
      {"69FFFFFFFFFFFFFFFF", "52EC", "0.18446744073709551615"},
  };
  for (const auto& c : kCases)
    EXPECT_EQ(ValueOf(c.value, c.scaler), "1-0:1.8.0=" + std::string(c.text) + " Wh") << c.value;
}

TEST(GetListRecord, MakesMeasurementsOfNumbersOnly) {
  EXPECT_THAT(ValuesOf({{kObisServerId, "", "", "6200", "5200", "0B0A015453540001020304", ""},
                        {kEnergy, "", "", "621E", "52FF", "620A", ""},
                        {PackObis(1, 0, 97, 97, 0), "", "", "62FF", "", "4201", ""}}),
              ElementsAre("1-0:1.8.0=1.0 Wh"));
}

TEST(GetListRecord, CountsANumberWithoutAUnit) {
  EXPECT_THAT(ValuesOf({{PackObis(1, 0, 13, 7, 0), "", "", "", "52FE", "6262", ""},
                        {PackObis(1, 0, 13, 7, 1), "", "", "6200", "52FE", "6262", ""},
                        {PackObis(1, 0, 13, 7, 2), "", "", "62FF", "52FE", "6262", ""}}),
              ElementsAre("1-0:13.7.0=0.98 count", "1-0:13.7.1=0.98 count", "1-0:13.7.2=0.98 count"));
  EXPECT_THAT(ValuesOf({{PackObis(1, 0, 96, 5, 0), "", "", "", "", "65001C0104", ""}}), IsEmpty()) << "a status word";
}

TEST(GetListRecord, TakesUnitsFromTheWholeList) {
  EXPECT_THAT(ValuesOf({{PackObis(1, 0, 32, 7, 0), "", "", "6223", "52FF", "630938", ""},
                        {PackObis(1, 0, 31, 7, 0), "", "", "6221", "52FE", "6245", ""},
                        {PackObis(1, 0, 81, 7, 1), "", "", "6208", "", "6278", ""},
                        {PackObis(1, 0, 14, 7, 0), "", "", "622C", "52FF", "6301F4", ""}}),
              ElementsAre("1-0:32.7.0=236.0 V", "1-0:31.7.0=0.69 A", "1-0:81.7.1=120 °", "1-0:14.7.0=50.0 Hz"));
}

TEST(GetListRecord, CarriesTheSignature) {
  const tav::cMeterRecord reading = Import({{kEnergy, "", "", "621E", "52FF", "620A", "04010203"}});
  EXPECT_EQ(reading.GetMeasurementEntries().front().GetSignature(), vorn::cData("\x01\x02\x03", 3));
}

TEST(GetListRecord, GivesTheStatusWordNotTheEnergy) {
  const cTestEntry energy = {kEnergy, "65001C0104", "", "621E", "52FF", "65033C9389", ""};
  const cTestEntry fine = {PackObis(1, 0, 2, 8, 0), "6200", "", "621E", "52FF", "65033C9389", ""};
  const auto word = [](std::uint64_t obis, const char* value) { return cTestEntry{obis, "", "", "", "", value, ""}; };
  const struct {
    const char* what;
    std::vector<cTestEntry> entries;
    const char* status;
  } kCases[] = {
      {"the first status sent with a value", {energy, fine}, "1835268"},
      {"nothing wrong", {fine}, "ok"},
      {"no status at all", {{kEnergy, "", "", "621E", "", "6205", ""}}, ""},
      {"the meter's own status word", {energy, word(kObisStatusWord, "6208")}, "8"},
      {"the same in octets", {energy, word(kObisStatusWord, "0500000108")}, "264"},
      {"octets that say all is well", {energy, word(kObisStatusWord, "0200")}, "ok"},
      {"a boolean", {energy, word(kObisStatusWord, "4201")}, "1"},
      {"the general status word", {energy, word(PackObis(1, 0, 96, 5, 0), "65001C8104")}, "1868036"},
      {"the general one in octets", {energy, word(PackObis(1, 0, 96, 5, 0), "030182")}, "386"},
      {"a wide one with a low half", {word(kObisStatusWord, "690000000100000002")}, "2"},
      {"a wide one without", {word(kObisStatusWord, "690000000100000000")}, "1"},
      {"a wide status with a value", {{kEnergy, "690000000100000000", "", "621E", "", "6205", ""}}, "1"},
  };
  for (const auto& c : kCases) EXPECT_EQ(Import(c.entries).GetStatus(), c.status) << c.what;
}

TEST(GetListRecord, NamesTheManufacturerOfOldAndNewMeters) {
  const cTestEntry oldOne = {kObisManufacturer, "", "", "", "", "04454D48", ""};
  const cTestEntry newOne = {kObisManufacturerNew, "", "", "", "", "04544156", ""};
  EXPECT_EQ(Import({oldOne}).GetManufactor(), "EMH");
  EXPECT_EQ(Import({newOne}).GetManufactor(), "TAV");
  EXPECT_EQ(Import({newOne, oldOne}).GetManufactor(), "EMH");
  EXPECT_EQ(Import({{kEnergy, "", "", "621E", "", "6205", ""}}).GetManufactor(), "");
}

TEST(GetListRecord, NamesTheMeterByItsServerId) {
  const tav::cMeterRecord reading = Import({{kEnergy, "", "", "621E", "", "6205", ""}});
  EXPECT_EQ(reading.GetMeterID(), "0A015453540001020304");
  EXPECT_EQ(reading.GetAddr(), "0A015453540001020304");
}
