// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/driver_rules.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <set>

#include <tests/driver/rules_service.h>
#include <tests/support/raw_socket.h>

namespace tav {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

cObisMap MapOf(const std::vector<std::string>& identifiers) {
  cObisMap map;
  unsigned long long id = 0;
  for (const std::string& identifier : identifiers) map.Add(cObisMapEntry(++id, "rule", identifier, ""));
  return map;
}

// The rules of a driver, and the service that keeps them on a loop of its own.
class DriverRules : public testing::Test {
 protected:
  void Follow() {
    m_rules.emplace(&m_service, [this] { ++m_loaded; });
  }
  // With a service that has these rules, the first with the ID 1.
  void FollowService(const std::vector<std::string>& identifiers) {
    m_obis.Serve();
    for (unsigned long long id = 1; const std::string& identifier : identifiers) m_obis.Set(id++, identifier);
    Follow();
    ASSERT_TRUE(Await([this] { return m_loaded == 1; }));
  }
  // Time passes only for what connects again.
  bool Await(const std::function<bool()>& holds) {
    return PollUntil(m_service, [&] {
      m_clock->Advance(10);
      m_obis.Turn();
      return holds();
    });
  }
  void Settle() {
    while (m_obis.Turn() || m_service.Poll(0)) {
    }
  }
  void Die() {
    m_obis.End();
    Settle();
  }
  std::vector<std::string> Identifiers() const {
    std::vector<std::string> identifiers;
    if (const cObisMap* const map = m_rules->Get())
      for (const auto& [id, rule] : map->GetEntries()) identifiers.push_back(rule.GetObisID());
    return identifiers;
  }

