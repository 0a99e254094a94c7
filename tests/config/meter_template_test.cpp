// SPDX-License-Identifier: Apache-2.0
#include <tav/config/meter_template.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include <tav/framework/xml.h>
#include <tests/support/captured_trace.h>
#include <tests/support/parameters.h>
#include <tests/support/temp_folder.h>
#include <tests/support/trace_level.h>

using tav::cCollectorConfig;
using tav::cMeterTemplate;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

cMeterTemplate Full() {
  cCollectorConfig collector;
  collector.SetAddr("1");
  collector.SetLogger(96, 2, "15min");
  collector.SetLoggedObisID("1-0:1.8.0");
  cMeterTemplate preset;
  preset.name = "heat";
  preset.id = 42;
  preset.enable = true;
  preset.meterConfig.SetIdentification("12345678", "5", "04", "ABC");
  preset.meterConfig.SetInterfaceOptions("MBUS", "MBUS", "baud=2400");
  preset.meterConfig.AddCollector(collector);
  preset.pushConfig.configure(1, "portal", "https", "example.net", "gate", "secret", "in", 10, 60, true, true, true);
  return preset;
}

std::string DumpWithoutId(const cMeterTemplate& t) {
  return std::to_string(t.version) + "|" + t.name + (t.enable ? "|enabled|" : "|disabled|") + t.error + "|" +
         t.meterConfig.ToRecord().ToString() + "|" + t.pushConfig.ToRecord().ToString();
}

std::string Dump(const cMeterTemplate& t) { return std::to_string(t.id) + " " + DumpWithoutId(t); }

class MeterTemplateFile : public testing::Test {
 protected:
  std::string Path(const std::string& file) const { return m_folder.GetPath() + "/" + file; }
  void Write(const std::string& file, const std::string& content) const { std::ofstream(Path(file)) << content; }
  std::vector<std::string> Files() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(m_folder.GetPath()))
      names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
  }
  bool Load(cMeterTemplate& preset) const { return preset.Load(m_folder.GetPath()); }
  bool Store(const cMeterTemplate& preset) const { return preset.Store(m_folder.GetPath()); }

  cTempFolder m_folder;
  const cTraceLevel m_level{"UnitTAV", 8};
  cCapturedTrace m_trace;
};

}  // namespace

TEST(MeterTemplate, StartsWithItsDefaults) {
  const cMeterTemplate preset;
  EXPECT_EQ(preset.version, 1u);
  EXPECT_EQ(preset.name + preset.error, "");
  EXPECT_EQ(preset.id, 0u);
  EXPECT_FALSE(preset.enable);
  EXPECT_FALSE(preset.meterConfig.valid);
  EXPECT_TRUE(preset.meterConfig.storeRawEnabled);
  EXPECT_EQ(preset.pushConfig.collect, 20u);
}

TEST(MeterTemplate, IsAlwaysValid) {
  EXPECT_TRUE(cMeterTemplate().isValid());
  EXPECT_TRUE(Full().isValid());
}

TEST(MeterTemplate, InitRestoresTheDefaultsInsideToo) {
  cMeterTemplate preset = Full();
  preset.version = 7;
  preset.error = "old";
  preset.meterConfig.error = "old";
  preset.pushConfig.error = "old";
  preset.Init();
  EXPECT_EQ(Dump(preset), Dump(cMeterTemplate()));
  EXPECT_EQ(preset.meterConfig.error + preset.pushConfig.error, "");
}

TEST(MeterTemplate, AssignmentLeavesNumberAndErrorAlone) {
  cMeterTemplate source = Full(), target;
  source.version = 2;
  source.error = "old";
  target.id = 2;
  target = source;
  EXPECT_EQ(target.id, 2u);
  EXPECT_EQ(target.error, "");
  source.error = "";
  EXPECT_EQ(DumpWithoutId(target), DumpWithoutId(source)) << "and copies all else, the version too";
  const cMeterTemplate& same = target;
  target = same;
  EXPECT_EQ(DumpWithoutId(target), DumpWithoutId(source));
}

TEST(MeterTemplate, AssignsMeterAndPushTargetByTheirOwnRules) {
  cMeterTemplate source = Full(), target;
  source.meterConfig.error = "meter";
  source.pushConfig.error = "push";
  target = source;
  EXPECT_EQ(target.meterConfig.error, "meter");
  EXPECT_EQ(target.pushConfig.error, "") << "a push target's error text is not assigned";
}

TEST(MeterTemplate, ACopyHasNumberAndErrorToo) {
  cMeterTemplate source = Full();
  source.error = "old";
  const cMeterTemplate copy = source;
  EXPECT_EQ(Dump(copy), Dump(source));
}

// ---- record form

