// SPDX-License-Identifier: Apache-2.0
#include <tav/config/meter_config.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tests/support/captured_trace.h>
#include <tests/support/parameters.h>

using tav::cCollectorConfig;
using tav::cMeterConfig;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::Pair;

namespace {

cCollectorConfig Collector(const std::string& addr) {
  cCollectorConfig collector;
  collector.SetAddr(addr);
  collector.SetLogger(96, 1, "15min");
  collector.SetLoggedObisID("1-0:1.8.0");
  return collector;
}

cMeterConfig Full() {
  cMeterConfig meter;
  meter.SetIdentification("12345678", "5", "04", "ABC");
  meter.SetInterfaceOptions("MBUS", "MBUS", "baud=2400");
  meter.SetKey("00112233");
  meter.SetVendor("vendor");
  meter.pushEnabled = true;
  meter.storeRawEnabled = false;
  meter.AddCollector(Collector("1"));
  meter.AddCollector(Collector("2"));
  return meter;
}

vorn::cRecord Form() {
  vorn::cRecord form;
  form.AppendUIntPar("version", 1);
  form.AppendTextPar("meterID", "4711");
  return form;
}

std::string Driver(const std::string& name, const std::string& protocol) {
  cMeterConfig meter;
  meter.SetInterfaceOptions(name, protocol, "");
  return meter.interfaceDriver;
}

std::vector<std::string> Addresses(const cMeterConfig& meter) {
  std::vector<std::string> all;
  for (const cCollectorConfig& collector : meter.collectors) all.push_back(collector.addr);
  return all;
}

// Every field.
std::string Dump(const cMeterConfig& m) {
  std::string text = std::to_string(m.version) + (m.valid ? " valid " : " invalid ") + m.meterID + "|" + m.addr + "|" +
                     m.medium + "|" + m.mfct + "|" + m.key + "|" + m.vendor + "|" + m.interfaceDriver + "|" +
                     m.interfaceName + "|" + m.interfaceProtocol + "|" + m.interfaceOptions + "|" + m.error +
                     (m.pushEnabled ? "|push" : "|-") + (m.storeRawEnabled ? " raw" : " -");
  for (const auto& [key, value] : m.interfaceOptionMap) text += "|" + key + "->" + value;
  for (const std::string& addr : Addresses(m)) text += "|collector " + addr;
  return text;
}

}  // namespace

TEST(MeterConfig, StartsWithItsDefaultsAndStoresRawTelegrams) {
  EXPECT_EQ(Dump(cMeterConfig()), "1 invalid |||||||||||- raw");
}

TEST(MeterConfig, EverySetterSetsItsFields) {
  EXPECT_EQ(Dump(Full()),
            "1 valid 12345678|5|04|ABC|00112233|vendor|mbif|MBUS|MBUS|baud=2400||push -|baud->2400|collector 1|"
            "collector 2");
}

TEST(MeterConfig, InitRestoresTheDefaults) {
  cMeterConfig meter = Full();
  meter.version = 7;
  meter.error = "old";
  meter.Init();
  EXPECT_EQ(Dump(meter), Dump(cMeterConfig()));
}

TEST(MeterConfig, CopiesAndAssignsEveryField) {
  cMeterConfig source = Full();
  source.version = 2;
  source.error = "old";
  const cMeterConfig copy = source;
  cMeterConfig assigned;
  assigned = source;
  EXPECT_EQ(Dump(copy), Dump(source));
  EXPECT_EQ(Dump(assigned), Dump(source));
  const cMeterConfig& same = assigned;
  assigned = same;
  EXPECT_EQ(Dump(assigned), Dump(source));
}

// ---- identification and options

TEST(MeterConfig, TheMeterIdMakesItValid) {
  cMeterConfig meter;
  meter.SetIdentification("", "5", "04", "ABC");
  EXPECT_EQ(Dump(meter), "1 invalid |5|04|ABC|||||||missing meterID|- raw");
  meter.SetIdentification("4711", "", "", "");
  EXPECT_TRUE(meter.valid);
  EXPECT_EQ(meter.error, "missing meterID") << "a later success keeps the error text";
  meter.SetIdentification("", "", "", "");
  EXPECT_FALSE(meter.valid);
}

