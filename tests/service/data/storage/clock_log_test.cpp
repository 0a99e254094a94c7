// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/storage/clock_log.h>

#include <gateway/database/schema.h>
#include <tests/service/data/store_fixture.h>
#include <tests/support/captured_trace.h>
#include <tests/support/trace_level.h>

namespace tav::data {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;

// A gateway whose clock is set by hand, and a meter that is timed by it.
class ClockLog : public StoreFixture {
 protected:
  void SetUp() override {
    Open();
    m_store->SetClock([this] { return m_now; });
  }

  void Pass(std::int64_t seconds) {
    m_now.utc += seconds;
    m_now.osc += seconds;
  }
  void SetClock(std::int64_t utc) { m_now.utc = utc; }
  void Boot(const std::string& name, std::int64_t utc) { m_now = {utc, 30, name}; }

  static cMeterRecord At(const cMoment& now, const std::string& value,
                         cMeterTav::eTimeSource source = cMeterTav::eTsRtc) {
    const auto time = static_cast<unsigned int>(now.utc);
    cMeterRecord reading("ehzif", "EMH", "E", "M", "ttyUSB0", "ok", time, source, static_cast<unsigned int>(now.osc));
    reading.AddMeasurementEntry({"1-0:1.8.0", value, "Wh", time, source});
    return reading;
  }
  void Read(const std::string& value) { Take(At(m_now, value)); }
  void Take(const cMeterRecord& reading) {
    const cFault fault = TryStore({reading.ToRecord()});
    ASSERT_FALSE(fault) << fault.text;
  }
  // Of one column, in the order that is asked for.
  std::vector<std::string> Column(const std::string& sql) {
    SQLite::Database database(m_folder.File("tav.db"), SQLite::OPEN_READONLY);
    SQLite::Statement statement(database, sql);
    std::vector<std::string> all;
    while (statement.executeStep()) all.push_back(statement.getColumn(0).getString());
    return all;
  }
  std::string Last() { return Column("SELECT value FROM last_values").front(); }
  std::vector<std::string> InTrueOrder() {
    return Column(
        "SELECT v.value FROM readings r JOIN reading_values v ON v.meter=r.meter AND v.time=r.time AND "
        "v.reading_seq=r.seq ORDER BY r.true_time");
  }

