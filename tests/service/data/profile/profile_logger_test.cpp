// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/profile/profile_logger.h>

#include <gateway/service/data/profile/profile_choice.h>
#include <tests/service/data/query/query_fixture.h>

namespace tav::data {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class ProfileLogger : public QueryFixture {
 protected:
  void Value(unsigned int time, const std::string& value, const std::string& obis = "1-0:1.8.0") {
    Store(Reading("M", time, {{obis, value}}));
  }
  // The rows of a profile as "event value valueTime", times behind midnight.
  std::vector<std::string> Profile(const std::string& name, const std::vector<std::string>& obis = {}) {
    cDbCtrlRequest request = RequestFor("M", obis);
    request.m_profile = name;
    request.m_maxLen = 0;
    std::vector<std::string> lines;
    for (const vorn::cRecord& row : All(GetStored(request)))
      lines.push_back(std::to_string(static_cast<int>(row.GetUIntPar("timestamp") - kMidnight)) + " " +
                      row.GetTextPar("value") + " " +
                      std::to_string(static_cast<int>(row.GetUIntPar("value-timestamp") - kMidnight)));
    return lines;
  }
  // Ends the service and starts it again so many seconds later.
  void Restart(unsigned int seconds) {
    TearDown();
    m_store.reset();
    m_clock->Advance(std::int64_t{1000} * seconds);
    SetUp();
    PollUntilIdle(*m_host);
  }
};

TEST_F(ProfileLogger, LogsTheLastValueOfThePeriodWhenItsEventComes) {
  Configure("M", {Collector("1", "15min", "1-0:1.8.0")});
  Value(kMidnight + 10, "1");
  Value(kMidnight + 890, "2");
  Pass(kQuarter - 1);
  EXPECT_THAT(Profile("1"), IsEmpty());
  Pass(1);
  EXPECT_THAT(Profile("1"), ElementsAre("900 2 890"));
  Value(kMidnight + 901, "3");
  Pass(kQuarter);
  EXPECT_THAT(Profile("1"), ElementsAre("900 2 890", "1800 3 901"));
}

TEST_F(ProfileLogger, APeriodHasItsEventAndNotTheOneBefore) {
  Configure("M", {Collector("1", "15min", "1-0:1.8.0")});
  Value(kMidnight, "a");
  Value(kMidnight + kQuarter, "b");
  Value(kMidnight + kQuarter + 1, "c");
  Pass(2 * kQuarter);
  EXPECT_THAT(Profile("1"), ElementsAre("0 a 0", "900 b 900", "1800 c 901"));
}

TEST_F(ProfileLogger, AGapStaysVisible) {
  Configure("M", {Collector("1", "15min", "1-0:1.8.0")});
  Value(kMidnight + 10, "1");
  Pass(4 * kQuarter);
  Value(kMidnight + 3 * kQuarter + 10, "2");
  Pass(kQuarter);
  EXPECT_THAT(Profile("1"), ElementsAre("900 1 10", "3600 2 2710"));
}

TEST_F(ProfileLogger, LogsEachIdentifierOfItsListAndNoOther) {
  Configure("M", {Collector("1", "hour", "1-0:1.8.0, 1-0:2.8.0,,0-0:96.1.0")});
  Store(Reading("M", kMidnight + 1, {{"1-0:1.8.0", "a"}, {"1-0:2.8.0", "b"}, {"1-0:16.7.0", "c"}}));
  Store(Reading("M", kMidnight + 2, {{"1-0:1.8.0", "d"}}));
  Store(Reading("N", kMidnight + 3, {{"1-0:1.8.0", "e"}}));
  Pass(kHour);
  EXPECT_THAT(Profile("1"), ElementsAre("3600 d 2", "3600 b 1"));
  EXPECT_THAT(Profile("1", {"1-0:2.8.0"}), ElementsAre("3600 b 1"));
}

TEST_F(ProfileLogger, RowsCarryWhatTheirValueHas) {
  Configure("M", {Collector("1", "15min", "1-0:1.8.0")});
  cMeterRecord reading = Reading("M", kMidnight + 5, {});
  cMeasurementEntry entry("1-0:1.8.0", "12.50", "kWh", kMidnight + 5, cMeterTav::eTsMeterDs);
  entry.SetSignature(vorn::cData("\x07", 1));
  reading.AddMeasurementEntry(entry);
  Store(reading);
  Pass(kQuarter);
  cDbCtrlRequest request = RequestFor("M");
  request.m_profile = "1";
  const auto rows = All(GetStored(request));
  EXPECT_THAT(Lines(rows, {"meterID", "timestamp", "time-source", "obis-id", "value", "unit", "signature"}),
              ElementsAre("M 1699920900 Meter DS 1-0:1.8.0 12.50 kWh 07"));
}

// ---- events

TEST_F(ProfileLogger, DaysAndMonthsEndAtLocalMidnight) {
  const cTimeZone berlin("CET-1CEST,M3.5.0,M10.5.0/3");
  m_wall = 1'711'666'800;  // 2024-03-29 00:00 in Berlin; clocks are moved on the 31st
  Configure("M", {Collector("d", "day", "1-0:1.8.0"), Collector("m", "month", "1-0:1.8.0")});
  for (unsigned int hour = 0; hour < 96; ++hour)
    Value(static_cast<unsigned int>(m_wall) + hour * kHour + 1, std::to_string(hour));
  Pass(4 * kDay);
  // The days begin 0, 24, 48 and 71 hours later: the 31st has 23 of them.
  cDbCtrlRequest request = RequestFor("M");
  request.m_profile = "d";
  EXPECT_THAT(Stored(request, {"value", "timestamp"}),
              ElementsAre("23 1711753200", "47 1711839600", "70 1711922400", "94 1712008800"));
  request.m_profile = "m";
  EXPECT_THAT(Stored(request, {"value", "timestamp"}), ElementsAre("70 1711922400"));
}

TEST_F(ProfileLogger, ACountOfSecondsIsAnEvent) {
  Configure("M", {Collector("1", "60", "1-0:1.8.0")});
  Value(kMidnight + 59, "1");
  Pass(60);
  EXPECT_THAT(Profile("1"), ElementsAre("60 1 59"));
}

TEST_F(ProfileLogger, ADistanceLogsEveryNthEvent) {
  Configure("M", {Collector("1", "15min", "1-0:1.8.0", 0, 4)});
  for (unsigned int i = 0; i < 8; ++i) Value(kMidnight + i * kQuarter + 1, std::to_string(i));
  Pass(2 * kHour);
  EXPECT_THAT(Profile("1"), ElementsAre("3600 3 2701", "7200 7 6301"));
}

TEST_F(ProfileLogger, AnUnknownEventLogsNothingAndIsTraced) {
  Configure("M", {Collector("1", "15min", "1-0:1.8.0"), Collector("2", "often", "1-0:1.8.0")});
  Value(kMidnight + 1, "1");
  Pass(kQuarter);
  EXPECT_THAT(Profile("1"), SizeIs(1));
  EXPECT_THAT(Profile("2"), IsEmpty());
  EXPECT_THAT(m_trace.GetLines(),
              Contains(HasSubstr("meter 'M': collector '2': event-type 'often' is none of 15min, hour, day, month")));
}

// ---- late values, restart, changes

TEST_F(ProfileLogger, ValuesThatComeLateFillTheirPeriods) {
  Configure("M", {Collector("1", "15min", "1-0:1.8.0")});
  Value(kMidnight + 1, "1");
  Pass(kHour);
  Value(kMidnight + 3601, "5");  // the present, then a backlog
  Value(kMidnight + 2700, "4");
  Value(kMidnight + 1799, "3");
  Value(kMidnight + 2, "2");
  EXPECT_THAT(Profile("1"), ElementsAre("900 2 2", "1800 3 1799", "2700 4 2700"));
  Value(kMidnight + 1798, "older than what is logged");
  EXPECT_THAT(Profile("1"), ElementsAre("900 2 2", "1800 3 1799", "2700 4 2700"));
  Pass(kQuarter);
  EXPECT_THAT(Profile("1"), ElementsAre("900 2 2", "1800 3 1799", "2700 4 2700", "4500 5 3601"));
}

TEST_F(ProfileLogger, ABacklogOfAMeterThatWasNeverSeenFillsItsPeriods) {
  Configure("M", {Collector("1", "15min", "1-0:1.8.0")});
  Pass(kHour);
  std::list<cMeterRecord> backlog;
  for (unsigned int i = 0; i < 4; ++i)
    backlog.push_back(Reading("M", kMidnight + i * kQuarter + 5, {{"1-0:1.8.0", std::to_string(i)}}));
  m_client->StoreMeterRec(backlog);
  EXPECT_THAT(Profile("1"), ElementsAre("900 0 5", "1800 1 905", "2700 2 1805", "3600 3 2705"));
}

TEST_F(ProfileLogger, CatchesUpWithWhatWasMissedWhileItWasDown) {
  Configure("M", {Collector("1", "15min", "1-0:1.8.0")});
  for (unsigned int i = 0; i < 4; ++i) Value(kMidnight + i * kQuarter + 5, std::to_string(i));
  Pass(kQuarter);
  EXPECT_THAT(Profile("1"), ElementsAre("900 0 5"));
  Restart(3 * kQuarter);
  EXPECT_THAT(Profile("1"), ElementsAre("900 0 5", "1800 1 905", "2700 2 1805", "3600 3 2705"));
}

TEST_F(ProfileLogger, AFreshCollectorIsFilledFromWhatIsStored) {
  constexpr unsigned int kPeriods = 3 * cProfileStore::kMaxAtOnce + 1;
  const cFault fault = m_store->Write([&](cTables& tables) {
    for (unsigned int i = 0; i < kPeriods; ++i) {
      cReadingView view;
      const vorn::cRecord form = Reading("M", kMidnight + i * 60 + 5, {{"1-0:1.8.0", std::to_string(i)}}).ToRecord();
      ASSERT_TRUE(view.Read(form));
      tables.readings.Add(view);
    }
  });
  ASSERT_FALSE(fault) << fault.text;
  m_wall = kMidnight + kPeriods * 60;
  Configure("M", {Collector("1", "60", "1-0:1.8.0")});
  const auto rows = Profile("1");
  ASSERT_EQ(rows.size(), kPeriods);
  EXPECT_EQ(rows.front(), "60 0 5");
  EXPECT_EQ(rows.back(), std::to_string(kPeriods * 60) + " 1500 90005");
}

TEST_F(ProfileLogger, ATimeWithoutValuesCostsNothing) {
  Configure("M", {Collector("1", "1", "1-0:1.8.0")});
  Value(kMidnight, "1");
  Pass(1);
  m_wall += 20 * 365 * std::int64_t{kDay};
  Pass(60);
  Value(static_cast<unsigned int>(Now()), "2");
  Pass(1);
  EXPECT_THAT(Profile("1"), SizeIs(2));
}

TEST_F(ProfileLogger, KeepsTheNewestRowsOfEachIdentifier) {
  Configure("M", {Collector("1", "15min", "1-0:1.8.0,1-0:2.8.0", 2)});
  Value(kMidnight + 1, "once", "1-0:2.8.0");
  for (unsigned int i = 0; i < 5; ++i) Value(kMidnight + i * kQuarter + 5, std::to_string(i));
  Pass(5 * kQuarter);
  EXPECT_THAT(Profile("1"), ElementsAre("900 once 1", "3600 3 2705", "4500 4 3605"));
  Value(kMidnight + 6, "late");  // of a period that is no longer kept
  EXPECT_THAT(Profile("1"), ElementsAre("900 once 1", "3600 3 2705", "4500 4 3605"));
}

TEST_F(ProfileLogger, AChangedEventBeginsTheProfileAnew) {
  Configure("M", {Collector("1", "15min", "1-0:1.8.0")});
  for (unsigned int i = 0; i < 8; ++i) Value(kMidnight + i * kQuarter + 5, std::to_string(i));
  Pass(2 * kHour);
  EXPECT_THAT(Profile("1"), SizeIs(8));
  Configure("M", {Collector("1", "hour", "1-0:1.8.0")});
  EXPECT_THAT(Profile("1"), ElementsAre("3600 3 2705", "7200 7 6305"));
}

TEST_F(ProfileLogger, AnIdentifierThatIsAddedIsLoggedFromTheBeginning) {
  Configure("M", {Collector("1", "15min", "1-0:1.8.0")});
  Store(Reading("M", kMidnight + 5, {{"1-0:1.8.0", "1"}, {"1-0:2.8.0", "2"}}));
  Pass(kQuarter);
  Configure("M", {Collector("1", "15min", "1-0:1.8.0,1-0:2.8.0")});
  EXPECT_THAT(Profile("1"), ElementsAre("900 1 5", "900 2 5"));
}

TEST_F(ProfileLogger, ACollectorThatIsNotActiveLogsNothingUntilItIs) {
  cCollectorConfig collector = Collector("1", "15min", "1-0:1.8.0");
  collector.SetActivation(false);
  Configure("M", {collector});
  Value(kMidnight + 5, "1");
  Pass(kQuarter);
  EXPECT_THAT(Profile("1"), IsEmpty());
  collector.SetActivation(true);
  Configure("M", {collector});
  EXPECT_THAT(Profile("1"), ElementsAre("900 1 5"));
  collector.SetActivation(false);
  Configure("M", {collector});
  EXPECT_THAT(Profile("1"), SizeIs(1));  // what was logged stays
}

TEST_F(ProfileLogger, ADeletedCollectorTakesItsProfileAlong) {
  Configure("M", {Collector("1", "15min", "1-0:1.8.0")});
  Value(kMidnight + 5, "1");
  Pass(kQuarter);
  Configure("M", {});
  EXPECT_EQ(One("SELECT count(*) FROM profile_value"), "0");
  EXPECT_EQ(One("SELECT count(*) FROM value"), "1");
  cDbCtrlRequest request = RequestFor("M");
  request.m_profile = "1";
  EXPECT_EQ(Reason(GetStored(request)), "unknown profile '1': none of the meters has a collector");
}

TEST_F(ProfileLogger, ACollectorOfAClientLogsAtOnce) {
  vorn::cUuid none;
  m_client->Ask([&](const vorn::cUuid& id) {
    none = id;
    return m_client->SetInterface(none, cInterfaceRecord("MBUS", "", true));
  });
  cMeterConfig meter;
  meter.SetIdentification("M", "1", "E", "EMH");
  meter.SetInterfaceOptions("MBUS", "MBUS", "");
  meter.AddCollector(Collector("1", "15min", "1-0:1.8.0"));
  Value(kMidnight - 5, "1");
  const vorn::cMsg answer = m_client->Ask([&](const vorn::cUuid& id) {
    none = id;
    return m_client->SetMeter(none, meter);
  });
  EXPECT_EQ(answer.GetType(), db_ctrl::eSetMeter + 1) << Reason(answer);
  PollUntilIdle(*m_host);
  EXPECT_THAT(Profile("1"), ElementsAre("0 1 -5"));
}

TEST_F(ProfileLogger, AWallClockThatIsSetIsSeenWithinAMinute) {
  Configure("M", {Collector("1", "hour", "1-0:1.8.0")});
  Value(kMidnight + 5, "1");
  m_wall += kHour;
  Pass(60);
  EXPECT_THAT(Profile("1"), ElementsAre("3600 1 5"));
}

TEST_F(ProfileLogger, TriesAgainWhatALockHasKept) {
  Configure("M", {Collector("1", "15min", "1-0:1.8.0")});
  Value(kMidnight + 5, "1");
  SQLite::Database other(Options().file, SQLite::OPEN_READWRITE);
  other.exec("BEGIN EXCLUSIVE");
  Pass(kQuarter);
  EXPECT_THAT(m_trace.GetLines(), Contains(HasSubstr("the collectors wait")).Times(1));
  other.exec("ROLLBACK");
  Pass(2);
  EXPECT_THAT(Profile("1"), ElementsAre("900 1 5"));
}

TEST_F(ProfileLogger, NothingOfARefusedTransactionIsLogged) {
  Configure("M", {Collector("1", "15min", "1-0:1.8.0")});
  Value(kMidnight + 5, "1");
  Pass(kQuarter);
  const cFault fault = m_store->Write([&](cTables& tables) {
    cReadingView view;
    const vorn::cRecord form = Reading("M", kMidnight + 6, {{"1-0:1.8.0", "2"}}).ToRecord();
    ASSERT_TRUE(view.Read(form));
    tables.readings.Add(view);
    tables.Flush();
    throw std::runtime_error("half-way");
  });
  EXPECT_TRUE(fault);
  EXPECT_THAT(Profile("1"), ElementsAre("900 1 5"));
  Value(kMidnight + 7, "3");
  EXPECT_THAT(Profile("1"), ElementsAre("900 3 7"));
}

// ---- names

TEST_F(ProfileLogger, AProfileIsNamedByAddressElseByItsEvent) {
  Configure("M", {Collector("1", "15min", "1-0:1.8.0"), Collector("hour", "15min", "1-0:1.8.0"),
                  Collector("3", "hour", "1-0:1.8.0"), Collector("4", "day", "1-0:1.8.0")});
  Value(kMidnight + 5, "1");
  Pass(kDay);
  EXPECT_THAT(Profile("1"), ElementsAre("900 1 5"));
  EXPECT_THAT(Profile("hour"), ElementsAre("900 1 5"));
  EXPECT_THAT(Profile("day"), ElementsAre("86400 1 5"));
  const std::string possible =
      "possible are '1' (15min) of meter 'M', '3' (hour) of meter 'M', '4' (day) of meter 'M', "
      "'hour' (15min) of meter 'M'";
  cDbCtrlRequest request = RequestFor("M");
  request.m_profile = "15min";
  EXPECT_EQ(Reason(GetStored(request)), "profile '15min': several collectors of meter 'M' are meant; " + possible);
  request.m_profile = "month";
  EXPECT_EQ(Reason(GetStored(request)), "unknown profile 'month': " + possible);
}

TEST_F(ProfileLogger, AProfileOfSeveralMetersComesMeterByMeter) {
  Configure("M", {Collector("1", "15min", "1-0:1.8.0")});
  Configure("N", {Collector("1", "15min", "1-0:1.8.0")});
  for (const char* meter : {"M", "N", "O"})
    for (unsigned int i = 0; i < 2; ++i) Store(Reading(meter, kMidnight + 5 + i * kQuarter, {{"1-0:1.8.0", "1"}}));
  Pass(kHour);
  cDbCtrlRequest request;
  request.m_profile = "1";
  const auto all = Stored(request, {"meterID", "timestamp"});
  EXPECT_THAT(all, ElementsAre("M 1699920900", "M 1699921800", "N 1699920900", "N 1699921800"));
  for (const unsigned int count : {1u, 2u, 3u}) EXPECT_EQ(Stored(request, {"meterID", "timestamp"}, count), all);
  request.m_fromUTC = request.m_toUTC = kMidnight + kQuarter;
  EXPECT_THAT(Stored(request, {"meterID", "timestamp"}), ElementsAre("M 1699920900", "N 1699920900"));
}

TEST_F(ProfileLogger, AMeterThatWasNotReadYetHasAnEmptyProfile) {
  Configure("M", {Collector("1", "15min", "1-0:1.8.0")});
  EXPECT_THAT(Profile("1"), IsEmpty());
  cDbCtrlRequest request = RequestFor("M");
  request.m_profile = "2";
  EXPECT_EQ(Reason(GetStored(request)), "unknown profile '2': possible are '1' (15min) of meter 'M'");
}

TEST_F(ProfileLogger, OnlyValuesHaveProfiles) {
  cDbCtrlRequest request = RequestFor("M");
  request.m_profile = "1";
  EXPECT_EQ(Reason(GetLast(request)), "profile '1': last values have none");
  EXPECT_EQ(Reason(GetStatus(request)), "profile '1': meter statuses have none");
  request.m_mode = "readings";
  EXPECT_EQ(Reason(GetStored(request)), "profile '1': readings have none");
}

TEST_F(ProfileLogger, ARefusalNamesOnlySomeOfVeryManyProfiles) {
  std::vector<cCollectorConfig> collectors;
  for (unsigned int i = 0; i <= cProfileChoice::kMaxNamed; ++i)
    collectors.push_back(Collector("c" + std::to_string(100 + i), "15min", "1-0:1.8.0"));
  Configure("M", collectors);
  Value(kMidnight + 5, "1");
  cDbCtrlRequest request = RequestFor("M");
  request.m_profile = "x";
  EXPECT_THAT(Reason(GetStored(request)), HasSubstr("'c115' (15min) of meter 'M', ..."));
}

TEST_F(ProfileLogger, PeopleReadProfilesInAView) {
  Configure("M", {Collector("1", "15min", "1-0:1.8.0")});
  Value(kMidnight + 5, "12.50");
  Pass(kQuarter);
  EXPECT_EQ(One("SELECT meter||' '||collector||' '||event_type||' '||utc||' '||obis||' '||value||' '||unit "
                "FROM profile_values"),
            "M 1 15min 2023-11-14 00:15:00 1-0:1.8.0 12.50 Wh");
}

}  // namespace
}  // namespace tav::data