TEST(MeterConfig, EveryInterfaceAndProtocolHasItsDriver) {
  EXPECT_EQ(Driver("RS232", "SML"), "ehzif");
  EXPECT_EQ(Driver("RS232", "1107"), "1107if");
  EXPECT_EQ(Driver("RS485", "1107"), "1107if");
  EXPECT_EQ(Driver("RS485", "DLMS"), "dlmsif");
  EXPECT_EQ(Driver("RS485", "MODBUS-SLAVE"), "modsif");
  EXPECT_EQ(Driver("SIM", "SML"), "ehzif");
  EXPECT_EQ(Driver("WMBUS", "SML"), "wmbif");
  EXPECT_EQ(Driver("WMBUS", "MBUS"), "wmbif");
  EXPECT_EQ(Driver("MBUS", "MBUS"), "mbif");
}

TEST(MeterConfig, TheModbusMasterIsServedByTheDlmsDriver) { EXPECT_EQ(Driver("RS485", "MODBUS"), "dlmsif"); }

TEST(MeterConfig, AnyOtherPairHasAnUnknownDriver) {
  const std::pair<const char*, const char*> kPairs[] = {
      {"rs485", "DLMS"}, {"RS485", "dlms"},  {"MBUS", "SML"},     {"RS232", "DLMS"}, {"RS485", "SML"},
      {"SIM", "MBUS"},   {"RS485 ", "1107"}, {"RS485-1", "DLMS"}, {"", ""},          {"WMBUS", ""},
  };
  for (const auto& [name, protocol] : kPairs) EXPECT_EQ(Driver(name, protocol), "unknown") << name << "/" << protocol;
}

TEST(MeterConfig, TheDriverFollowsTheLastInterfaceSet) {
  cMeterConfig meter = Full();
  meter.SetInterfaceOptions("SIM", "SML", "");
  EXPECT_EQ(meter.interfaceDriver, "ehzif");
  meter.SetInterfaceOptions("SIM", "DLMS", "");
  EXPECT_EQ(meter.interfaceDriver, "unknown");
}

TEST(MeterConfig, OptionsWithMoreThanOneEqualSignAreIgnored) {
  cMeterConfig meter;
  meter.SetInterfaceOptions("RS485", "DLMS", "a=1,b,c=2=3");
  EXPECT_THAT(meter.interfaceOptionMap, ElementsAre(Pair("a", "1"), Pair("b", "")));
  EXPECT_EQ(meter.interfaceOptions, "a=1,b,c=2=3") << "the text stays as it was set";
}

TEST(MeterConfig, OptionsOfOddFormsAreTakenAsTheyStand) {
  cMeterConfig meter;
  meter.SetInterfaceOptions("RS485", "DLMS", ",a=,,=b, c = d ,e=1,e=2,==,e2,");
  EXPECT_THAT(meter.interfaceOptionMap,
              ElementsAre(Pair("", "b"), Pair(" c ", " d "), Pair("a", ""), Pair("e", "2"), Pair("e2", "")));
}

TEST(MeterConfig, NewOptionsReplaceTheOldOnes) {
  cMeterConfig meter = Full();
  meter.SetInterfaceOptions("MBUS", "MBUS", "parity=none");
  EXPECT_THAT(meter.interfaceOptionMap, ElementsAre(Pair("parity", "none")));
}

TEST(MeterConfig, AnOptionIsFoundInAValidConfigurationOnly) {
  cMeterConfig meter;
  meter.SetInterfaceOptions("MBUS", "MBUS", "baud=2400,term");
  std::string value = "untouched";
  EXPECT_FALSE(meter.GetInterfaceOption("baud", value));
  EXPECT_EQ(value, "untouched");
  meter.SetIdentification("4711", "", "", "");
  EXPECT_TRUE(meter.GetInterfaceOption("baud", value));
  EXPECT_EQ(value, "2400");
  EXPECT_FALSE(meter.GetInterfaceOption("parity", value));
  EXPECT_EQ(value, "2400");
  EXPECT_TRUE(meter.GetInterfaceOption("term", value));
  EXPECT_EQ(value, "");
}