TEST(MeterTemplate, TheRecordFormIsInItsOrderWithoutTheNumber) {
  const vorn::cRecord form = Full().ToRecord();
  EXPECT_EQ(form.GetRecordPar("meter-config"), Full().meterConfig.ToRecord());
  EXPECT_EQ(form.GetRecordPar("push-config"), Full().pushConfig.ToRecord());
  std::vector<std::string> names;
  for (vorn::cRecordPar par = form.First(); par.IsValid(); par = par.Next()) names.push_back(par.GetName());
  EXPECT_THAT(names, ElementsAre("version", "name", "enable", "meter-config", "push-config"));
  EXPECT_THAT(Parameters(form), testing::Contains("enable bool=true"));
}

TEST(MeterTemplate, TheRoundTripLosesTheNumberAndTheCollectorsDistance) {
  cMeterTemplate read = Full(), expected = Full();
  EXPECT_TRUE(read.FromRecord(Full().ToRecord()));
  expected.meterConfig.collectors.front().distanceRP = 0;
  EXPECT_EQ(read.id, 0u) << "the owner gives it anew";
  EXPECT_EQ(DumpWithoutId(read), DumpWithoutId(expected));
}

TEST(MeterTemplate, ReadsTheLeastThatIsATemplate) {
  vorn::cRecord form;
  form.AppendUIntPar("version", 1);
  cMeterTemplate read = Full();
  EXPECT_TRUE(read.FromRecord(form));
  EXPECT_EQ(Dump(read), Dump(cMeterTemplate()));
}

TEST(MeterTemplate, ParametersOfAnotherTypeAreReadAsEmpty) {
  vorn::cRecord form;
  form.AppendUIntPar("version", 1);
  for (const char* name : {"name", "enable", "meter-config", "push-config"}) form.AppendUIntPar(name, 1);
  cMeterTemplate read = Full();
  EXPECT_TRUE(read.FromRecord(form));
  EXPECT_EQ(Dump(read), Dump(cMeterTemplate()));
}

TEST(MeterTemplate, WhatIsWrongInsideDoesNotRefuseIt) {
  cMeterTemplate preset = Full(), read;
  preset.meterConfig.meterID = "";
  preset.pushConfig.host = "";
  EXPECT_TRUE(read.FromRecord(preset.ToRecord()));
  EXPECT_EQ(read.error, "");
  EXPECT_EQ(read.meterConfig.error, "missing meterID");
  EXPECT_EQ(read.pushConfig.error, "missing host");
}

TEST(MeterTemplate, AnEmptyRecordIsRefusedWithoutAWord) {
  const cCapturedTrace trace;
  cMeterTemplate read = Full();
  EXPECT_FALSE(read.FromRecord(vorn::cRecord()));
  EXPECT_EQ(Dump(read), Dump(cMeterTemplate()));
  EXPECT_THAT(trace.GetLines(), IsEmpty());
}

TEST(MeterTemplate, RefusesAnotherVersionWithTheLineOfTheMeterConfiguration) {
  for (const unsigned int version : {0u, 2u}) {
    const cCapturedTrace trace;
    vorn::cRecord form = Full().ToRecord();
    form.SetUIntPar("version", version);
    cMeterTemplate read;
    EXPECT_FALSE(read.FromRecord(form));
    EXPECT_EQ(read.version, version);
    EXPECT_EQ(read.name, "");
    EXPECT_EQ(read.error, "unknown message version");
    EXPECT_THAT(trace.GetLines(), ElementsAre("UnitTAV 2 MeterConfigRecord: unknown version"));
  }
}

TEST(MeterTemplate, TheTextHoldsThoseOfMeterAndPushTarget) {
  EXPECT_EQ(Full().ToString(),
            "name=heat, enable=true, meter-config={12345678(5)/04/ABCinterface=MBUS(MBUS) baud=2400}, push-config={"
            "name=portal, host=example.net, uri=in, enable=TRUE, log=ON, post=ON}");
  EXPECT_THAT(cMeterTemplate().ToString(), HasSubstr("name=, enable=false, meter-config={()//"));
}

// ---- files

TEST_F(MeterTemplateFile, IsNamedAfterTheNumber) {
  cMeterTemplate small = Full(), large = Full();
  large.id = 0xFFFFFFFFFFFFFFFF;
  EXPECT_TRUE(Store(small));
  EXPECT_TRUE(Store(large));
  EXPECT_THAT(Files(), ElementsAre("18446744073709551615.mt", "42.mt"));
  EXPECT_THAT(m_trace.GetLines(), ElementsAre("UnitTAV 8 meterTemplate[heat] stored, file=42.mt",
                                              "UnitTAV 8 meterTemplate[heat] stored, file=18446744073709551615.mt"));
}

