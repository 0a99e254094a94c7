// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/data_server.h>

#include <filesystem>

#include <tav/service/db_ctrl_protocol.h>
#include <tests/service/data/disk_sync.h>
#include <tests/service/data/store_fixture.h>
#include <tests/support/captured_trace.h>
#include <tests/support/test_client.h>

namespace tav::data {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using vorn::cMsg;
using vorn::cRecord;

class DataServer : public StoreFixture {
 protected:
  void SetUp() override {
    Open();
    Serve();
  }

  void Serve() {
    m_clock = std::make_shared<vorn::cManualClock>();
    m_host = std::make_unique<gateway::cServiceHost>("data-test", m_folder.GetPath(), m_clock);
    m_server = std::make_unique<cDataServer>(m_host.get(), m_store.get());
    ASSERT_TRUE(m_server->IsListening()) << m_server->GetError();
    m_client = std::make_unique<cTestClient>(m_host.get(), "data");
    ASSERT_TRUE(m_client->AwaitConnection());
  }
  void TearDown() override {
    m_client.reset();
    m_server.reset();
    m_host.reset();
  }

  static cRecord StoreRequest(const std::vector<cRecord>& records) {
    cRecord request;
    for (const cRecord& record : records) request.AppendRecordPar("meter-record", record);
    return request;
  }
  static cRecord One(unsigned int time, const std::string& value = "1", const std::string& meter = "M") {
    return Reading(meter, time, {{"1-0:1.8.0", value}}).ToRecord();
  }
  static cRecord WithoutValues(const std::string& meter) { return Reading(meter, kNoon, {}).ToRecord(); }
  cMsg StoreAll(const std::vector<cRecord>& records) {
    return m_client->Ask(db_ctrl::eStoreMeterRec, StoreRequest(records));
  }
  cMsg SetValue(const std::string& store, const std::string& key, const std::string& value) {
    cRecord request;
    request.AppendTextPar("store", store);
    request.AppendTextPar("key", key);
    request.AppendTextPar("value", value);
    return m_client->Ask(db_ctrl::eSetStoreValue, request);
  }
  static std::string Reason(const cMsg& msg) { return msg.Record().GetTextPar("reason"); }
  std::string CountValues() { return StoreFixture::One("SELECT count(*) FROM value"); }

  // The pairs of a store as "key=value", of an answer that carries its contents.
  static std::vector<std::string> Contents(const cMsg& msg) {
    std::vector<std::string> pairs;
    cRecord pair;
    for (auto at = msg.Record().GetPar("store-value"); at.GetRecord(pair); at = at.NextSame())
      pairs.push_back(pair.GetTextPar("key") + "=" + pair.GetTextPar("value"));
    return pairs;
  }
  // One parameter of every row.
  static std::vector<std::string> Column(const cMsg& msg, const std::string& name) {
    std::vector<std::string> texts;
    cRecord row;
    for (auto at = msg.Record().GetPar("row"); at.GetRecord(row); at = at.NextSame())
      texts.push_back(row.GetPar(name).GetText());
    return texts;
  }
  // That parameter over all pages of a list.
  std::vector<std::string> AllPages(unsigned int type, cRecord request, const std::string& name) {
    std::vector<std::string> all;
    for (;;) {
      const cMsg page = m_client->Ask(type, request);
      EXPECT_EQ(page.GetType(), type + 1) << Reason(page);
      for (const std::string& text : Column(page, name)) all.push_back(text);
      if (!page.Record().GetPar("next").IsValid()) return all;
      request.SetDataPar("after", page.Record().GetDataPar("next"));
    }
  }

