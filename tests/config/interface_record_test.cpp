// SPDX-License-Identifier: Apache-2.0
#include <tav/config/interface_record.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tests/support/captured_trace.h>
#include <tests/support/parameters.h>

using tav::cInterfaceRecord;
using tav::cMeterConfig;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace {

cMeterConfig Meter(const std::string& meterID) {
  cMeterConfig meter;
  meter.SetIdentification(meterID, "5", "E", "EMH");
  return meter;
}

cInterfaceRecord Full() {
  cInterfaceRecord interface("RS485", "baud=9600,term", true);
  interface.meters.push_back(Meter("4711"));
  return interface;
}

vorn::cRecord Form() {
  vorn::cRecord form;
  form.AppendUIntPar("version", 1);
  form.AppendTextPar("name", "RS485");
  return form;
}

std::vector<std::string> MeterIds(const cInterfaceRecord& interface) {
  std::vector<std::string> ids;
  for (const cMeterConfig& meter : interface.meters) ids.push_back(meter.meterID);
  return ids;
}

// Every field.
std::string Dump(const cInterfaceRecord& r) {
  std::string text = std::to_string(r.version) + (r.valid ? " valid " : " invalid ") + r.name + "|" + r.options +
                     (r.enabled ? "|enabled|" : "|disabled|") + r.error;
  for (const auto& [key, value] : r.optionMap) text += "|" + key + "->" + value;
  for (const std::string& id : MeterIds(r)) text += "|meter " + id;
  return text;
}

}  // namespace

TEST(InterfaceRecord, StartsInvalidWithItsDefaults) { EXPECT_EQ(Dump(cInterfaceRecord()), "1 invalid ||disabled|"); }

TEST(InterfaceRecord, IsBuiltFromItsNameOrFromAll) {
  EXPECT_EQ(Dump(cInterfaceRecord("RS485")), "1 valid RS485||disabled|");
  EXPECT_EQ(Dump(cInterfaceRecord("RS485", "baud=9600,term", true)),
            "1 valid RS485|baud=9600,term|enabled||baud->9600|term->");
}

TEST(InterfaceRecord, NameOrOptionsAloneMakeItValid) {
  cInterfaceRecord named, optioned, emptied;
  named.SetName("");
  optioned.SetOptions("");
  emptied.enabled = true;
  EXPECT_TRUE(named.valid);
  EXPECT_TRUE(optioned.valid);
  EXPECT_FALSE(emptied.valid);
}

TEST(InterfaceRecord, SetSetsAllThree) {
  cInterfaceRecord interface = Full();
  interface.Set("MBUS", "a=1", false);
  EXPECT_EQ(Dump(interface), "1 valid MBUS|a=1|disabled||a->1|meter 4711");
}

TEST(InterfaceRecord, InitRestoresTheDefaults) {
  cInterfaceRecord interface = Full();
  interface.version = 7;
  interface.error = "old";
  interface.Init();
  EXPECT_EQ(Dump(interface), Dump(cInterfaceRecord()));
}

TEST(InterfaceRecord, CopiesAndAssignsEveryField) {
  cInterfaceRecord source = Full();
  source.version = 2;
  source.error = "old";
  const cInterfaceRecord copy = source;
  cInterfaceRecord assigned;
  assigned = source;
  EXPECT_EQ(Dump(copy), Dump(source));
  EXPECT_EQ(Dump(assigned), Dump(source));
  const cInterfaceRecord& same = assigned;
  assigned = same;
  EXPECT_EQ(Dump(assigned), Dump(source));
}

// ---- options

TEST(InterfaceRecord, AnOptionWithMoreThanOneEqualSignKeepsItsKey) {
  cInterfaceRecord interface;
  interface.SetOptions("a=1,b,c=2=3");
  EXPECT_THAT(interface.optionMap, ElementsAre(Pair("a", "1"), Pair("b", ""), Pair("c", "")));
  EXPECT_EQ(interface.options, "a=1,b,c=2=3");
}

TEST(InterfaceRecord, OptionsOfOddFormsAreTakenAsTheyStand) {
  cInterfaceRecord interface;
  interface.SetOptions(",a=,,=b, c = d ,e=1,e=2,");
  EXPECT_THAT(interface.optionMap, ElementsAre(Pair("", "b"), Pair(" c ", " d "), Pair("a", ""), Pair("e", "2")));
  EXPECT_EQ(interface.options, ",a=,,=b, c = d ,e=1,e=2,") << "letter for letter";
  EXPECT_EQ(interface.ToRecord().GetTextPar("options"), interface.options);
}

TEST(InterfaceRecord, NewOptionsReplaceTheOldOnes) {
  cInterfaceRecord interface = Full();
  interface.SetOptions("parity=none");
  EXPECT_THAT(interface.optionMap, ElementsAre(Pair("parity", "none")));
  interface.SetOptions(interface.options);
  EXPECT_THAT(interface.optionMap, ElementsAre(Pair("parity", "none"))) << "its own text may be given";
}

TEST(InterfaceRecord, AnOptionIsFoundInAValidRecordOnly) {
  cInterfaceRecord interface;
  interface.optionMap.Set("baud", "9600");
  std::string value = "untouched";
  EXPECT_FALSE(interface.GetOption("baud", value));
  EXPECT_EQ(value, "untouched");
  interface.SetName("RS485");
  EXPECT_TRUE(interface.GetOption("baud", value));
  EXPECT_EQ(value, "9600");
  EXPECT_FALSE(interface.GetOption("parity", value));
  EXPECT_EQ(value, "9600");
}

// ---- record form