// ---- record form

TEST(MeterConfig, TheRecordFormIsInItsOrderCollectorsLast) {
  cMeterConfig meter = Full();
  std::vector<std::string> parameters = Parameters(meter.ToRecord());
  ASSERT_EQ(parameters.size(), 14u);
  EXPECT_THAT(parameters[12], HasSubstr("collector-config record={version uint=1, addr text=1,"));
  EXPECT_THAT(parameters[13], HasSubstr("collector-config record={version uint=1, addr text=2,"));
  parameters.resize(12);
  EXPECT_THAT(
      parameters,
      ElementsAre("version uint=1", "meterID text=12345678", "addr text=5", "medium text=04", "mfct text=ABC",
                  "key text=00112233", "vendor text=vendor", "interface-name text=MBUS", "interface-protocol text=MBUS",
                  "interface-options text=baud=2400", "push-enabled bool=true", "store-raw-enabled bool=false"));
}

TEST(MeterConfig, TheRecordFormHasEmptyTextsToo) {
  EXPECT_THAT(Parameters(cMeterConfig().ToRecord()),
              ElementsAre("version uint=1", "meterID text=", "addr text=", "medium text=", "mfct text=", "key text=",
                          "vendor text=", "interface-name text=", "interface-protocol text=", "interface-options text=",
                          "push-enabled bool=false", "store-raw-enabled bool=true"));
}

TEST(MeterConfig, SurvivesTheRoundTripWithItsCollectors) {
  cMeterConfig read;
  EXPECT_TRUE(read.FromRecord(Full().ToRecord()));
  EXPECT_EQ(Dump(read), Dump(Full()));
}

TEST(MeterConfig, ARecordWithoutStoreRawReadsAsNotStored) {
  cMeterConfig read;
  EXPECT_TRUE(read.FromRecord(Form()));
  EXPECT_FALSE(read.storeRawEnabled) << "although a fresh configuration has it on";
  EXPECT_EQ(Dump(read), "1 valid 4711||||||unknown|||||- -");
}

TEST(MeterConfig, ParametersOfAnotherTypeAreReadAsEmpty) {
  vorn::cRecord form = Form();
  for (const char* name : {"addr", "medium", "mfct", "key", "vendor", "interface-name", "interface-protocol",
                           "interface-options", "push-enabled", "store-raw-enabled", "collector-config"})
    form.AppendUIntPar(name, 1);
  cMeterConfig read;
  EXPECT_TRUE(read.FromRecord(form));
  EXPECT_EQ(Dump(read), "1 valid 4711||||||unknown|||||- -");
}

TEST(MeterConfig, AMissingMeterIdRefusesButTheRestIsRead) {
  const cCapturedTrace trace;
  vorn::cRecord form = Full().ToRecord();
  cMeterConfig expected = Full();
  expected.SetIdentification("", "5", "04", "ABC");
  for (const bool mistyped : {false, true}) {
    if (mistyped)
      form.SetUIntPar("meterID", 4711);
    else
      form.SetTextPar("meterID", "");
    cMeterConfig read;
    EXPECT_FALSE(read.FromRecord(form));
    EXPECT_EQ(read.error, "missing meterID");
    EXPECT_EQ(Dump(read), Dump(expected));
  }
  EXPECT_THAT(trace.GetLines(), IsEmpty());
}

TEST(MeterConfig, ReadingForgetsWhatWasThereBefore) {
  cMeterConfig read = Full();
  read.error = "old";
  EXPECT_TRUE(read.FromRecord(Form()));
  EXPECT_EQ(Dump(read), "1 valid 4711||||||unknown|||||- -");
}

TEST(MeterConfig, AnEmptyRecordIsRefusedWithoutAWord) {
  const cCapturedTrace trace;
  cMeterConfig read = Full();
  EXPECT_FALSE(read.FromRecord(vorn::cRecord()));
  EXPECT_EQ(Dump(read), Dump(cMeterConfig()));
  EXPECT_THAT(trace.GetLines(), IsEmpty());
}