  cMoment m_now{kNoon, 100, "boot-a"};
};

TEST_F(ClockLog, ReadsTheMachinesClocks) {
  const cMoment now = cMoment::Now();
  EXPECT_GT(now.utc, kNoon);
  EXPECT_GT(now.osc, 0);
  EXPECT_FALSE(now.boot.empty());
}

TEST_F(ClockLog, AClockThatRunsIsNotedOnce) {
  for (int i = 0; i < 10; ++i) {
    Read(std::to_string(i));
    Pass(60);
  }
  EXPECT_EQ(Column("SELECT count(*) FROM clock").front(), "1");
}

TEST_F(ClockLog, TheTwoClocksMayTickApart) {
  Read("1");
  m_now.utc += 2;
  Read("2");
  m_now.osc += 4;
  Read("3");
  EXPECT_EQ(Column("SELECT count(*) FROM clock").front(), "1");
  m_now.utc += 5;
  Read("4");
  EXPECT_EQ(Column("SELECT count(*) FROM clock").front(), "2");
}

TEST_F(ClockLog, TellsThatTheClockWasSet) {
  const cTraceLevel level("UnitData", 8);
  const cCapturedTrace trace;
  Read("1");
  SetClock(kNoon + 3600);
  Read("2");
  EXPECT_THAT(trace.GetLines(), Contains(HasSubstr("the clock was set: it is 2023-11-14T23:13:20Z, it would have been "
                                                   "2023-11-14T22:13:20Z")));
}

// A gateway without a clock of its own starts in 1970, and learns the time after its first readings.
TEST_F(ClockLog, ReadingsOfBeforeTheClockWasSetComeBeforeThoseOfAfter) {
  Boot("boot-a", 0);
  for (const char* value : {"1", "2"}) {
    Read(value);
    Pass(60);
  }
  SetClock(kNoon);
  for (const char* value : {"3", "4"}) {
    Read(value);
    Pass(60);
  }
  EXPECT_EQ(Last(), "4");
  EXPECT_THAT(InTrueOrder(), ElementsAre("1", "2", "3", "4"));
  EXPECT_THAT(Column("SELECT true_time FROM readings ORDER BY osc"),
              ElementsAre(std::to_string(kNoon - 120), std::to_string(kNoon - 60), std::to_string(kNoon),
                          std::to_string(kNoon + 60)));
}

// One that was far ahead is set back: what it read then must not stay the last for years.
TEST_F(ClockLog, TheLastValueIsTheLastReadThoughItsTimeIsEarlier) {
  SetClock(kNoon + 400'000'000);
  Read("wrong");
  Pass(60);
  SetClock(kNoon);
  Read("right");
  EXPECT_EQ(Last(), "right");
  EXPECT_THAT(InTrueOrder(), ElementsAre("wrong", "right"));
  const cFault fault = m_store->Read([](cTables& tables) {
    const auto newest = tables.storedReadings.Newest("M");
    ASSERT_TRUE(newest);
    EXPECT_EQ(newest->GetMeasurementEntries().front().GetValue(), "right");
  });
  EXPECT_FALSE(fault) << fault.text;
}

TEST_F(ClockLog, ManyReadingsOfOneCommitAreOrderedToo) {
  const cMoment before{kNoon + 400'000'000, 90, "boot-a"};
  const cFault fault =
      TryStore({At(before, "wrong").ToRecord(), At(m_now, "right").ToRecord(), At(before, "late").ToRecord()});
  EXPECT_FALSE(fault) << fault.text;
  EXPECT_EQ(Last(), "right");
}

TEST_F(ClockLog, ALaterBootComesLaterWhateverItsClockSays) {
  SetClock(kNoon + 400'000'000);
  Read("wrong");
  Boot("boot-b", kNoon);
  Read("right");
  EXPECT_EQ(Last(), "right");
  EXPECT_EQ(Column("SELECT count(DISTINCT boot) FROM readings").front(), "2");
}

TEST_F(ClockLog, AnEarlierStartOfTheServiceIsOfTheSameBoot) {
  Read("1");
  Pass(60);
  Open();
  m_store->SetClock([this] { return m_now; });
  Read("2");
  EXPECT_EQ(Column("SELECT count(*) FROM boot").front(), "1");
  EXPECT_EQ(Column("SELECT count(*) FROM clock").front(), "1");
}

// A reading that says what another one of the same second has said is another one all the same.
TEST_F(ClockLog, NothingIsTakenForADuplicateBecauseTheClockWasSetBack) {
  Read("7");
  Pass(3600);
  SetClock(kNoon);
  Read("7");
  EXPECT_THAT(m_outcomes, testing::Each(cReadingStore::eOutcome::Stored));
  EXPECT_EQ(Column("SELECT count(*) FROM readings").front(), "2");
}

TEST_F(ClockLog, AReadingThatComesAgainIsADuplicate) {
  Read("7");
  m_now.osc += 1;  // the same second by one clock, the next by the other
  Read("7");
  EXPECT_EQ(m_outcomes.back(), cReadingStore::eOutcome::NothingNew);
}

TEST_F(ClockLog, ReadingsByAMetersClockAreOrderedByIt) {
  for (const auto source : {cMeterTav::eTsMeter, cMeterTav::eTsMeterUtc}) {
    SetClock(kNoon + 1000);
    Take(At(m_now, "new", source));
    Pass(60);
    SetClock(kNoon);
    Take(At(m_now, "old", source));
    EXPECT_EQ(Last(), "new");
  }
  EXPECT_THAT(Column("SELECT DISTINCT boot FROM readings"), ElementsAre("0"));
  EXPECT_EQ(Column("SELECT count(*) FROM readings WHERE true_time<>time").front(), "0");
}

TEST_F(ClockLog, AnOscThatCannotBeOfThisBootOrdersNothing) {
  cMoment other = m_now;
  other.osc = m_now.osc + cClockLog::kTolerance + 1;
  Take(At(other, "1"));
  EXPECT_THAT(Column("SELECT boot FROM readings"), ElementsAre("0"));
  other.osc = m_now.osc + cClockLog::kTolerance;
  Take(At(other, "2"));
  EXPECT_THAT(Column("SELECT boot FROM readings ORDER BY osc"), ElementsAre("1", "0"));
}

// ---- files of before

TEST(ClockLogSchema, ReadingsOfAnEarlierVersionStayAsTheyAre) {
  const cTempFolder folder;
  {
    SQLite::Database database(folder.File("tav.db"), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
    Migrate(database, 4);
    database.exec("INSERT INTO meter VALUES(1,'M'); INSERT INTO obis VALUES(1,'1-0:1.8.0');");
    database.exec("INSERT INTO form VALUES(1,'Wh',6); INSERT INTO origin VALUES(1,'d','a','m','E','i','p','o');");
    database.exec("INSERT INTO state VALUES(3,'ok',6,0,0); INSERT INTO reading VALUES(1,100,0,1,3,50,0);");
    database.exec("INSERT INTO value VALUES(1,100,1,16,1,NULL); INSERT INTO series VALUES(1,1,1,100,16,1);");
    Migrate(database);
    EXPECT_EQ(GetSchemaVersion(database), kSchemaVersion);
    EXPECT_EQ(database.execAndGet("SELECT status||boot||true_time FROM readings").getString(), "ok0100");
    EXPECT_EQ(database.execAndGet("SELECT value FROM last_values").getString(), "1");
    EXPECT_EQ(database.execAndGet("SELECT ord FROM series").getInt(), 0);
  }
}

}  // namespace
}  // namespace tav::data