TEST(InterfaceRecord, TheRecordFormIsInItsOrderWithoutTheMeters) {
  EXPECT_THAT(Parameters(Full().ToRecord()),
              ElementsAre("version uint=1", "name text=RS485", "options text=baud=9600,term", "enabled bool=true"));
  EXPECT_THAT(Parameters(cInterfaceRecord().ToRecord()),
              ElementsAre("version uint=1", "name text=", "options text=", "enabled bool=false"));
}

TEST(InterfaceRecord, SurvivesTheRoundTripButForItsMeters) {
  cInterfaceRecord read, expected = Full();
  EXPECT_TRUE(read.FromRecord(Full().ToRecord()));
  expected.meters.clear();
  EXPECT_EQ(Dump(read), Dump(expected));
}

TEST(InterfaceRecord, ReadsTheLeastThatIsAnInterface) {
  cInterfaceRecord read = Full();
  read.error = "old";
  EXPECT_TRUE(read.FromRecord(Form()));
  EXPECT_EQ(Dump(read), "1 valid RS485||disabled|") << "what was there before is forgotten";
}

TEST(InterfaceRecord, OptionsAndSwitchOfAnotherTypeAreNotRead) {
  vorn::cRecord form = Form();
  form.AppendUIntPar("options", 1);
  form.AppendUIntPar("enabled", 1);
  cInterfaceRecord read;
  EXPECT_TRUE(read.FromRecord(form));
  EXPECT_EQ(Dump(read), "1 valid RS485||disabled|");
}

TEST(InterfaceRecord, AnEmptyRecordIsRefusedWithoutAWord) {
  const cCapturedTrace trace;
  cInterfaceRecord read = Full();
  EXPECT_FALSE(read.FromRecord(vorn::cRecord()));
  EXPECT_EQ(Dump(read), Dump(cInterfaceRecord()));
  EXPECT_THAT(trace.GetLines(), IsEmpty());
}

TEST(InterfaceRecord, RefusesAnotherVersion) {
  for (const unsigned int version : {0u, 2u}) {
    const cCapturedTrace trace;
    vorn::cRecord form = Form();
    form.SetUIntPar("version", version);
    cInterfaceRecord read;
    EXPECT_FALSE(read.FromRecord(form));
    EXPECT_EQ(Dump(read), std::to_string(version) + " invalid ||disabled|unknown message version");
    EXPECT_THAT(trace.GetLines(), ElementsAre("UnitTAV 2 InterfaceRecord: unknown version"));
  }
}

TEST(InterfaceRecord, RefusesAMissingNameAndReadsNothingBehindIt) {
  vorn::cRecord missing, empty, mistyped;
  for (vorn::cRecord* form : {&missing, &empty, &mistyped}) form->AppendUIntPar("version", 1);
  empty.AppendTextPar("name", "");
  mistyped.AppendUIntPar("name", 485);
  for (vorn::cRecord* form : {&missing, &empty, &mistyped}) {
    const cCapturedTrace trace;
    form->AppendTextPar("options", "baud=9600");
    form->AppendBoolPar("enabled", true);
    cInterfaceRecord read;
    EXPECT_FALSE(read.FromRecord(*form));
    EXPECT_EQ(Dump(read), "1 invalid ||disabled|missing interface name");
    EXPECT_THAT(trace.GetLines(), IsEmpty());
  }
}

// ---- meters of a record

TEST(InterfaceRecord, ReadsItsMetersAndSkipsInvalidOnes) {
  vorn::cRecord form = Form();
  form.AppendRecordPar("meterconfig-record", Meter("1").ToRecord());
  form.AppendRecordPar("meterconfig-record", cMeterConfig().ToRecord());
  form.AppendTextPar("between", "of another name");
  form.AppendRecordPar("other", Meter("2").ToRecord());
  form.AppendRecordPar("meterconfig-record", Meter("3").ToRecord());
  cInterfaceRecord read;
  EXPECT_TRUE(read.FromRecord(form));
  EXPECT_THAT(MeterIds(read), ElementsAre("1", "3")) << "parameters of other names are passed over";
}

TEST(InterfaceRecord, AMeterThatIsNoRecordEndsTheMeters) {
  for (const bool isEmptyRecord : {false, true}) {
    vorn::cRecord form = Form();
    form.AppendRecordPar("meterconfig-record", Meter("1").ToRecord());
    if (isEmptyRecord)
      form.AppendRecordPar("meterconfig-record", vorn::cRecord());
    else
      form.AppendTextPar("meterconfig-record", "no record");
    form.AppendRecordPar("meterconfig-record", Meter("2").ToRecord());
    cInterfaceRecord read;
    EXPECT_TRUE(read.FromRecord(form));
    EXPECT_THAT(MeterIds(read), ElementsAre("1"));
  }
}

TEST(InterfaceRecord, AMeterOfAnotherVersionIsSkipped) {
  const cCapturedTrace trace;
  vorn::cRecord form = Form(), meter = Meter("1").ToRecord();
  meter.SetUIntPar("version", 2);
  form.AppendRecordPar("meterconfig-record", meter);
  form.AppendRecordPar("meterconfig-record", Meter("2").ToRecord());
  cInterfaceRecord read;
  EXPECT_TRUE(read.FromRecord(form));
  EXPECT_THAT(MeterIds(read), ElementsAre("2"));
  EXPECT_EQ(read.error, "");
  EXPECT_THAT(trace.GetLines(), ElementsAre("UnitTAV 2 MeterConfigRecord: unknown version"));
}

// ---- text

TEST(InterfaceRecord, TellsNameSwitchAndOptions) {
  EXPECT_EQ(cInterfaceRecord("RS485", "baud=9600", true).ToString(), "RS485(enabled):baud=9600");
  EXPECT_EQ(cInterfaceRecord("RS485").ToString(), "RS485(disabled):");
}