TEST(MeterConfig, RefusesAnotherVersion) {
  for (const unsigned int version : {0u, 2u}) {
    const cCapturedTrace trace;
    vorn::cRecord form = Form();
    form.SetUIntPar("version", version);
    cMeterConfig read;
    EXPECT_FALSE(read.FromRecord(form));
    EXPECT_FALSE(read.valid);
    EXPECT_EQ(read.version, version);
    EXPECT_EQ(read.error, "unknown message version");
    EXPECT_EQ(read.meterID, "");
    EXPECT_THAT(trace.GetLines(), ElementsAre("UnitTAV 2 MeterConfigRecord: unknown version"));
  }
}

// ---- collectors of a record

TEST(MeterConfig, DropsInvalidCollectorsAndGoesOn) {
  const cCapturedTrace trace;
  vorn::cRecord form = Form(), otherVersion = Collector("3").ToRecord();
  otherVersion.SetUIntPar("version", 2);
  form.AppendRecordPar("collector-config", cCollectorConfig().ToRecord());
  form.AppendRecordPar("collector-config", otherVersion);
  form.AppendRecordPar("collector-config", Collector("2").ToRecord());
  cMeterConfig read;
  EXPECT_TRUE(read.FromRecord(form));
  EXPECT_THAT(Addresses(read), ElementsAre("2"));
  EXPECT_EQ(read.error, "");
}

TEST(MeterConfig, KeepsACollectorThatIsToBeRemoved) {
  cCollectorConfig collector;
  collector.SetAddr("1");
  collector.shouldRemoved = true;
  cMeterConfig meter = Full();
  meter.collectors = {collector};
  cMeterConfig read;
  EXPECT_TRUE(read.FromRecord(meter.ToRecord()));
  ASSERT_THAT(Addresses(read), ElementsAre("1"));
  EXPECT_TRUE(read.collectors.front().shouldRemoved);
}

TEST(MeterConfig, ARecordOfAnyNameBehindTheFirstCollectorIsACollectorToo) {
  vorn::cRecord form = Form();
  form.AppendRecordPar("other", Collector("0").ToRecord());
  form.AppendRecordPar("collector-config", Collector("1").ToRecord());
  form.AppendRecordPar("other", Collector("2").ToRecord());
  form.AppendRecordPar("other", Form());
  form.AppendRecordPar("collector-config", Collector("3").ToRecord());
  cMeterConfig read;
  EXPECT_TRUE(read.FromRecord(form));
  EXPECT_THAT(Addresses(read), ElementsAre("1", "2", "3")) << "before the first one it is none";
}

TEST(MeterConfig, AnyOtherParameterEndsTheCollectors) {
  for (const char* name : {"text", "empty", "collector-config"}) {
    vorn::cRecord form = Form();
    form.AppendRecordPar("collector-config", Collector("1").ToRecord());
    if (name == std::string("empty"))
      form.AppendRecordPar(name, vorn::cRecord());
    else
      form.AppendTextPar(name, "no record");
    form.AppendRecordPar("collector-config", Collector("2").ToRecord());
    cMeterConfig read;
    EXPECT_TRUE(read.FromRecord(form));
    EXPECT_THAT(Addresses(read), ElementsAre("1")) << name;
  }
}

TEST(MeterConfig, AFirstCollectorThatIsNoRecordHidesAllOthers) {
  vorn::cRecord form = Form();
  form.AppendUIntPar("collector-config", 1);
  form.AppendRecordPar("collector-config", Collector("2").ToRecord());
  cMeterConfig read;
  EXPECT_TRUE(read.FromRecord(form));
  EXPECT_THAT(Addresses(read), IsEmpty());
}

// ---- text

TEST(MeterConfig, TheTextHasNothingBeforeInterfaceAndNoKey) {
  EXPECT_EQ(Full().ToString(), "12345678(5)/04/ABCinterface=MBUS(MBUS) baud=2400");
  EXPECT_THAT(Full().ToString(), Not(HasSubstr("00112233")));
  EXPECT_EQ(cMeterConfig().ToString(), "()//interface=() ");
}