  cTempFolder m_folder;
  std::shared_ptr<vorn::cManualClock> m_clock = std::make_shared<vorn::cManualClock>();
  vorn::cScmService m_service{"driver", m_folder.GetPath(), m_clock};
  cRulesService m_obis{m_folder.GetPath()};
  std::optional<cDriverRules> m_rules;
  int m_loaded = 0;
};

TEST_F(DriverRules, AreNoneWhenNoneAreWanted) {
  m_rules.emplace();
  EXPECT_EQ(m_rules->Get(), nullptr);
  EXPECT_TRUE(m_rules->IsSettled());
}

TEST_F(DriverRules, AreThoseOfAFile) {
  m_rules.emplace(MapOf({"1-0:1.8.0", "1-0:2.8.0"}));
  EXPECT_THAT(Identifiers(), ElementsAre("1-0:1.8.0", "1-0:2.8.0"));
  EXPECT_TRUE(m_rules->IsSettled());
}

TEST_F(DriverRules, OfAFileWithoutARuleFilterNothing) {
  m_rules.emplace(cObisMap());
  EXPECT_EQ(m_rules->Get(), nullptr);
}

TEST_F(DriverRules, FilterNothingBeforeTheyHaveCome) {
  m_obis.Serve();
  m_obis.Set(1, "1-0:1.8.0");
  Follow();
  PollUntilIdle(m_service);
  EXPECT_EQ(m_rules->Get(), nullptr);
  EXPECT_FALSE(m_rules->IsSettled()) << "the service is there, and has not told them yet";
  EXPECT_EQ(m_loaded, 0);
  ASSERT_TRUE(Await([this] { return m_loaded == 1; }));
  EXPECT_THAT(Identifiers(), ElementsAre("1-0:1.8.0"));
  EXPECT_TRUE(m_rules->IsSettled());
}

TEST_F(DriverRules, FilterNothingWhereTheGatewayHasNone) {
  FollowService({});
  EXPECT_EQ(m_rules->Get(), nullptr);
  EXPECT_TRUE(m_rules->IsSettled());
  m_obis.Set(1, "1-0:1.8.0");
  Settle();
  EXPECT_THAT(Identifiers(), ElementsAre("1-0:1.8.0"));
  m_obis.Remove(1);
  Settle();
  EXPECT_EQ(m_rules->Get(), nullptr) << "the last one is gone";
}

TEST_F(DriverRules, FollowEachChangeAtOnce) {
  FollowService({"1-0:1.8.0", "1-0:2.8.0"});
  m_obis.Set(2, "1-0:16.7.0");
  m_obis.Set(3, "1-0:32.7.0");
  m_obis.Remove(1);
  Settle();
  EXPECT_THAT(Identifiers(), ElementsAre("1-0:16.7.0", "1-0:32.7.0"));
  EXPECT_EQ(m_loaded, 1) << "they were there already";
}

TEST_F(DriverRules, StayAsTheyWereWhileTheServiceIsAway) {
  FollowService({"1-0:1.8.0"});
  Die();
  EXPECT_THAT(Identifiers(), ElementsAre("1-0:1.8.0"));
  EXPECT_TRUE(m_rules->IsSettled()) << "nobody is there who could tell more";
}

TEST_F(DriverRules, ComeAnewAfterEachConnection) {
  FollowService({"1-0:1.8.0"});
  Die();
  m_obis.Serve();
  m_obis.Set(1, "1-0:2.8.0");
  m_obis.Set(2, "1-0:16.7.0");
  EXPECT_THAT(Identifiers(), ElementsAre("1-0:1.8.0"));
  ASSERT_TRUE(Await([this] { return m_loaded == 2; }));
  EXPECT_THAT(Identifiers(), ElementsAre("1-0:2.8.0", "1-0:16.7.0"));
}

TEST_F(DriverRules, AreNotWaitedForWithoutASocketOfTheService) {
  Follow();
  PollUntilIdle(m_service);
  EXPECT_TRUE(m_rules->IsSettled());
}

TEST_F(DriverRules, AreWaitedForWhereTheServiceHasLeftItsSocket) {
  {
    cRawSocket listener;
    ASSERT_TRUE(listener.Listen(m_service.GetSocketPath("obis")));
  }
  Follow();
  PollUntilIdle(m_service);
  EXPECT_FALSE(m_rules->IsSettled()) << "it may be on its way";
}

// ---- a reading

class FilterReading : public testing::Test {
 protected:
  // "name=number of the value" of what is left.
  std::vector<std::string> Filter(const std::vector<std::string>& names, const std::vector<std::string>& rules,
                                  bool keepNames = false) {
    cMeterRecord reading = ReadingOf(names);
    m_filtered = Filtered(reading, rules, keepNames);
    return Values(m_filtered);
  }
  static cMeterRecord ReadingOf(const std::vector<std::string>& names) {
    cMeterRecord reading("ehzif", "EMH", "E", "4711", "12", "ok", 1'700'000'000, cMeterTav::eTsMeter, 99);
    unsigned int value = 0;
    for (const std::string& name : names)
      reading.AddMeasurementEntry({name, std::to_string(++value), "Wh", 1'700'000'000, cMeterTav::eTsMeter});
    return reading;
  }
  static cMeterRecord Filtered(cMeterRecord& reading, const std::vector<std::string>& rules, bool keepNames) {
    return tav::FilterReading(reading, MapOf(rules), keepNames);
  }
  static std::vector<std::string> Values(const cMeterRecord& reading) {
    std::vector<std::string> values;
    for (const cMeasurementEntry& entry : reading.GetMeasurementEntries())
      values.push_back(entry.GetName() + "=" + entry.GetValue());
    return values;
  }

  cMeterRecord m_filtered;
};

TEST_F(FilterReading, NamesValuesByTheirRulesAndLeavesTheOthersOut) {
  EXPECT_THAT(Filter({"1-1:1.8.0", "1-0:2.8.0*255", "1-0:99.9.9"}, {"1-0:1.8.0", "1-3:2.8.0"}),
              ElementsAre("1-0:1.8.0=1", "1-0:2.8.0=2"));
  EXPECT_EQ(m_filtered.GetMeterID(), "4711");
  EXPECT_EQ(m_filtered.GetTimestamp(), 1'700'000'000u);
}

TEST_F(FilterReading, IsEmptyWhenNoRuleFits) { EXPECT_THAT(Filter({"1-0:99.9.9"}, {"1-0:1.8.0"}), IsEmpty()); }

TEST_F(FilterReading, KeepsTheNamesWhenAskedTo) {
  EXPECT_THAT(Filter({"1-1:1.8.0", "1-0:99.9.9"}, {"1-0:1.8.0"}, true), ElementsAre("1-1:1.8.0=1"));
}

TEST_F(FilterReading, KeepsTheNamesWhereTwoChannelsWouldBeOne) {
  EXPECT_THAT(Filter({"1-1:1.8.0", "1-2:1.8.0", "1-1:2.8.0"}, {"1-0:1.8.0", "1-0:2.8.0"}),
              ElementsAre("1-1:1.8.0=1", "1-2:1.8.0=2", "1-1:2.8.0=3"));
  EXPECT_THAT(Filter({"1-1:1.8.0", "1-0:1.8.0*255"}, {"1-0:1.8.0"}), ElementsAre("1-1:1.8.0=1", "1-0:1.8.0*255=2"))
      << "however the neutral group F is written";
}

TEST_F(FilterReading, TakesChannelsForDifferentThatNoRuleFits) {
  EXPECT_THAT(Filter({"1-1:1.8.0", "1-1:99.9.9", "1-2:99.9.9"}, {"1-0:1.8.0"}), ElementsAre("1-0:1.8.0=1"));
}

TEST_F(FilterReading, TellsPastValuesApartByTheirGroupF) {
  EXPECT_THAT(Filter({"1-1:1.8.0", "1-1:1.8.0*96", "1-1:1.8.0*97"}, {"1-0:1.8.0", "1-0:1.8.0*1"}),
              ElementsAre("1-0:1.8.0=1", "1-0:1.8.0*96=2", "1-0:1.8.0*97=3"));
  EXPECT_THAT(Filter({"1-1:1.8.0*96", "1-2:1.8.0*96"}, {"1-0:1.8.0*1"}),
              ElementsAre("1-1:1.8.0*96=1", "1-2:1.8.0*96=2"));
}

TEST_F(FilterReading, KeepsReservedIdentifiers) {
  EXPECT_THAT(Filter({"0-0:0.0.0", "0-0:0.0.1", "0-0:0.0.253", "0-0:0.0.254", "1-1:1.8.0"}, {"1-0:1.8.0"}),
              ElementsAre("0-0:0.0.0=1", "0-0:0.0.1=2", "0-0:0.0.254=4", "1-0:1.8.0=5"));
}

TEST_F(FilterReading, LosesNothingThatARuleFits) {
  const std::vector<std::string> names = {"1-0:1.8.0",    "1-1:1.8.0",  "1-1:1.8.0*96", "1-1:1.8.0*97",
                                          "1-2:1.8.0*97", "1-0:16.7.0", "0-0:0.0.0",    "1-3:16.7.0",
                                          "1.8.0",        "8-1:1.0.0",  "8-1:1.0.0*255"};
  const std::vector<std::string> rules = {"1-0:1.8.0", "1-0:1.8.0*9", "1-0:16.7.0", "8-0:1.0.0"};
  // Every part of them, so that some collide and others do not.
  for (unsigned int part = 0; part < 1u << names.size(); ++part) {
    std::vector<std::string> chosen;
    for (std::size_t i = 0; i < names.size(); ++i)
      if ((part >> i & 1) != 0) chosen.push_back(names[i]);
    cMeterRecord reading = ReadingOf(chosen), fitting;
    ReadingOf(chosen).ProcessFilter(MapOf(rules), fitting, true);
    const cMeterRecord filtered = Filtered(reading, rules, false);
    ASSERT_EQ(filtered.GetMeasurementEntries().size(), fitting.GetMeasurementEntries().size()) << part;
    std::set<std::string> different;
    for (const cMeasurementEntry& entry : filtered.GetMeasurementEntries()) different.insert(entry.GetName());
    ASSERT_EQ(different.size(), fitting.GetMeasurementEntries().size()) << part << ": names of their own";
  }
}

}  // namespace
}  // namespace tav
