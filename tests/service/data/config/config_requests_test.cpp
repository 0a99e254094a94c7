// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/config/config_requests.h>

#include <gateway/service/data/config/config_limits.h>
#include <tests/service/data/config/config_world.h>
#include <tests/service/data/disk_sync.h>
#include <tests/support/trace_level.h>

namespace tav::data {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using vorn::cMsg;
using vorn::cRecord;

class ConfigRequests : public ConfigWorld {
 protected:
  void SetUsual() {
    ASSERT_EQ(Set(Interface()).GetType(), db_ctrl::eSetInterface + 1);
    ASSERT_EQ(Set(Target()).GetType(), db_ctrl::ePushTargetSet);
    cCollectorConfig collector = Collector();
    collector.SetPushTargetName("cloud");
    const cMsg answer = Set(With(Meter(), collector));
    ASSERT_EQ(answer.GetType(), db_ctrl::eSetMeter + 1) << Reason(answer);
    ASSERT_EQ(Set(Template()).GetType(), db_ctrl::eMeterTemplateSet);
  }
  static std::vector<std::string> Names(const std::vector<cInterfaceRecord>& interfaces) {
    std::vector<std::string> names;
    for (const cInterfaceRecord& interface : interfaces) names.push_back(interface.ToString());
    return names;
  }
  static std::vector<std::string> Ids(const std::vector<cMeterConfig>& meters) {
    std::vector<std::string> ids;
    for (const cMeterConfig& meter : meters) ids.push_back(meter.meterID + meter.medium + meter.mfct);
    return ids;
  }
};

// ---- interfaces

TEST_F(ConfigRequests, KeepsAnInterfaceAsItWasSet) {
  const cMsg answer = Set(Interface("RS485", "a=1,,b,c=2=3"));
  EXPECT_EQ(answer.GetType(), db_ctrl::eSetInterface + 1);
  EXPECT_TRUE(answer.Record().IsEmpty());
  EXPECT_THAT(Names(GetInterfaces("RS485")), ElementsAre("RS485(enabled):a=1,,b,c=2=3"));
  Set(cInterfaceRecord("RS485", "", false));
  EXPECT_THAT(Names(GetInterfaces("RS485")), ElementsAre("RS485(disabled):"));
}

TEST_F(ConfigRequests, GivesAllInterfacesByName) {
  for (const char* name : {"SIM", "MBUS", "RS232"}) Set(Interface(name));
  EXPECT_THAT(Names(GetInterfaces()),
              ElementsAre("MBUS(enabled):baud=9600", "RS232(enabled):baud=9600", "SIM(enabled):baud=9600"));
}

TEST_F(ConfigRequests, GivesNoInterfacesWhenThereAreNone) { EXPECT_TRUE(GetInterfaces().empty()); }

TEST_F(ConfigRequests, NestsMetersAndCollectorsAsTheyAreAskedFor) {
  SetUsual();
  EXPECT_TRUE(GetInterfaces("RS232", false, true)[0].meters.empty());
  const auto withMeters = GetInterfaces("RS232", true, false);
  ASSERT_EQ(withMeters[0].meters.size(), 1u);
  EXPECT_TRUE(withMeters[0].meters[0].collectors.empty());
  EXPECT_EQ(GetInterfaces("RS232", true, true)[0].meters[0].collectors.size(), 1u);
}

TEST_F(ConfigRequests, RefusesAnInterfaceThatIsNotThere) {
  const cMsg answer = Ask([](cDbCtrlIO& io, vorn::cUuid& tid) { return io.GetInterface(tid, "SIM", true, true); });
  EXPECT_EQ(answer.GetType(), db_ctrl::eGetInterface + 2);
  EXPECT_EQ(Reason(answer), "interface 'SIM' is not there");
  EXPECT_EQ(Reason(DeleteInterface("SIM")), "interface 'SIM' is not there");
  EXPECT_EQ(Reason(DeleteInterface("")), "interface '' is not there");
}

TEST_F(ConfigRequests, DeletesAnInterfaceOnlyWhenNoMeterNeedsIt) {
  SetUsual();
  const cMsg refused = DeleteInterface("RS232");
  EXPECT_EQ(refused.GetType(), db_ctrl::eDeleteInterface + 2);
  EXPECT_EQ(Reason(refused), "interface 'RS232' is needed by meter 'M1' medium 'E' manufactor 'EMH'");
  DeleteMeter("M1");
  const cMsg deleted = DeleteInterface("RS232");
  EXPECT_EQ(deleted.GetType(), db_ctrl::eInterfaceDeleted);
  EXPECT_THAT(Texts(deleted, "removed"), ElementsAre("interface 'RS232'"));
  EXPECT_TRUE(GetInterfaces().empty());
}

TEST_F(ConfigRequests, NamesOnlySomeOfVeryManyMetersThatNeedAnInterface) {
  Set(Interface());
  for (const char* id : {"1", "2", "3", "4", "5", "6"}) Set(Meter(id));
  EXPECT_THAT(Reason(DeleteInterface("RS232")), testing::EndsWith("meter '4' medium 'E' manufactor 'EMH' and 2 more"));
}

TEST_F(ConfigRequests, RefusesAnInterfaceWithMetersInIt) {
  cRecord interface = Interface().ToRecord();
  interface.AppendRecordPar("meterconfig-record", Meter().ToRecord());
  cRecord request;
  request.AppendRecordPar("interface-record", interface);
  EXPECT_EQ(Reason(AskRaw(db_ctrl::eSetInterface, request)),
            "interface 'RS232': holds a \"meterconfig-record\": a meter is set by itself and names its interface");
}

// ---- meters

TEST_F(ConfigRequests, KeepsAMeterAsItWasSet) {
  SetUsual();
  const auto meters = GetMeters("addr-M1");
  ASSERT_EQ(meters.size(), 1u);
  cMeterConfig expected = Meter();
  cMeterConfig found = meters[0];
  found.collectors.clear();
  EXPECT_EQ(Parameters(found.ToRecord()), Parameters(expected.ToRecord()));
  EXPECT_EQ(found.interfaceDriver, "ehzif");
  ASSERT_EQ(meters[0].collectors.size(), 1u);
  cCollectorConfig collector = Collector();
  collector.pushTargetIdx = 1;
  collector.pushTargetName = "cloud";
  EXPECT_EQ(Parameters(meters[0].collectors.front().ToRecord()), Parameters(collector.ToRecord()));
}

// A client writes the distance as "distanecRP" and reads it as "distanceRP": the service turns one into the other.
TEST_F(ConfigRequests, ADistanceWrittenAsDistanecRpIsReadAsDistanceRp) {
  SetUsual();
  ASSERT_TRUE(Collector().ToRecord().GetPar("distanecRP").IsValid());
  ASSERT_FALSE(Collector().ToRecord().GetPar("distanceRP").IsValid());
  EXPECT_EQ(GetMeters("M1")[0].collectors.front().distanceRP, 4u);
  EXPECT_EQ(GetInterfaces("RS232")[0].meters[0].collectors.front().distanceRP, 4u);
  EXPECT_EQ(GetTemplates("standard")[0].meterConfig.collectors.front().distanceRP, 4u);
}

TEST_F(ConfigRequests, AnAnsweredMeterMayBeSentBackAsItCame) {
  SetUsual();
  const cMsg answer = Ask([](cDbCtrlIO& io, vorn::cUuid& tid) { return io.GetMeter(tid, "M1"); });
  const std::string before = Dump();
  cRecord request;
  request.AppendRecordPar("meterconfig-record", answer.Record().GetRecordPar("meterconfig-record"));
  EXPECT_EQ(AskRaw(db_ctrl::eSetMeter, request).GetType(), db_ctrl::eSetMeter + 1);
  EXPECT_EQ(Dump(), before);
}

TEST_F(ConfigRequests, FindsMetersByAddressThenByIdentifier) {
  Set(Interface());
  cMeterConfig other = Meter("M2");
  other.addr = "M1";
  for (const cMeterConfig& meter : {Meter("M3"), other, Meter("M1")}) Set(meter);
  EXPECT_THAT(Ids(GetMeters("M1")), ElementsAre("M2EEMH"));
  EXPECT_THAT(Ids(GetMeters("M3")), ElementsAre("M3EEMH"));
  EXPECT_THAT(Ids(GetMeters("addr-M1")), ElementsAre("M1EEMH"));
  EXPECT_THAT(Ids(GetMeters("")), ElementsAre("M1EEMH", "M2EEMH", "M3EEMH"));
  const cMsg answer = Ask([](cDbCtrlIO& io, vorn::cUuid& tid) { return io.GetMeter(tid, "M9"); });
  EXPECT_EQ(answer.GetType(), db_ctrl::eGetMeter + 2);
  EXPECT_EQ(Reason(answer), "meter 'M9' is not there");
}

TEST_F(ConfigRequests, AMeterIsItsIdentifierMediumAndManufacturer) {
  Set(Interface());
  cMeterConfig gas = Meter("M1");
  gas.medium = "G";
  cMeterConfig bare = Meter("M1");
  bare.medium = bare.mfct = "";
  for (const cMeterConfig& meter : {Meter("M1"), gas, bare}) Set(meter);
  cMeterConfig changed = gas;
  changed.vendor = "another";
  Set(changed);
  EXPECT_THAT(Ids(GetMeters("M1")), ElementsAre("M1", "M1EEMH", "M1GEMH"));
  EXPECT_EQ(GetMeters("M1")[2].vendor, "another");
}

TEST_F(ConfigRequests, RefusesAMeterWithoutItsInterface) {
  const cMsg answer = Set(Meter());
  EXPECT_EQ(answer.GetType(), db_ctrl::eSetMeter + 2);
  EXPECT_EQ(Reason(answer), "meter 'M1': interface 'RS232' is not there");
  EXPECT_TRUE(GetMeters().empty());
}

TEST_F(ConfigRequests, ASetMeterLeavesTheCollectorsThatItDoesNotName) {
  Set(Interface());
  Set(With(With(Meter(), Collector("2")), Collector("10")));
  cCollectorConfig changed = Collector("10");
  changed.SetLogger(1, 1, "day");
  Set(With(With(Meter(), Collector("1")), changed));
  std::vector<std::string> collectors;
  const auto meters = GetMeters();
  for (const cCollectorConfig& collector : meters[0].collectors)
    collectors.push_back(collector.addr + " " + collector.eventType);
  EXPECT_THAT(collectors, ElementsAre("2 15min", "10 day", "1 15min"));
}

TEST_F(ConfigRequests, ShouldRemovedRemovesACollector) {
  SetUsual();
  cCollectorConfig gone;
  gone.SetAddr("1");
  gone.shouldRemoved = true;
  EXPECT_EQ(Set(With(Meter(), gone)).GetType(), db_ctrl::eSetMeter + 1);
  EXPECT_TRUE(GetMeters()[0].collectors.empty());
  // What is not there need not be removed.
  EXPECT_EQ(Set(With(Meter(), gone)).GetType(), db_ctrl::eSetMeter + 1);
}

TEST_F(ConfigRequests, DeletesAMeterWithItsCollectorsAndKeepsItsValues) {
  SetUsual();
  Store(Reading("M1", kNoon, {{"1-0:1.8.0", "1"}}));
  const cMsg answer = DeleteMeter("M1", "E", "EMH");
  EXPECT_EQ(answer.GetType(), db_ctrl::eMeterDeleted);
  EXPECT_THAT(Texts(answer, "removed"),
              ElementsAre("meter 'M1' medium 'E' manufactor 'EMH'", "collector '1' of meter 'M1'"));
  EXPECT_TRUE(GetMeters().empty());
  EXPECT_EQ(One("SELECT count(*) FROM collector"), "0");
  EXPECT_EQ(One("SELECT count(*) FROM value"), "1");
}

TEST_F(ConfigRequests, DeletesOnlyAMeterThatTheRequestMeansAlone) {
  Set(Interface());
  cMeterConfig gas = Meter("M1");
  gas.medium = "G";
  for (const cMeterConfig& meter : {Meter("M1"), gas, Meter("M2")}) Set(meter);
  EXPECT_EQ(Reason(DeleteMeter("M1")),
            "meter 'M1' may be any of meter 'M1' medium 'E' manufactor 'EMH', meter 'M1' medium 'G' manufactor 'EMH'");
  EXPECT_EQ(Reason(DeleteMeter("M1", "W")), "meter 'M1' medium 'W' is not there");
  EXPECT_EQ(Reason(DeleteMeter("", "", "EMH")).substr(0, 33), "meter manufactor 'EMH' may be any");
  EXPECT_EQ(Reason(DeleteMeter("")), "no meter is named");
  EXPECT_EQ(DeleteMeter("", "G").GetType(), db_ctrl::eMeterDeleted);
  EXPECT_THAT(Ids(GetMeters()), ElementsAre("M1EEMH", "M2EEMH"));
}

TEST_F(ConfigRequests, AMeterWithoutMediumAndManufacturerCanBeMeant) {
  Set(Interface());
  cMeterConfig bare = Meter("M1");
  bare.medium = bare.mfct = "";
  Set(Meter("M1"));
  Set(bare);
  EXPECT_EQ(DeleteMeter("M1").GetType(), db_ctrl::eMeterDeleted);
  EXPECT_THAT(Ids(GetMeters()), ElementsAre("M1EEMH"));
}

// ---- push targets

TEST_F(ConfigRequests, NumbersPushTargets) {
  EXPECT_EQ(Set(Target("a")).Record().GetUInt64Par("idx"), 1u);
  EXPECT_EQ(Set(Target("b", 7)).Record().GetUInt64Par("idx"), 7u);
  EXPECT_EQ(Set(Target("c")).Record().GetUInt64Par("idx"), 8u);
  // No number comes twice.
  DeleteTarget(8, "");
  EXPECT_EQ(Set(Target("d")).Record().GetUInt64Par("idx"), 9u);
  std::vector<std::string> names;
  for (const cPushTarget& target : GetTargets()) names.push_back(target.name);
  EXPECT_THAT(names, ElementsAre("a", "b", "d"));
}

TEST_F(ConfigRequests, KeepsAPushTargetAsItWasSet) {
  Set(Target("cloud", 3));
  cPushTarget renamed = Target("fog", 3);
  renamed.enabled = false;
  EXPECT_EQ(Set(renamed).Record().GetUInt64Par("idx"), 3u);
  auto targets = GetTargets("fog");
  ASSERT_EQ(targets.size(), 1u);
  EXPECT_EQ(Parameters(targets[0].ToRecord()), Parameters(renamed.ToRecord()));
  const cMsg answer = Ask([](cDbCtrlIO& io, vorn::cUuid& tid) { return io.GetPushTarget(tid, "cloud"); });
  EXPECT_EQ(Reason(answer), "push target 'cloud' is not there");
}

TEST_F(ConfigRequests, NamesOfPushTargetsAreUnique) {
  Set(Target("cloud"));
  for (const unsigned long long idx : {0u, 2u}) {
    const cMsg answer = Set(Target("cloud", idx));
    EXPECT_EQ(answer.GetType(), db_ctrl::eSetPushTarget + 2);
    EXPECT_EQ(Reason(answer), "push target 'cloud': number 1 has this name");
  }
}

// The client sends the request of an invalid push target without its record.
TEST_F(ConfigRequests, RefusesAPushTargetThatItsClientLeftOut) {
  const cMsg answer = Set(cPushTarget());
  EXPECT_EQ(answer.GetType(), db_ctrl::eSetPushTarget + 2);
  EXPECT_EQ(Reason(answer), "parameter \"pushtarget-record\" is missing: the push target is not valid");
}

TEST_F(ConfigRequests, ACollectorsPushTargetIsThere) {
  Set(Interface());
  Set(Target("cloud"));
  const struct {
    unsigned long long idx;
    const char* name;
    const char* fault;
  } cases[] = {
      {2, "", "push target 2 is not there"},
      {0, "fog", "push target 'fog' is not there"},
      {1, "fog", "push target 1 is 'cloud', not 'fog'"},
      {0xFFFFFFFFFFFFFFFF, "", "push target 18446744073709551615 is not there"},
  };
  for (const auto& [idx, name, fault] : cases) {
    cCollectorConfig collector = Collector();
    collector.pushTargetIdx = idx;
    collector.pushTargetName = name;
    EXPECT_EQ(Reason(Set(With(Meter(), collector))), "meter 'M1': collector '1': " + std::string(fault));
    EXPECT_TRUE(GetMeters().empty());
  }
  cCollectorConfig collector = Collector();
  collector.pushTargetIdx = 1;
  EXPECT_EQ(Set(With(Meter(), collector)).GetType(), db_ctrl::eSetMeter + 1);
  EXPECT_EQ(GetMeters()[0].collectors.front().pushTargetName, "cloud");
}

TEST_F(ConfigRequests, DeletesAPushTargetOnlyWhenNoCollectorNeedsIt) {
  SetUsual();
  EXPECT_EQ(Reason(DeleteTarget(1, "")), "push target 'cloud' is needed by meter 'M1' collector '1'");
  EXPECT_EQ(Reason(DeleteTarget(1, "fog")), "push target 1 is 'cloud', not 'fog'");
  EXPECT_EQ(Reason(DeleteTarget(0, "")), "push target: neither number nor name is given");
  EXPECT_EQ(Reason(DeleteTarget(9, "")), "push target 9 is not there");
  DeleteMeter("M1");
  EXPECT_EQ(DeleteTarget(0, "cloud").GetType(), db_ctrl::eDeletePushTarget + 1);
  EXPECT_TRUE(GetTargets().empty());
}

// ---- templates

TEST_F(ConfigRequests, KeepsATemplateUnderItsName) {
  EXPECT_EQ(Set(Template("a")).Record().GetUInt64Par("idx"), 1u);
  EXPECT_EQ(Set(Template("b")).Record().GetUInt64Par("idx"), 2u);
  cMeterTemplate changed = Template("a");
  changed.enable = false;
  EXPECT_EQ(Set(changed).Record().GetUInt64Par("idx"), 1u);
  EXPECT_EQ(Set(Template("c")).Record().GetUInt64Par("idx"), 3u);
  const cMsg all = Ask([](cDbCtrlIO& io, vorn::cUuid& tid) { return io.GetMeterTemplate(tid, ""); });
  EXPECT_THAT(Texts(all, "idx"), ElementsAre("1", "2", "3"));
  const auto found = GetTemplates("a");
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0].ToString(), changed.ToString());
  EXPECT_EQ(found[0].meterConfig.key, kSecretKey);
  EXPECT_EQ(found[0].pushConfig.password, kSecretPassword);
}