TEST_F(MeterTemplateFile, WhatWasStoredIsLoadedButForTheDistance) {
  ASSERT_TRUE(Store(Full()));
  cMeterTemplate read, expected = Full();
  read.id = 42;
  EXPECT_TRUE(Load(read));
  expected.meterConfig.collectors.front().distanceRP = 0;
  EXPECT_EQ(DumpWithoutId(read), DumpWithoutId(expected));
  EXPECT_EQ(m_trace.GetLines().back(), "UnitTAV 8 meterTemplate[heat] loaded, file=42.mt");
}

TEST_F(MeterTemplateFile, LoadingSetsTheNumberToZero) {
  ASSERT_TRUE(Store(Full()));
  cMeterTemplate read = Full();
  EXPECT_TRUE(Load(read));
  EXPECT_EQ(read.id, 0u) << "a further Store goes to 0.mt unless its owner gives the number again";
}

TEST_F(MeterTemplateFile, AMissingFileIsNoFailureAndChangesNothing) {
  cMeterTemplate read = Full();
  EXPECT_TRUE(Load(read));
  EXPECT_EQ(Dump(read), Dump(Full()));
  EXPECT_THAT(m_trace.GetLines(), ElementsAre("UnitTAV 8 meterTemplate[heat] empty loaded"));
}

TEST_F(MeterTemplateFile, TemplatesOfOneNumberShareTheFile) {
  cMeterTemplate water = Full();
  water.name = "water";
  ASSERT_TRUE(Store(Full()));
  ASSERT_TRUE(Store(water));
  cMeterTemplate read;
  read.id = 42;
  EXPECT_TRUE(Load(read));
  EXPECT_EQ(read.name, "water");
  EXPECT_THAT(Files(), ElementsAre("42.mt"));
}

TEST_F(MeterTemplateFile, AnAssignedTemplateKeepsItsOwnFile) {
  cMeterTemplate a = Full(), b;
  a.id = 1;
  b.id = 2;
  b = a;
  EXPECT_TRUE(Store(b));
  EXPECT_THAT(Files(), ElementsAre("2.mt"));
}

TEST_F(MeterTemplateFile, AFileThatIsNoXmlIsRefusedWithTheReadersWords) {
  Write("42.mt", "<record");
  cMeterTemplate read = Full();
  EXPECT_FALSE(Load(read));
  EXPECT_EQ(Dump(read), Dump(Full())) << "nothing was read";
  vorn::cRecord record;
  const int code = xml::RecordFromXmlFile(record, "42.mt", m_folder.GetPath(), nullptr);
  EXPECT_THAT(m_trace.GetLines(), ElementsAre(std::string("UnitTAV 2 meterTemplate[heat] load failed, file=42.mt, ") +
                                              XMLNode::getError(code)));
}

TEST_F(MeterTemplateFile, AFileOfAnotherVersionIsBadDataAndEmptiesTheTemplate) {
  vorn::cRecord form = Full().ToRecord();
  form.SetUIntPar("version", 2);
  ASSERT_EQ(xml::RecordToXmlFile(form, "42.mt", m_folder.GetPath(), nullptr, true), 0);
  cMeterTemplate read = Full();
  EXPECT_FALSE(Load(read));
  EXPECT_EQ(read.error, "unknown message version");
  EXPECT_THAT(m_trace.GetLines(), ElementsAre("UnitTAV 2 MeterConfigRecord: unknown version",
                                              "UnitTAV 2 meterTemplate[] load failed, bad data, file=42.mt"));
}

TEST_F(MeterTemplateFile, AFileWithAnEmptyRecordIsBadData) {
  ASSERT_EQ(xml::RecordToXmlFile(vorn::cRecord(), "42.mt", m_folder.GetPath(), nullptr, true), 0);
  cMeterTemplate read = Full();
  EXPECT_FALSE(Load(read));
  EXPECT_THAT(m_trace.GetLines(), ElementsAre("UnitTAV 2 meterTemplate[] load failed, bad data, file=42.mt"));
}

TEST_F(MeterTemplateFile, AFolderThatIsNotThereCannotBeStoredIn) {
  EXPECT_FALSE(Full().Store(Path("missing")));
  ASSERT_EQ(m_trace.GetLines().size(), 1u);
  EXPECT_THAT(m_trace.GetLines()[0], HasSubstr("UnitTAV 2 meterTemplate[heat] stored failed, file=42.mt, "));
  EXPECT_THAT(Files(), IsEmpty());
}

TEST_F(MeterTemplateFile, TellsSuccessesAtTheirLevelOnly) {
  const cTraceLevel level("UnitTAV", 7);
  cMeterTemplate preset = Full();
  EXPECT_TRUE(Load(preset));
  EXPECT_TRUE(Store(preset));
  EXPECT_TRUE(Load(preset));
  EXPECT_THAT(m_trace.GetLines(), IsEmpty());
}
