// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/config/config_apply.h>

#include <tests/service/data/config/config_world.h>

namespace tav::data {
namespace {

using testing::ElementsAre;
using vorn::cMsg;
using vorn::cRecord;

// A message, built thing by thing.
struct cConfiguration {
  cRecord record;

  cConfiguration& Add(const cInterfaceRecord& interface) { return Append("interface-record", interface.ToRecord()); }
  cConfiguration& Add(const cMeterConfig& meter) { return Append("meterconfig-record", meter.ToRecord()); }
  cConfiguration& Add(cPushTarget target) { return Append("pushtarget-record", target.ToRecord()); }
  cConfiguration& Add(const cMeterTemplate& preset) { return Append("metertemplate-record", preset.ToRecord()); }
  cConfiguration& Append(const char* name, const cRecord& nested) {
    record.AppendRecordPar(name, nested);
    return *this;
  }
};

class ConfigApply : public ConfigWorld {
 protected:
  cMsg Apply(cConfiguration configuration, bool replace) {
    configuration.record.AppendBoolPar("replace", replace);
    return AskRaw(db_ctrl::eApplyConfig, configuration.record);
  }
  void ExpectApplied(const cConfiguration& configuration, bool replace) {
    const cMsg answer = Apply(configuration, replace);
    EXPECT_EQ(answer.GetType(), db_ctrl::eApplyConfig + 1) << Reason(answer);
  }
  void ExpectRefused(const cConfiguration& configuration, bool replace, const std::string& reason) {
    const std::string before = Dump();
    const cMsg answer = Apply(configuration, replace);
    EXPECT_EQ(answer.GetType(), db_ctrl::eApplyConfig + 2);
    EXPECT_EQ(Reason(answer), reason);
    EXPECT_EQ(Dump(), before);
  }
  static cCollectorConfig Pushing(const std::string& addr, const std::string& target) {
    cCollectorConfig collector = Collector(addr);
    collector.SetPushTargetName(target);
    return collector;
  }
  // What needs others stands before them.
  static cConfiguration Usual() {
    return cConfiguration()
        .Add(Template("t"))
        .Add(With(Meter("M1"), Pushing("1", "cloud")))
        .Add(Meter("M2", "SIM"))
        .Add(Interface("RS232"))
        .Add(Interface("SIM"))
        .Add(Target("cloud"));
  }
};

TEST_F(ConfigApply, TakesAWholeConfigurationInAnyOrder) {
  ExpectApplied(Usual(), false);
  EXPECT_EQ(GetInterfaces().size(), 2u);
  EXPECT_EQ(GetMeters().size(), 2u);
  EXPECT_EQ(GetTargets().size(), 1u);
  EXPECT_EQ(GetTemplates().size(), 1u);
  EXPECT_EQ(GetMeters("M1")[0].collectors.front().pushTargetIdx, 1u);
}

TEST_F(ConfigApply, TheSameAgainChangesNothing) {
  for (const bool replace : {false, true}) {
    ExpectApplied(Usual(), replace);
    const std::string before = Dump();
    ExpectApplied(Usual(), replace);
    EXPECT_EQ(Dump(), before);
  }
}

TEST_F(ConfigApply, KeepsWhatTheMessageDoesNotHold) {
  ExpectApplied(Usual(), false);
  ExpectApplied(cConfiguration().Add(Interface("MBUS")).Add(With(Meter("M1"), Collector("2"))), false);
  EXPECT_EQ(GetInterfaces().size(), 3u);
  EXPECT_EQ(GetMeters("M1")[0].collectors.size(), 2u);
}

TEST_F(ConfigApply, ReplaceDeletesWhatTheMessageDoesNotHold) {
  ExpectApplied(Usual(), false);
  ExpectApplied(cConfiguration()
                    .Add(Interface("RS232"))
                    .Add(With(Meter("M1"), Pushing("2", "fog")))
                    .Add(Target("fog"))
                    .Add(Template("u")),
                true);
  ASSERT_EQ(GetInterfaces().size(), 1u);
  const auto meters = GetMeters();
  ASSERT_EQ(meters.size(), 1u);
  ASSERT_EQ(meters[0].collectors.size(), 1u);
  EXPECT_EQ(meters[0].collectors.front().addr, "2");
  EXPECT_EQ(meters[0].collectors.front().pushTargetName, "fog");
  ASSERT_EQ(GetTargets().size(), 1u);
  EXPECT_EQ(GetTargets()[0].name, "fog");
  ASSERT_EQ(GetTemplates().size(), 1u);
  EXPECT_EQ(GetTemplates()[0].name, "u");
}

TEST_F(ConfigApply, ReplaceByNothingDeletesEverything) {
  ExpectApplied(Usual(), false);
  ExpectApplied({}, true);
  EXPECT_EQ(Dump(), "");
}

// Limits count what is left at the end, not what was there on the way.
TEST_F(ConfigApply, ReplacesAsMuchAsFits) {
  cConfiguration first, second, tooMuch;
  for (unsigned int i = 0; i < 64; ++i) {
    first.Add(Interface("A" + std::to_string(i)));
    second.Add(Interface("B" + std::to_string(i)));
  }
  ExpectApplied(first, true);
  ExpectApplied(second, true);
  EXPECT_EQ(GetInterfaces().size(), 64u);
  ExpectRefused(first, false, "at most 64 interfaces are kept");
}

TEST_F(ConfigApply, ReplaceMayGiveANumberAnotherName) {
  ExpectApplied(cConfiguration().Add(Target("a", 1)), true);
  ExpectApplied(cConfiguration().Add(Target("a", 2)), true);
  EXPECT_EQ(GetTargets()[0].idx, 2u);
}

TEST_F(ConfigApply, NamesEveryFaultWithItsPlace) {
  ExpectApplied(Usual(), false);
  cCollectorConfig collector = Collector("1");
  collector.eventType = "weekly";
  cPushTarget target = Target("cloud");
  target.collect = 51;
  const cRecord good = Interface("NEW").ToRecord();
  ExpectRefused(cConfiguration()
                    .Append("interface-record", good)
                    .Append("interface-record", {})
                    .Add(Meter("M1"))
                    .Add(With(Meter("M3"), collector))
                    .Add(target)
                    .Add(cMeterTemplate()),
                false,
                "interface-record 2: interface: parameter \"version\" is missing; "
                "meterconfig-record 2: meter 'M3': collector '1': event-type 'weekly' is none of "
                "15min, hour, day, month, or a count of seconds; "
                "pushtarget-record 1: push target 'cloud': collection not in range from 1 to 50; "
                "metertemplate-record 1: template: parameter \"name\" is empty");
}

TEST_F(ConfigApply, RefusesWhatIsThereTwice) {
  ExpectRefused(cConfiguration().Add(Interface("A")).Add(Interface("B")).Add(Interface("A")), false,
                "interface-record 3: interface 'A' is there twice");
  ExpectRefused(cConfiguration().Add(Interface("RS232")).Add(Meter("M")).Add(Meter("M")), false,
                "meterconfig-record 2: meter 'M' medium 'E' manufactor 'EMH' is there twice");
  ExpectRefused(cConfiguration().Add(Target("a", 1)).Add(Target("a", 2)), false,
                "pushtarget-record 2: push target 'a' is there twice");
  ExpectRefused(cConfiguration().Add(Target("a", 1)).Add(Target("b", 1)), false,
                "pushtarget-record 2: push target 'b': number 1 is there twice");
  ExpectRefused(cConfiguration().Add(Template("t")).Add(Template("t")), false,
                "metertemplate-record 2: template 't' is there twice");
}

TEST_F(ConfigApply, RefusesWhatNeedsSomethingThatIsNotThere) {
  ExpectRefused(cConfiguration().Add(Meter("M1")).Add(Meter("M2", "SIM")), false,
                "meterconfig-record 1: meter 'M1': interface 'RS232' is not there; "
                "meterconfig-record 2: meter 'M2': interface 'SIM' is not there");
  ExpectRefused(cConfiguration().Add(Interface()).Add(With(Meter("M1"), Pushing("1", "fog"))), false,
                "meterconfig-record 1: meter 'M1': collector '1': push target 'fog' is not there");
}

TEST_F(ConfigApply, ReplaceRefusesWhatNeedsSomethingThatIsToBeDeleted) {
  ExpectApplied(Usual(), false);
  ExpectRefused(cConfiguration().Add(Meter("M1")), true,
                "to be deleted: interface 'RS232' is needed by meter 'M1' medium 'E' manufactor 'EMH'");
  ExpectRefused(cConfiguration().Add(Interface()).Add(With(Meter("M1"), Pushing("1", "cloud"))), true,
                "meterconfig-record 1: meter 'M1': collector '1': push target 'cloud' is not there");
}

TEST_F(ConfigApply, GivesTemplatesTheNumbersThatStandBesideThem) {
  const auto numbered = [](std::initializer_list<std::uint64_t> numbers) {
    cConfiguration configuration = cConfiguration().Add(Template("a")).Add(Template("b"));
    for (const std::uint64_t number : numbers) configuration.record.AppendUInt64Par("idx", number);
    return configuration;
  };
  const auto numbers = [this] {
    std::map<std::string, std::uint64_t> found;
    const cMsg answer = AskRaw(db_ctrl::eGetMeterTemplate, {});
    vorn::cRecordPar idx = answer.Record().GetPar("idx");
    cRecord form;
    for (vorn::cRecordPar at = answer.Record().GetPar("metertemplate-record"); at.GetRecord(form); at = at.NextSame()) {
      found[form.GetTextPar("name")] = idx.GetUInt64();
      idx = idx.NextSame();
    }
    return found;
  };
  ExpectApplied(numbered({42, 7}), true);
  EXPECT_THAT(numbers(), ElementsAre(std::pair("a", 42u), std::pair("b", 7u)));
  ExpectApplied(numbered({5, 0}), true);
  EXPECT_THAT(numbers(), ElementsAre(std::pair("a", 5u), std::pair("b", 7u))) << "0 leaves it as it is";
  ExpectApplied(numbered({}), true);
  EXPECT_THAT(numbers(), ElementsAre(std::pair("a", 5u), std::pair("b", 7u)));
  ExpectRefused(numbered({1}), true, "idx: 1 numbers for 2 templates");
  ExpectRefused(numbered({3, 3}), true, "metertemplate-record 2: template 'b': number 3 is there twice");
  ExpectRefused(numbered({std::uint64_t{1} << 63, 2}), true,
                "metertemplate-record 1: template 'a': number 9223372036854775808 is over 9223372036854775807");
  ExpectRefused(numbered({7, 0}), true, "metertemplate-record 1: template 'a': number 7 is that of template 'b'");
}

TEST_F(ConfigApply, ShouldRemovedHoldsHereToo) {
  ExpectApplied(Usual(), false);
  cCollectorConfig gone = Collector("1");
  gone.shouldRemoved = true;
  ExpectApplied(cConfiguration().Add(With(Meter("M1"), gone)), false);
  EXPECT_TRUE(GetMeters("M1")[0].collectors.empty());
}

TEST_F(ConfigApply, RefusesARequestWithoutReplace) {
  EXPECT_EQ(Reason(AskRaw(db_ctrl::eApplyConfig, {})), "parameter \"replace\" is missing, expected type bool");
}

}  // namespace
}  // namespace tav::data