// A preset leaves open what only a real meter has.
TEST_F(ConfigRequests, ATemplateMayBeIncomplete) {
  cMeterTemplate preset;
  preset.name = "open";
  EXPECT_EQ(Set(preset).GetType(), db_ctrl::eMeterTemplateSet);
  EXPECT_EQ(GetTemplates("open")[0].ToString(), preset.ToString());
}

TEST_F(ConfigRequests, RefusesATemplateWithoutAName) {
  EXPECT_EQ(Reason(Set(cMeterTemplate())), "template: parameter \"name\" is empty");
}

TEST_F(ConfigRequests, DeletesATemplateByNumberOrName) {
  Set(Template("a"));
  Set(Template("b"));
  EXPECT_EQ(Reason(DeleteTemplate(3, "")), "template 3 is not there");
  EXPECT_EQ(Reason(DeleteTemplate(1, "b")), "template 1 is 'a', not 'b'");
  EXPECT_EQ(DeleteTemplate(1, "").GetType(), db_ctrl::eDeleteMeterTemplate + 1);
  EXPECT_EQ(DeleteTemplate(0, "b").GetType(), db_ctrl::eDeleteMeterTemplate + 1);
  EXPECT_EQ(Reason(DeleteTemplate(0, "b")), "template 'b' is not there");
  EXPECT_TRUE(GetTemplates().empty());
}