  std::shared_ptr<vorn::cManualClock> m_clock;
  std::unique_ptr<gateway::cServiceHost> m_host;
  std::unique_ptr<cDataServer> m_server;
  std::unique_ptr<cTestClient> m_client;
  cCapturedTrace m_trace;
};

// ---- readings

TEST_F(DataServer, AcknowledgesAReadingThatIsInTheFile) {
  const vorn::cUuid id = m_client->SendRequest(db_ctrl::eStoreMeterRec, StoreRequest({One(kNoon, "12.50")}));
  const cMsg answer = m_client->Next();
  EXPECT_EQ(answer.GetType(), db_ctrl::eMeterRecStored);
  EXPECT_EQ(answer.GetId(), id);
  EXPECT_TRUE(answer.Record().IsEmpty());
  EXPECT_EQ(StoreFixture::One("SELECT value FROM reading_values"), "12.50");
}

TEST_F(DataServer, AcknowledgesAMessageWithoutReadings) { EXPECT_EQ(StoreAll({}).GetType(), db_ctrl::eMeterRecStored); }

TEST_F(DataServer, CommitsTogetherWhatOneTurnHasRead) {
  for (unsigned int i = 0; i < 50; ++i) m_client->SendRequest(db_ctrl::eStoreMeterRec, StoreRequest({One(kNoon + i)}));
  ASSERT_TRUE(m_client->Await([&] { return m_client->CountWaiting() == 50; }));
  EXPECT_EQ(CountValues(), "50");
  EXPECT_EQ(m_server->GetCounters().readings, 50u);
  EXPECT_LE(m_server->GetCounters().commits, 3u);
}

TEST_F(DataServer, AnswersInTheOrderOfTheRequests) {
  std::vector<vorn::cUuid> sent;
  for (unsigned int i = 0; i < 20; ++i) {
    sent.push_back(m_client->SendRequest(db_ctrl::eStoreMeterRec, StoreRequest({One(kNoon + i)})));
    sent.push_back(m_client->SendRequest(db_ctrl::eGetStatistics));
  }
  for (const vorn::cUuid& id : sent) EXPECT_EQ(m_client->Next().GetId(), id);
}

TEST_F(DataServer, KeepsTheGoodReadingsOfAMessageAndNamesTheBadOnes) {
  const cMsg answer = StoreAll({One(kNoon), WithoutValues("1EMH00123"), One(kNoon + 1)});
  EXPECT_EQ(answer.GetType(), db_ctrl::eMeterRecStored);
  EXPECT_EQ(answer.Record().GetUIntPar("rejected"), 1u);
  EXPECT_EQ(Reason(answer), "meter-record 2 of meter '1EMH00123': measurement invalid");
  EXPECT_EQ(CountValues(), "2");
}

TEST_F(DataServer, KeepsTheGoodReadingsBesideOneThatIsNoRecord) {
  cRecord request = StoreRequest({One(kNoon)});
  request.AppendTextPar("meter-record", "not a record");
  const cMsg answer = m_client->Ask(db_ctrl::eStoreMeterRec, request);
  EXPECT_EQ(answer.GetType(), db_ctrl::eMeterRecStored);
  EXPECT_EQ(Reason(answer), "meter-record 2: expected type record, found text");
  EXPECT_EQ(CountValues(), "1");
}

TEST_F(DataServer, RefusesAMessageWithoutAnyGoodReading) {
  const cMsg answer = StoreAll({WithoutValues("M"), {}});
  EXPECT_EQ(answer.GetType(), db_ctrl::eStoreMeterRecFailed);
  EXPECT_EQ(Reason(answer), "meter-record 1 of meter 'M': measurement invalid; meter-record 2: record is empty");
  EXPECT_EQ(CountValues(), "0");
}

TEST_F(DataServer, NamesOnlySomeOfVeryManyBadReadings) {
  std::vector<cRecord> records(cStoreGroup::kMaxReasons, WithoutValues("M"));
  EXPECT_THAT(Reason(StoreAll(records)), testing::Not(HasSubstr("more")));
  records.resize(100, WithoutValues("M"));
  const cMsg answer = StoreAll(records);
  EXPECT_THAT(Reason(answer), HasSubstr("; and 84 more"));
}

TEST_F(DataServer, SaysHowManyReadingsWereThereAlready) {
  StoreAll({One(kNoon)});
  const cMsg answer = StoreAll({One(kNoon), One(kNoon + 1)});
  EXPECT_EQ(answer.GetType(), db_ctrl::eMeterRecStored);
  EXPECT_EQ(answer.Record().GetUIntPar("duplicates"), 1u);
  EXPECT_FALSE(answer.Record().GetPar("rejected").IsValid());
}

// ---- faults of the database

TEST_F(DataServer, WaitsForTheLockOfAnotherProcess) {
  SQLite::Database other(Options().file, SQLite::OPEN_READWRITE);
  other.exec("BEGIN EXCLUSIVE");
  m_client->SendRequest(db_ctrl::eStoreMeterRec, StoreRequest({One(kNoon)}));
  ASSERT_TRUE(m_client->Await([&] { return m_server->CountWaiting() == 1; }));
  EXPECT_EQ(m_client->CountWaiting(), 0u);
  other.exec("ROLLBACK");
  m_clock->Advance(2 * cStoreGroup::kRetry);
  EXPECT_EQ(m_client->Next().GetType(), db_ctrl::eMeterRecStored);
}

TEST_F(DataServer, RefusesWhatALockHasKeptTooLong) {
  SQLite::Database other(Options().file, SQLite::OPEN_READWRITE);
  other.exec("BEGIN EXCLUSIVE");
  m_client->SendRequest(db_ctrl::eStoreMeterRec, StoreRequest({One(kNoon)}));
  ASSERT_TRUE(m_client->Await([&] { return m_server->CountWaiting() == 1; }));
  m_client->SendRequest(db_ctrl::eStoreMeterRec, StoreRequest({One(kNoon + 1)}));
  ASSERT_TRUE(m_client->Await([&] { return m_server->CountWaiting() == 2; }));
  m_clock->Advance(cStoreGroup::kPatience);
  for (int i = 0; i < 2; ++i) {
    const cMsg answer = m_client->Next();
    EXPECT_EQ(answer.GetType(), db_ctrl::eStoreMeterRecFailed);
    EXPECT_THAT(Reason(answer), HasSubstr("another process holds its lock"));
  }
  other.exec("ROLLBACK");
  EXPECT_EQ(StoreAll({One(kNoon)}).GetType(), db_ctrl::eMeterRecStored);
  EXPECT_EQ(CountValues(), "1");
}

TEST_F(DataServer, AnswersQuestionsWhileTheDatabaseIsLocked) {
  StoreAll({One(kNoon)});
  SQLite::Database other(Options().file, SQLite::OPEN_READWRITE);
  other.exec("BEGIN EXCLUSIVE");
  m_client->SendRequest(db_ctrl::eStoreMeterRec, StoreRequest({One(kNoon + 1)}));
  EXPECT_THAT(Column(m_client->Ask(db_ctrl::eListMeters), "meterID"), ElementsAre("M"));
}

TEST_F(DataServer, RefusesEveryStoreOfACommitThatFails) {
  cDataOptions options = Options();
  options.durability = eDurability::Full;
  TearDown();
  Open(options);
  Serve();
  StoreAll({One(kNoon)});
  {
    const cDiskSync::cFailing failing;
    for (unsigned int i = 1; i <= 3; ++i)
      m_client->SendRequest(db_ctrl::eStoreMeterRec, StoreRequest({One(kNoon + i)}));
    cRecord event;
    event.AppendTextPar("what", "door open");
    m_client->SendRequest(db_ctrl::eStoreEvent, event);
    for (int i = 0; i < 3; ++i) {
      const cMsg answer = m_client->Next();
      EXPECT_EQ(answer.GetType(), db_ctrl::eStoreMeterRecFailed);
      EXPECT_THAT(Reason(answer), testing::StartsWith("meter 'M': database '" + options.file + "' input/output error"));
    }
    EXPECT_THAT(Reason(m_client->Next()), testing::StartsWith("event: database "));
    std::vector<cRecord> records;
    for (const char* meter : {"A", "B", "A", "C", "D"}) records.push_back(One(kNoon, "1", meter));
    EXPECT_THAT(Reason(StoreAll(records)), testing::StartsWith("meter 'A', 'B', 'C', 'D': database "));
    records.push_back(One(kNoon, "1", "E"));
    EXPECT_THAT(Reason(StoreAll(records)), testing::StartsWith("meter 'A', 'B', 'C', 'D', ...: database "));
    EXPECT_THAT(Reason(SetValue("s", "k", "v")), testing::StartsWith("store 's', key 'k': database "));
  }
  EXPECT_EQ(CountValues(), "1");
  EXPECT_EQ(StoreAll({One(kNoon + 9)}).GetType(), db_ctrl::eMeterRecStored);
}

TEST_F(DataServer, AFullDatabaseRefusesAndTracesItOnce) {
  cDataOptions options = Options();
  options.maxBytes = 80 * 4096;
  TearDown();
  Open(options);
  Serve();
  unsigned int refused = 0;
  for (unsigned int i = 0; refused < 3 && i < 500; ++i) {
    const cMsg answer = StoreAll({One(kNoon + i, std::string(3000, 'x'))});
    if (answer.GetType() != db_ctrl::eStoreMeterRecFailed) continue;
    ++refused;
    EXPECT_THAT(Reason(answer), HasSubstr("no room left"));
  }
  EXPECT_EQ(refused, 3u);
  EXPECT_THAT(m_trace.GetLines(), testing::Contains(HasSubstr("stores are refused")).Times(1));
  SQLite::Database(options.file, SQLite::OPEN_READWRITE).exec("DELETE FROM value WHERE time=1700000000");
  EXPECT_EQ(StoreAll({One(kNoon - 1)}).GetType(), db_ctrl::eMeterRecStored);
  EXPECT_THAT(m_trace.GetLines(), testing::Contains(HasSubstr("takes stores again")).Times(1));
}

TEST_F(DataServer, EmptiesItsLogWhenItIsIdle) {
  for (unsigned int i = 0; !m_store->NeedsCheckpoint(); ++i) StoreAll({One(kNoon + i, std::string(20'000, 'x'))});
  m_clock->Advance(1000);
  EXPECT_TRUE(m_client->Await([&] { return !m_store->NeedsCheckpoint(); }));
}

TEST_F(DataServer, AnswersWhatStillWaitsWhenItEnds) {
  SQLite::Database other(Options().file, SQLite::OPEN_READWRITE);
  other.exec("BEGIN EXCLUSIVE");
  m_client->SendRequest(db_ctrl::eStoreMeterRec, StoreRequest({One(kNoon)}));
  ASSERT_TRUE(m_client->Await([&] { return m_server->CountWaiting() == 1; }));
  other.exec("ROLLBACK");
  m_server.reset();
  EXPECT_EQ(CountValues(), "1");
  EXPECT_EQ(m_client->Next().GetType(), db_ctrl::eMeterRecStored);
}

TEST_F(DataServer, RefusesWhatALockStillKeepsWhenItEnds) {
  SQLite::Database other(Options().file, SQLite::OPEN_READWRITE);
  other.exec("BEGIN EXCLUSIVE");
  m_client->SendRequest(db_ctrl::eStoreMeterRec, StoreRequest({One(kNoon)}));
  ASSERT_TRUE(m_client->Await([&] { return m_server->CountWaiting() == 1; }));
  m_server.reset();
  EXPECT_EQ(m_client->Next().GetType(), db_ctrl::eStoreMeterRecFailed);
}

TEST_F(DataServer, HoldsABoundedNumberOfStoresWhileTheDatabaseIsLocked) {
  SQLite::Database other(Options().file, SQLite::OPEN_READWRITE);
  other.exec("BEGIN EXCLUSIVE");
  for (unsigned int i = 0; i <= cStoreGroup::kMaxWaiting; ++i)
    m_client->SendRequest(db_ctrl::eStoreMeterRec, StoreRequest({One(kNoon + i)}));
  const cMsg refused = m_client->Next();
  EXPECT_EQ(refused.GetType(), db_ctrl::eStoreMeterRecFailed);
  EXPECT_EQ(Reason(refused), "meter 'M': too many stores wait for a locked database");
  EXPECT_EQ(m_server->CountWaiting(), cStoreGroup::kMaxWaiting);
  other.exec("ROLLBACK");
  m_clock->Advance(2 * cStoreGroup::kRetry);
  ASSERT_TRUE(m_client->Await([&] { return m_client->CountWaiting() == cStoreGroup::kMaxWaiting; }));
  EXPECT_EQ(CountValues(), std::to_string(cStoreGroup::kMaxWaiting));
}

// ---- events

TEST_F(DataServer, KeepsAnEventAsItCame) {
  cRecord event;
  event.AppendTextPar("type", "door");
  event.AppendUIntPar("timestamp", 5);
  EXPECT_EQ(m_client->Ask(db_ctrl::eStoreEvent, event).GetType(), db_ctrl::eEventStored);
  const cMsg list = m_client->Ask(db_ctrl::eListEvents);
  cRecord row;
  ASSERT_TRUE(list.Record().GetPar("row").GetRecord(row));
  EXPECT_EQ(row.GetRecordPar("event"), event);
  EXPECT_GT(row.GetUIntPar("timestamp"), kNoon);
}

TEST_F(DataServer, RefusesAnEmptyEvent) {
  const cMsg answer = m_client->Ask(db_ctrl::eStoreEvent);
  EXPECT_EQ(answer.GetType(), db_ctrl::eStoreEventFailed);
  EXPECT_EQ(Reason(answer), "the event is empty");
}

TEST_F(DataServer, ListsEventsInPages) {
  for (unsigned int i = 0; i < 7; ++i) {
    cRecord event;
    event.AppendUIntPar("n", i);
    m_client->Ask(db_ctrl::eStoreEvent, event);
  }
  cRecord request;
  request.AppendUIntPar("maxlen", 3);
  EXPECT_EQ(AllPages(db_ctrl::eListEvents, request, "timestamp").size(), 7u);
  request.AppendUIntPar("toUTC", kNoon);
  EXPECT_TRUE(AllPages(db_ctrl::eListEvents, request, "timestamp").empty());
}

// ---- drivers and stores

TEST_F(DataServer, RegistersADriverWithItsStore) {
  EXPECT_EQ(SetValue("ehzif", "b", "2").GetType(), db_ctrl::eSetStoreValue + 1);
  SetValue("ehzif", "a", "1");
  SetValue("mbif", "a", "other");
  SetValue("ehzif", "b", "3");
  cRecord request;
  request.AppendTextPar("driver", "ehzif");
  const cMsg answer = m_client->Ask(db_ctrl::eRegisterDriver, request);
  EXPECT_EQ(answer.GetType(), db_ctrl::eDriverRegistered);
  EXPECT_THAT(Contents(answer), ElementsAre("a=1", "b=3"));
}

TEST_F(DataServer, RefusesADriverWithoutAName) {
  cRecord request;
  const cMsg missing = m_client->Ask(db_ctrl::eRegisterDriver, request);
  EXPECT_EQ(missing.GetType(), db_ctrl::eRegisterDriverFailed);
  EXPECT_THAT(Reason(missing), HasSubstr("\"driver\""));
  request.AppendTextPar("driver", "");
  EXPECT_EQ(Reason(m_client->Ask(db_ctrl::eRegisterDriver, request)), "the name of the driver is empty");
}

TEST_F(DataServer, AttachesANamedStore) {
  SetValue("page", "colour", "red");
  cRecord request;
  request.AppendTextPar("store", "page");
  const cMsg answer = m_client->Ask(db_ctrl::eAttachStore, request);
  EXPECT_EQ(answer.GetType(), db_ctrl::eStoreContents);
  EXPECT_THAT(Contents(answer), ElementsAre("colour=red"));
  request.SetTextPar("store", "");
  EXPECT_EQ(m_client->Ask(db_ctrl::eAttachStore, request).GetType(), db_ctrl::eAttachStoreFailed);
}

TEST_F(DataServer, RefusesAValueThatHasNoPlace) {
  EXPECT_EQ(Reason(SetValue("", "k", "v")), "the name of a store has 1 to 255 bytes, this one 0");
  EXPECT_EQ(SetValue(std::string(255, 's'), "k", "v").GetType(), db_ctrl::eSetStoreValue + 1);
  EXPECT_EQ(Reason(SetValue(std::string(256, 's'), "k", "v")), "the name of a store has 1 to 255 bytes, this one 256");
  EXPECT_EQ(Reason(SetValue("s", "", "v")), "store 's', key '': the key is empty");
}

TEST_F(DataServer, AStoreHoldsWhatFitsOneMessageAndNoMore) {
  const std::size_t room = cValueStore::kMaxStoreSize - cValueStore::kPairRoom - 1;
  EXPECT_EQ(SetValue("s", "k", std::string(room, 'x')).GetType(), db_ctrl::eSetStoreValue + 1);
  EXPECT_EQ(SetValue("s", "k", std::string(room, 'y')).GetType(), db_ctrl::eSetStoreValue + 1);
  const cMsg answer = SetValue("s", "k", std::string(room + 1, 'x'));
  EXPECT_EQ(answer.GetType(), db_ctrl::eSetStoreValue + 2);
  EXPECT_EQ(Reason(answer), "store 's', key 'k': the store would have more than 1048576 bytes");
  EXPECT_EQ(SetValue("s", "l", "x").GetType(), db_ctrl::eSetStoreValue + 2);
  cRecord request;
  request.AppendTextPar("store", "s");
  EXPECT_THAT(Contents(m_client->Ask(db_ctrl::eAttachStore, request)), ElementsAre("k=" + std::string(room, 'y')));
}

TEST_F(DataServer, ListsStoresAndTheirValues) {
  SetValue("b", "k", "1");
  SetValue("a", "k", "2");
  SetValue("a", "l", "3");
  cRecord request;
  request.AppendUIntPar("maxlen", 1);
  EXPECT_THAT(AllPages(db_ctrl::eListStores, request, "store"), ElementsAre("a", "b"));
  request.AppendTextPar("store", "a");
  EXPECT_THAT(AllPages(db_ctrl::eListStores, request, "value"), ElementsAre("2", "3"));
}

// ---- questions

TEST_F(DataServer, ListsMetersInPages) {
  for (const char* meter : {"C", "A", "B"}) StoreAll({One(kNoon, "1", meter)});
  cRecord request;
  request.AppendUIntPar("maxlen", 2);
  EXPECT_THAT(AllPages(db_ctrl::eListMeters, request, "meterID"), ElementsAre("A", "B", "C"));
  cRecord row;
  ASSERT_TRUE(m_client->Ask(db_ctrl::eListMeters).Record().GetPar("row").GetRecord(row));
  EXPECT_EQ(row.GetTextPar("addr") + row.GetTextPar("manufactor") + row.GetTextPar("medium") +
                row.GetTextPar("driver") + row.GetTextPar("interface-name"),
            "ttyUSB0EMHEehzifIR1");
  EXPECT_EQ(row.GetUIntPar("timestamp"), kNoon);
  EXPECT_EQ(row.GetUIntPar("first-timestamp"), kNoon);
  EXPECT_EQ(row.GetUInt64Par("values"), 1u);
}

TEST_F(DataServer, ListsStoredValues) {
  StoreAll({Reading("M", kNoon, {{"1-0:1.8.0", "12.50"}}).ToRecord()});
  cRecord request;
  request.AppendTextPar("meterID", "M");
  const cMsg answer = m_client->Ask(db_ctrl::eListValues, request);
  EXPECT_EQ(answer.GetType(), db_ctrl::eValueList);
  cRecord row;
  ASSERT_TRUE(answer.Record().GetPar("row").GetRecord(row));
  EXPECT_EQ(row.GetUIntPar("timestamp"), kNoon);
  EXPECT_EQ(row.GetTextPar("time-source"), "Meter UTC");
  EXPECT_EQ(row.GetTextPar("obis-id"), "1-0:1.8.0");
  EXPECT_EQ(row.GetTextPar("value"), "12.50");
  EXPECT_EQ(row.GetTextPar("unit"), "Wh");
  EXPECT_FALSE(row.GetPar("signature").IsValid());
}

TEST_F(DataServer, PagesOfValuesHaveTheLengthAskedFor) {
  std::vector<cRecord> records;
  for (unsigned int i = 0; i < 250; ++i) records.push_back(One(kNoon + i));
  StoreAll(records);
  cRecord request;
  request.AppendTextPar("meterID", "M");
  EXPECT_EQ(Column(m_client->Ask(db_ctrl::eListValues, request), "value").size(), cDataServer::kDefaultRows);
  for (const unsigned int maxLen : {1u, 249u, 250u, 251u}) {
    request.SetUIntPar("maxlen", maxLen);
    const cMsg page = m_client->Ask(db_ctrl::eListValues, request);
    EXPECT_EQ(Column(page, "value").size(), std::min(maxLen, 250u));
    EXPECT_EQ(page.Record().GetPar("next").IsValid(), maxLen < 250);
  }
  request.SetUIntPar("maxlen", 7);
  EXPECT_EQ(AllPages(db_ctrl::eListValues, request, "value").size(), 250u);
}

TEST_F(DataServer, APageHasAtMostTenThousandRows) {
  std::vector<cRecord> records;
  for (unsigned int i = 0; i <= cDataServer::kMaxRows; ++i) records.push_back(One(kNoon + i));
  for (std::size_t at = 0; at < records.size(); at += 5000)
    StoreAll({records.begin() + static_cast<std::ptrdiff_t>(at),
              records.begin() + static_cast<std::ptrdiff_t>(std::min(at + 5000, records.size()))});
  cRecord request;
  request.AppendTextPar("meterID", "M");
  request.AppendUIntPar("maxlen", 0xFFFFFFFF);
  const cMsg page = m_client->Ask(db_ctrl::eListValues, request);
  EXPECT_EQ(Column(page, "value").size(), cDataServer::kMaxRows);
  EXPECT_TRUE(page.Record().GetPar("next").IsValid());
}

TEST_F(DataServer, APageEndsBeforeItBecomesTooLargeForAMessage) {
  for (unsigned int i = 0; i < 10; ++i) StoreAll({One(kNoon + i, std::string(700'000, 'x'))});
  cRecord request;
  request.AppendTextPar("meterID", "M");
  EXPECT_EQ(Column(m_client->Ask(db_ctrl::eListValues, request), "value").size(), 2u);
  EXPECT_EQ(AllPages(db_ctrl::eListValues, request, "value").size(), 10u);
}

TEST_F(DataServer, SaysSoWhenOneRowIsTooLargeForAMessage) {
  StoreAll({One(kNoon, std::string(4'000'000, 'x')), One(kNoon + 1)});
  cRecord request;
  request.AppendTextPar("meterID", "M");
  const cMsg answer = m_client->Ask(db_ctrl::eListValues, request);
  EXPECT_EQ(answer.GetType(), db_ctrl::eListValuesFailed);
  EXPECT_EQ(Reason(answer), "the answer does not fit one message");
}

TEST_F(DataServer, SelectsValuesByIdentifierAndTime) {
  std::vector<cRecord> records;
  for (unsigned int i = 0; i < 5; ++i)
    records.push_back(
        Reading("M", kNoon + i, {{"1-0:1.8.0", std::to_string(i)}, {"1-0:2.8.0", std::to_string(10 + i)}}).ToRecord());
  StoreAll(records);
  cRecord request;
  request.AppendTextPar("meterID", "M");
  request.AppendTextPar("obis-id", "1-0:2.8.0");
  request.AppendUIntPar("fromUTC", kNoon + 1);
  request.AppendUIntPar("toUTC", kNoon + 3);
  EXPECT_THAT(Column(m_client->Ask(db_ctrl::eListValues, request), "value"), ElementsAre("11", "12", "13"));
}

TEST_F(DataServer, ListsLastValues) {
  StoreAll({One(kNoon, "1"), One(kNoon + 1, "2"), One(kNoon, "7", "N")});
  EXPECT_THAT(Column(m_client->Ask(db_ctrl::eListLastValues), "value"), ElementsAre("2", "7"));
  cRecord request;
  request.AppendTextPar("meterID", "N");
  const cMsg answer = m_client->Ask(db_ctrl::eListLastValues, request);
  EXPECT_THAT(Column(answer, "value"), ElementsAre("7"));
  EXPECT_THAT(Column(answer, "meterID"), ElementsAre("N"));
  cRecord pages;
  pages.AppendUIntPar("maxlen", 1);
  EXPECT_THAT(AllPages(db_ctrl::eListLastValues, pages, "value"), ElementsAre("2", "7"));
}

TEST_F(DataServer, AQuestionSeesTheStoresBeforeIt) {
  m_client->SendRequest(db_ctrl::eStoreMeterRec, StoreRequest({One(kNoon)}));
  m_client->SendRequest(db_ctrl::eListMeters);
  EXPECT_EQ(m_client->Next().GetType(), db_ctrl::eMeterRecStored);
  EXPECT_THAT(Column(m_client->Next(), "meterID"), ElementsAre("M"));
}

TEST_F(DataServer, CountsWhatItDoes) {
  StoreAll({One(kNoon), One(kNoon), WithoutValues("M")});
  const cMsg answer = m_client->Ask(db_ctrl::eGetStatistics);
  std::map<std::string, std::uint64_t> counters;
  cRecord row;
  for (auto at = answer.Record().GetPar("row"); at.GetRecord(row); at = at.NextSame())
    counters[row.GetTextPar("name")] = row.GetUInt64Par("value");
  EXPECT_EQ(counters["meters"], 1u);
  EXPECT_EQ(counters["values"], 1u);
  EXPECT_EQ(counters["readings-since-start"], 1u);
  EXPECT_EQ(counters["duplicates-since-start"], 1u);
  EXPECT_EQ(counters["rejected-since-start"], 1u);
  EXPECT_EQ(counters["commits-since-start"], 1u);
  EXPECT_EQ(counters["clients"], 1u);
  EXPECT_GT(counters["file-bytes"] + counters["wal-bytes"], 4096u);
}

// ---- what is no request of this service

TEST_F(DataServer, RefusesWrongParametersAndCursors) {
  const cMsg missing = m_client->Ask(db_ctrl::eListValues);
  EXPECT_EQ(missing.GetType(), db_ctrl::eListValuesFailed);
  EXPECT_EQ(Reason(missing), "parameter \"meterID\" is missing, expected type text");
  cRecord request;
  request.AppendTextPar("meterID", "M");
  request.AppendTextPar("maxlen", "7");
  EXPECT_EQ(Reason(m_client->Ask(db_ctrl::eListValues, request)),
            "parameter \"maxlen\": expected type uint, found text");
  for (const unsigned int type : {db_ctrl::eListValues, db_ctrl::eListLastValues, db_ctrl::eListEvents}) {
    cRecord cursor;
    cursor.AppendTextPar("meterID", "M");
    cursor.AppendDataPar("after", vorn::cData("xyz", 3));
    const cMsg answer = m_client->Ask(type, cursor);
    EXPECT_EQ(answer.GetType(), type + 2);
    EXPECT_EQ(Reason(answer), "parameter \"after\": no cursor of this service");
  }
}

TEST_F(DataServer, RefusesWhatItDoesNotKnow) {
  for (const unsigned int type : {0x123u, 0x5100au, 0x5FFFFu, 0xF0000000u}) {
    const cMsg answer = m_client->Ask(type);
    EXPECT_EQ(answer.GetType(), type + 2);
    EXPECT_THAT(Reason(answer), HasSubstr("no request of service \"data\""));
  }
}

TEST_F(DataServer, AnswersEveryRequestOfItsProtocol) {
  for (const cProtocolMessage& message : db_ctrl::kProtocol) {
    if (message.direction != eToService || message.answer == 0) continue;
    const cMsg answer = m_client->Ask(message.id);
    EXPECT_TRUE(answer.GetType() == message.answer || answer.GetType() == message.refusal) << message.name;
    EXPECT_EQ(answer.GetType() == message.refusal, !Reason(answer).empty()) << message.name;
  }
}

TEST_F(DataServer, ASecondServerOfTheSameDirectoryIsRefused) {
  cDataServer second(m_host.get(), m_store.get());
  EXPECT_FALSE(second.IsListening());
  EXPECT_NE(second.GetError(), "");
}

}  // namespace
}  // namespace tav::data