// ---- limits

TEST_F(ConfigRequests, KeepsABoundedNumberOfInterfaces) {
  for (unsigned int i = 0; i < kMaxInterfaces; ++i)
    ASSERT_EQ(Set(Interface("I" + std::to_string(i))).GetType(), db_ctrl::eSetInterface + 1);
  EXPECT_EQ(Reason(Set(Interface("one more"))), "at most 64 interfaces are kept");
  EXPECT_EQ(Set(Interface("I0", "other")).GetType(), db_ctrl::eSetInterface + 1);
  EXPECT_EQ(GetInterfaces().size(), kMaxInterfaces);
}

TEST_F(ConfigRequests, KeepsABoundedNumberOfMeters) {
  Set(Interface());
  cRecord request;
  for (unsigned int i = 0; i < kMaxMeters; ++i)
    request.AppendRecordPar("meterconfig-record", Meter("M" + std::to_string(i)).ToRecord());
  request.AppendBoolPar("replace", false);
  ASSERT_EQ(AskRaw(db_ctrl::eApplyConfig, request).GetType(), db_ctrl::eApplyConfig + 1);
  EXPECT_EQ(Reason(Set(Meter("one more"))), "at most 1024 meters are kept");
  EXPECT_EQ(Set(Meter("M0")).GetType(), db_ctrl::eSetMeter + 1);
  EXPECT_EQ(GetMeters().size(), kMaxMeters);
}

TEST_F(ConfigRequests, KeepsABoundedNumberOfCollectorsOfAMeter) {
  Set(Interface());
  cMeterConfig meter = Meter();
  for (unsigned int i = 0; i < kMaxCollectors; ++i) meter.AddCollector(Collector(std::to_string(i)));
  ASSERT_EQ(Set(meter).GetType(), db_ctrl::eSetMeter + 1);
  EXPECT_EQ(Reason(Set(With(Meter(), Collector("one more")))), "at most 32 collectors of one meter are kept");
  EXPECT_EQ(Set(With(Meter("M2"), Collector("one more"))).GetType(), db_ctrl::eSetMeter + 1);
  EXPECT_EQ(GetMeters("M1")[0].collectors.size(), kMaxCollectors);
}

TEST_F(ConfigRequests, KeepsABoundedNumberOfPushTargetsAndTemplates) {
  for (unsigned int i = 0; i < kMaxPushTargets; ++i)
    ASSERT_EQ(Set(Target("T" + std::to_string(i))).GetType(), db_ctrl::ePushTargetSet);
  EXPECT_EQ(Reason(Set(Target("one more"))), "at most 64 push targets are kept");
  for (unsigned int i = 0; i < kMaxTemplates; ++i)
    ASSERT_EQ(Set(Template("T" + std::to_string(i))).GetType(), db_ctrl::eMeterTemplateSet);
  EXPECT_EQ(Reason(Set(Template("one more"))), "at most 256 templates are kept");
}

// ---- whole or not at all

TEST_F(ConfigRequests, ARefusedChangeChangesNothing) {
  SetUsual();
  const std::string before = Dump();
  cMeterConfig changed = Meter();
  changed.vendor = "another";
  cCollectorConfig lost = Collector("3");
  lost.pushTargetIdx = 99;
  EXPECT_EQ(Set(With(With(changed, Collector("2")), lost)).GetType(), db_ctrl::eSetMeter + 2);
  EXPECT_EQ(Dump(), before);
  EXPECT_EQ(Set(With(changed, Collector("2"))).GetType(), db_ctrl::eSetMeter + 1);
}

TEST_F(ConfigRequests, ARestartKeepsEverything) {
  SetUsual();
  const std::string before = Dump();
  Restart(Options());
  EXPECT_EQ(Dump(), before);
  EXPECT_EQ(GetMeters("M1")[0].key, kSecretKey);
  EXPECT_EQ(GetTargets("cloud")[0].password, kSecretPassword);
  EXPECT_EQ(Set(Target("next")).Record().GetUInt64Par("idx"), 2u);
}

TEST_F(ConfigRequests, ALockOfAnotherProcessRefusesAChangeAndNoQuestion) {
  SetUsual();
  const std::string before = Dump();
  SQLite::Database other(Options().file, SQLite::OPEN_READWRITE);
  other.exec("BEGIN EXCLUSIVE");
  EXPECT_THAT(Reason(Set(Interface("SIM"))), HasSubstr("another process holds its lock"));
  EXPECT_THAT(Reason(DeleteMeter("M1")), HasSubstr("another process holds its lock"));
  EXPECT_THAT(Ids(GetMeters()), ElementsAre("M1EEMH"));
  other.exec("ROLLBACK");
  EXPECT_EQ(Dump(), before);
  EXPECT_EQ(Set(Interface("SIM")).GetType(), db_ctrl::eSetInterface + 1);
}

TEST_F(ConfigRequests, ADiskThatFailsChangesNothing) {
  cDataOptions options = Options();
  options.durability = eDurability::Full;
  Restart(options);
  SetUsual();
  const std::string before = Dump();
  {
    const cDiskSync::cFailing failing;
    EXPECT_THAT(Reason(Set(Interface("SIM"))), HasSubstr("input/output error"));
    EXPECT_THAT(Reason(DeleteMeter("M1")), HasSubstr("input/output error"));
  }
  EXPECT_EQ(Dump(), before);
  EXPECT_EQ(Set(Interface("SIM")).GetType(), db_ctrl::eSetInterface + 1);
}

TEST_F(ConfigRequests, AFullDatabaseChangesNothing) {
  cDataOptions options = Options();
  options.maxBytes = 60 * 4096;
  Restart(options);
  SetUsual();
  std::string before = Dump();
  cMsg answer;
  for (unsigned int i = 0; i < 200; ++i) {
    cMeterTemplate preset = Template("T" + std::to_string(i));
    preset.meterConfig.interfaceOptions = std::string(1000, 'x');
    answer = Set(preset);
    if (answer.GetType() != db_ctrl::eMeterTemplateSet) break;
    before = Dump();
  }
  EXPECT_EQ(answer.GetType(), db_ctrl::eSetMeterTemplate + 2);
  EXPECT_THAT(Reason(answer), HasSubstr("no room left"));
  EXPECT_EQ(Dump(), before);
  EXPECT_EQ(DeleteTemplate(0, "T0").GetType(), db_ctrl::eDeleteMeterTemplate + 1);
}

TEST_F(ConfigRequests, ALineOfTraceSaysWhoHasChangedSomething) {
  const cTraceLevel data("UnitData", 8);
  Set(Interface());
  GetInterfaces();
  DeleteInterface("SIM");
  std::vector<std::string> changes;
  for (const std::string& line : m_trace.GetLines())
    if (line.find("configuration changed") != std::string::npos) changes.push_back(line);
  EXPECT_THAT(changes, ElementsAre(testing::StartsWith("UnitData 8 configuration changed: set-interface by ")));
}

// ---- secrets

TEST_F(ConfigRequests, NoSecretIsInALineOfTraceOrAReason) {
  const cTraceLevel gateway("UnitGateway", 99), data("UnitData", 99), tav("UnitTAV", 99), vorn("UnitVORN", 99);
  std::string reasons;
  const auto ask = [&](const cMsg& answer) { reasons += Reason(answer) + "\n"; };
  ask(Set(Meter()));
  SetUsual();
  cMeterConfig badMeter = Meter();
  badMeter.key = std::string(kMaxText, 'K') + kSecretKey;
  badMeter.medium = std::string(100, 'm');
  ask(Set(badMeter));
  cPushTarget badTarget = Target("cloud", 9);
  ask(Set(badTarget));
  badTarget.password = std::string(kMaxText, 'P') + kSecretPassword;
  ask(Set(badTarget));
  cMeterTemplate badTemplate = Template();
  badTemplate.meterConfig.key = badMeter.key;
  badTemplate.pushConfig.password = badTarget.password;
  ask(Set(badTemplate));
  cRecord typed = Meter().ToRecord();
  typed.SetUIntPar("key", 12345678);
  cRecord request;
  request.AppendRecordPar("meterconfig-record", typed);
  ask(AskRaw(db_ctrl::eSetMeter, request));
  GetMeters();
  GetTargets();
  EXPECT_THAT(reasons, HasSubstr("parameter \"key\" has 287 bytes, at most 255 are kept"));
  EXPECT_THAT(reasons, HasSubstr("parameter \"key\": expected type text, found uint"));
  std::string all = reasons;
  for (const std::string& line : m_trace.GetLines()) all += line + "\n";
  for (const char* secret : {kSecretKey, kSecretPassword, "12345678", "KKKK", "PPPP"})
    EXPECT_THAT(all, Not(HasSubstr(secret)));
}

}  // namespace
}  // namespace tav::data
