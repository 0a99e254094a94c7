// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/query/result_requests.h>

#include <random>

#include <gateway/service/data/query/base64.h>
#include <tests/service/data/query/query_fixture.h>

namespace tav::data {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using vorn::cMsg;
using vorn::cRecord;

class ResultRequests : public QueryFixture {
 protected:
  // So many readings of a meter a second apart; the value of 1-0:1.8.0 counts up, that of 1-0:2.8.0 down.
  void StoreSeries(const std::string& meter, unsigned int count, unsigned int from = kNoon) {
    for (unsigned int i = 0; i < count; ++i)
      Store(Reading(meter, from + i, {{"1-0:1.8.0", std::to_string(i)}, {"1-0:2.8.0", std::to_string(100 - i)}}));
  }
  static cMeterRecord Whole() {
    cMeterRecord reading("mbif", "KAM", "6", "W", "17", "low battery", kNoon, cMeterTav::eTsRtc, 4711);
    reading.SetInterfaceInfo("MBUS", "MBUS", "baud=2400");
    reading.SetRSSI(-71);
    reading.SetLearning(true);
    reading.SetEventRaster(900);
    reading.SetRaw(vorn::cData("\x68\x00\xFF\x16", 4));
    cMeasurementEntry signedEntry("6-0:1.0.0", "12.50", "kWh", kNoon, cMeterTav::eTsMeterDs);
    signedEntry.SetSignature(vorn::cData("\x01\x00\x02", 3));
    reading.AddMeasurementEntry(signedEntry);
    reading.AddMeasurementEntry({"6-0:2.0.0", "00017", "", kNoon, cMeterTav::eTsRtc});
    reading.AddMeasurementEntry({"6-0:1.2.0", "11.00", "kWh", kNoon + 60, cMeterTav::eTsMeterUtc});
    return reading;
  }
};

// ---- values

TEST_F(ResultRequests, DeliversStoredValuesByHandleInTheOrderOfTime) {
  StoreSeries("M", 3);
  StoreSeries("N", 1);
  const cMsg answer = GetStored(RequestFor("M"));
  EXPECT_EQ(answer.GetType(), db_ctrl::eStoredValues);
  EXPECT_THAT(Lines(All(answer), {"meterID", "timestamp", "obis-id", "value", "unit", "time-source"}),
              ElementsAre("M 1700000000 1-0:1.8.0 0 Wh Meter UTC", "M 1700000000 1-0:2.8.0 100 Wh Meter UTC",
                          "M 1700000001 1-0:1.8.0 1 Wh Meter UTC", "M 1700000001 1-0:2.8.0 99 Wh Meter UTC",
                          "M 1700000002 1-0:1.8.0 2 Wh Meter UTC", "M 1700000002 1-0:2.8.0 98 Wh Meter UTC"));
}

TEST_F(ResultRequests, PagesOfAnySizeGiveEveryRowOnce) {
  StoreSeries("M", 10);
  StoreSeries("N", 10);
  cDbCtrlRequest request = RequestFor("");
  const auto whole = Stored(request, {"meterID", "timestamp", "obis-id"});
  EXPECT_EQ(whole.size(), 40u);
  for (const unsigned int count : {1u, 3u, 7u, 20u, 39u, 40u, 41u})
    EXPECT_EQ(Stored(request, {"meterID", "timestamp", "obis-id"}, count), whole) << count;
}

TEST_F(ResultRequests, TheLastRowEndsAndReleasesTheHandle) {
  StoreSeries("M", 2);
  const vorn::cUuid handle = Handle(GetStored(RequestFor("M")));
  EXPECT_EQ(m_server->CountResults(), 1u);
  EXPECT_FALSE(IsEnd(Fetch(handle, 3)));
  const cMsg last = Fetch(handle, 1);
  EXPECT_TRUE(IsEnd(last));
  EXPECT_EQ(Rows(last).size(), 1u);
  EXPECT_EQ(m_server->CountResults(), 0u);
  const cMsg behind = Fetch(handle, 1);
  EXPECT_EQ(behind.GetType(), db_ctrl::eFetchStoredValues + 2);
  EXPECT_THAT(Reason(behind), StartsWith("handle " + handle.ToString() + " is unknown to this client"));
}

TEST_F(ResultRequests, AResultWithoutRowsEndsAtOnce) {
  const cMsg page = Fetch(Handle(GetStored(RequestFor("nobody"))));
  EXPECT_TRUE(IsEnd(page));
  EXPECT_THAT(Rows(page), IsEmpty());
}

TEST_F(ResultRequests, SelectsSeveralIdentifiersAndKeepsTheOrderOfTime) {
  Store(Reading("M", kNoon, {{"1-0:1.8.0", "1"}, {"1-0:2.8.0", "2"}, {"1-0:16.7.0", "3"}}));
  Store(Reading("M", kNoon + 1, {{"1-0:1.8.0", "4"}, {"1-0:2.8.0", "5"}, {"1-0:16.7.0", "6"}}));
  EXPECT_THAT(Stored(RequestFor("M", {"1-0:16.7.0", "1-0:1.8.0"}), {"value"}), ElementsAre("1", "3", "4", "6"));
  EXPECT_THAT(Stored(RequestFor("M", {"1-0:16.7.0", "never seen"}), {"value"}), ElementsAre("3", "6"));
  EXPECT_THAT(Stored(RequestFor("M", {"1-0:1.8"}), {"value"}), IsEmpty());  // exact names only
}

TEST_F(ResultRequests, BothEndsBelongToTheRange) {
  StoreSeries("M", 5);
  cDbCtrlRequest request = RequestFor("M", {"1-0:1.8.0"});
  request.m_fromUTC = kNoon + 1;
  request.m_toUTC = kNoon + 3;
  EXPECT_THAT(Stored(request, {"value"}), ElementsAre("1", "2", "3"));
  request.m_fromUTC = request.m_toUTC;
  EXPECT_THAT(Stored(request, {"value"}), ElementsAre("3"));
}

TEST_F(ResultRequests, RefusesARangeThatEndsBeforeItBegins) {
  cDbCtrlRequest request;
  request.m_fromUTC = 2;
  request.m_toUTC = 1;
  EXPECT_EQ(Reason(GetStored(request)), "meter-request: fromUTC 2 is behind toUTC 1");
}

TEST_F(ResultRequests, MaxLenBoundsTheWholeResult) {
  StoreSeries("M", 100);
  EXPECT_EQ(All(GetStored(RequestFor("M"))).size(), 100u);  // what a request says when nobody sets it
  for (const auto& [maxLen, rows] :
       {std::pair(1u, 1u), {150u, 150u}, {199u, 199u}, {200u, 200u}, {201u, 200u}, {0u, 200u}}) {
    cDbCtrlRequest request = RequestFor("M");
    request.m_maxLen = maxLen;
    EXPECT_EQ(All(GetStored(request)).size(), rows) << maxLen;
    EXPECT_EQ(All(GetStored(request), 10).size(), rows) << maxLen;
    EXPECT_EQ(m_server->CountResults(), 0u);
  }
}

TEST_F(ResultRequests, SelectsMetersByWhatTheirNewestReadingSays) {
  const auto store = [&](const std::string& meter, const std::string& addr, const std::string& mfct,
                         const std::string& medium, unsigned int time) {
    cMeterRecord reading("mbif", mfct, medium, meter, addr, "", time, cMeterTav::eTsRtc, 1);
    reading.AddMeasurementEntry({"6-0:1.0.0", "1", "kWh", time, cMeterTav::eTsRtc});
    Store(reading);
  };
  store("A", "1", "KAM", "6", kNoon);
  store("B", "2", "KAM", "7", kNoon);
  store("C", "2", "ABB", "7", kNoon);
  store("C", "3", "ABB", "7", kNoon + 1);  // moved
  Configure("A", {}, "North");
  Configure("B", {}, "South");
  const auto meters = [&](const std::function<void(cDbCtrlRequest&)>& set) {
    cDbCtrlRequest request;
    request.m_maxLen = 1;
    set(request);
    std::string found;
    request.m_maxLen = 0;
    std::set<std::string> names;
    for (const std::string& name : Stored(request, {"meterID"})) names.insert(name);
    for (const std::string& name : names) found += name;
    return found;
  };
  EXPECT_EQ(meters([](cDbCtrlRequest&) {}), "ABC");
  EXPECT_EQ(meters([](cDbCtrlRequest& r) { r.m_meterID = "B"; }), "B");
  EXPECT_EQ(meters([](cDbCtrlRequest& r) { r.m_addr = "2"; }), "B");
  EXPECT_EQ(meters([](cDbCtrlRequest& r) { r.m_addr = "3"; }), "C");
  EXPECT_EQ(meters([](cDbCtrlRequest& r) { r.m_mfct = "KAM"; }), "AB");
  EXPECT_EQ(meters([](cDbCtrlRequest& r) { r.m_medium = "7"; }), "BC");
  EXPECT_EQ(meters([](cDbCtrlRequest& r) { r.m_vendor = "South"; }), "B");
  EXPECT_EQ(meters([](cDbCtrlRequest& r) { r.m_mfct = "KAM", r.m_medium = "7"; }), "B");
  EXPECT_EQ(meters([](cDbCtrlRequest& r) { r.m_meterID = "A", r.m_medium = "7"; }), "");
}

TEST_F(ResultRequests, DeliversSignatures) {
  Store(Whole());
  const std::vector<cRecord> rows = All(GetStored(RequestFor("W", {"6-0:1.0.0", "6-0:2.0.0"})));
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0].GetDataPar("signature"), vorn::cData("\x01\x00\x02", 3));
  EXPECT_FALSE(rows[1].GetPar("signature").IsValid());
}

TEST_F(ResultRequests, GoesOnWhereItWasWhenValuesComeMeanwhile) {
  StoreSeries("M", 3);
  const vorn::cUuid handle = Handle(GetStored(RequestFor("M", {"1-0:1.8.0"})));
  EXPECT_THAT(Lines(Rows(Fetch(handle, 2)), {"value"}), ElementsAre("0", "1"));
  Store(Reading("M", kNoon - 5, {{"1-0:1.8.0", "early"}}));
  Store(Reading("M", kNoon + 9, {{"1-0:1.8.0", "late"}}));
  EXPECT_THAT(Lines(Rows(Fetch(handle)), {"value"}), ElementsAre("2", "late"));
}

TEST_F(ResultRequests, AHeldResultDoesNotKeepTheLogFromBeingEmptied) {
  StoreSeries("M", 3);
  const vorn::cUuid handle = Handle(GetStored(RequestFor("M")));
  Fetch(handle, 1);
  Store(Reading("M", kNoon + 9, {{"1-0:1.8.0", "9"}}));
  SQLite::Database other(Options().file, SQLite::OPEN_READWRITE);
  SQLite::Statement checkpoint(other, "PRAGMA wal_checkpoint(TRUNCATE)");
  ASSERT_TRUE(checkpoint.executeStep());
  EXPECT_EQ(checkpoint.getColumn(0).getInt(), 0);  // nobody was in the way
  EXPECT_EQ(m_store->GetWalBytes(), 0u);
}

TEST_F(ResultRequests, AnswersFromWhatWasStoredBeforeOnTheSameChannel) {
  m_client->StoreMeterRec(Reading("M", kNoon, {{"1-0:1.8.0", "7"}}));
  EXPECT_THAT(Stored(RequestFor("M"), {"value"}), ElementsAre("7"));
}

TEST_F(ResultRequests, APageOfFewMatchesComesShortAndGoesOn) {
  constexpr unsigned int kValues = cReadingQuery::kMaxScanned + 10;
  Store(Reading("M", kNoon, {{"1-0:1.8.0", "0"}, {"1-0:2.8.0", "first"}}));
  SQLite::Database(Options().file, SQLite::OPEN_READWRITE)
      .exec("WITH RECURSIVE n(i) AS (VALUES(1) UNION ALL SELECT i+1 FROM n WHERE i<" + std::to_string(kValues) +
            ") INSERT INTO value SELECT 1, 1700000000+i, 1, 0, 1, NULL FROM n");
  Store(Reading("M", kNoon + kValues + 1, {{"1-0:2.8.0", "last"}}));
  const vorn::cUuid handle = Handle(GetStored(RequestFor("M", {"1-0:2.8.0"})));
  const cMsg first = Fetch(handle);
  EXPECT_THAT(Lines(Rows(first), {"value"}), ElementsAre("first"));
  EXPECT_FALSE(IsEnd(first));
  const cMsg second = Fetch(handle);
  EXPECT_THAT(Lines(Rows(second), {"value"}), ElementsAre("last"));
  EXPECT_TRUE(IsEnd(second));
}

// ---- handles

TEST_F(ResultRequests, AHandleIsUnknownToEverybodyElse) {
  StoreSeries("M", 1);
  const vorn::cUuid handle = Handle(GetStored(RequestFor("M")));
  const auto other = Connect();
  EXPECT_THAT(Reason(Fetch(*other, handle, 1)), HasSubstr("is unknown to this client"));
  const cMsg close = other->Ask([&](const vorn::cUuid& id) { return other->CloseResult(id, handle); });
  EXPECT_EQ(close.GetType(), db_ctrl::eCloseResult + 2);
  EXPECT_EQ(Rows(Fetch(handle)).size(), 2u);
}

TEST_F(ResultRequests, ClosingReleasesAHandleOnce) {
  const vorn::cUuid handle = Handle(GetStored(RequestFor("M")));
  EXPECT_EQ(Close(handle).GetType(), db_ctrl::eCloseResult + 1);
  EXPECT_EQ(m_server->CountResults(), 0u);
  EXPECT_EQ(Close(handle).GetType(), db_ctrl::eCloseResult + 2);
  EXPECT_THAT(Reason(Fetch(handle)), HasSubstr("is unknown"));
}

TEST_F(ResultRequests, AClientThatGoesTakesItsHandlesAlong) {
  auto other = Connect();
  cDbCtrlRequest request = RequestFor("M");
  other->Ask([&](const vorn::cUuid& id) { return other->GetStoredValues(id, request); });
  GetStored(request);
  EXPECT_EQ(m_server->CountResults(), 2u);
  other.reset();
  EXPECT_TRUE(m_client->Await([&] { return m_server->CountResults() == 1; }));
}

TEST_F(ResultRequests, AnIdleHandleIsReleased) {
  const vorn::cUuid handle = Handle(GetStored(RequestFor("M")));
  Pass(cResultTable::kIdle / 1000 + 60);
  EXPECT_EQ(m_server->CountResults(), 0u);
  EXPECT_THAT(Reason(Fetch(handle)), HasSubstr("not asked for in 300 seconds"));
}

TEST_F(ResultRequests, AClientHoldsABoundedNumberOfHandles) {
  for (std::size_t i = 0; i < cResultTable::kMaxOfChannel; ++i)
    ASSERT_EQ(GetStored(RequestFor("M")).GetType(), db_ctrl::eStoredValues);
  const cMsg refused = GetStored(RequestFor("M"));
  EXPECT_EQ(refused.GetType(), db_ctrl::eGetStoredValues + 2);
  EXPECT_THAT(Reason(refused), HasSubstr("this client holds 16 results"));
}

TEST_F(ResultRequests, AStoredResultIsNotFetchedAsSqlNorTheOtherWayRound) {
  const vorn::cUuid stored = Handle(GetStored(RequestFor("M")));
  EXPECT_EQ(Reason(FetchSql(stored)), "handle " + stored.ToString() + " is fetched with fetch-stored-values");
  const vorn::cUuid sql = Handle(Sql("SELECT 1"));
  EXPECT_EQ(Reason(Fetch(sql)), "handle " + sql.ToString() + " is fetched with sql-fetch");
}

// ---- readings

TEST_F(ResultRequests, DeliversReadingsAsTheirRecordsHaveThem) {
  Store(Whole());
  cDbCtrlRequest request = RequestFor("W");
  request.m_mode = "readings";
  const std::vector<cRecord> rows = All(GetStored(request));
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_FALSE(rows[0].GetPar("raw").IsValid());
  cMeterRecord reading;
  ASSERT_TRUE(reading.FromRecord(rows[0].GetRecordPar("meter-record"))) << reading.GetError();
  cMeterRecord expected = Whole();
  expected.SetRaw(vorn::cData());
  EXPECT_EQ(reading.ToRecord().ToString(), expected.ToRecord().ToString());
}

TEST_F(ResultRequests, DeliversRawTelegramsInTheFormatAskedFor) {
  Store(Whole());
  Store(Reading("W", kNoon + 9, {{"1-0:1.8.0", "1"}}));  // without a telegram
  cDbCtrlRequest request = RequestFor("W");
  request.m_mode = "readings";
  request.EnableRaw("base64");
  std::vector<cRecord> rows = All(GetStored(request));
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0].GetTextPar("raw"), "aAD/Fg==");
  EXPECT_FALSE(rows[1].GetPar("raw").IsValid());
  EXPECT_FALSE(rows[0].GetRecordPar("meter-record").GetPar("raw").IsValid());
  request.EnableRaw("other");
  rows = All(GetStored(request));
  EXPECT_EQ(rows[0].GetDataPar("raw"), vorn::cData("\x68\x00\xFF\x16", 4));
}

TEST_F(ResultRequests, ReadingsOfOneSecondAndWithForeignTimesKeepTheirOwnValues) {
  cMeterRecord first = Reading("M", kNoon, {{"1-0:1.8.0", "1"}});
  cMeterRecord second = Reading("M", kNoon, {{"1-0:1.8.0", "2"}});
  second.SetRSSI(-5);
  cMeterRecord third = Reading("M", kNoon + 5, {});
  third.AddMeasurementEntry({"1-0:1.8.0", "0", "Wh", kNoon - 3600, cMeterTav::eTsMeterUtc});
  for (const cMeterRecord& each : {first, second, third}) Store(each);
  cDbCtrlRequest request = RequestFor("M");
  request.m_mode = "readings";
  const std::vector<cRecord> rows = All(GetStored(request), 1);
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_EQ(rows[0].GetRecordPar("meter-record"), first.ToRecord());
  EXPECT_EQ(rows[1].GetRecordPar("meter-record"), second.ToRecord());
  EXPECT_EQ(rows[2].GetRecordPar("meter-record"), third.ToRecord());
}

TEST_F(ResultRequests, KeepsWhatAnotherServiceNotedWhenItStoredAReading) {
  vorn::cRecord form = Reading("M", kNoon, {{"1-0:1.8.0", "1"}}).ToRecord();
  form.SetUIntPar("store-utc", 7);
  form.SetUIntPar("store-osc", 8);
  Store(form);
  cDbCtrlRequest request = RequestFor("M");
  request.m_mode = "readings";
  EXPECT_EQ(All(GetStored(request)).at(0).GetRecordPar("meter-record"), form);
}

TEST_F(ResultRequests, ReadingsCarryOnlyTheEntriesAskedForAndAreLeftOutWithoutAny) {
  Store(Reading("M", kNoon, {{"1-0:1.8.0", "1"}, {"1-0:2.8.0", "2"}}));
  Store(Reading("M", kNoon + 1, {{"1-0:2.8.0", "3"}}));
  cDbCtrlRequest request = RequestFor("M", {"1-0:1.8.0"});
  request.m_mode = "readings";
  const std::vector<cRecord> rows = All(GetStored(request));
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0].GetRecordPar("meter-record"), Reading("M", kNoon, {{"1-0:1.8.0", "1"}}).ToRecord());
}

TEST_F(ResultRequests, ReadingsAreSelectedByTheirOwnTime) {
  for (unsigned int i = 0; i < 4; ++i) Store(Reading("M", kNoon + i, {{"1-0:1.8.0", std::to_string(i)}}));
  cDbCtrlRequest request = RequestFor("M");
  request.m_mode = "readings";
  request.m_fromUTC = kNoon + 1;
  request.m_toUTC = kNoon + 2;
  EXPECT_EQ(All(GetStored(request)).size(), 2u);
}

// ---- modes

TEST_F(ResultRequests, RefusesAnUnknownModeWithWhatIsPossible) {
  cDbCtrlRequest request = RequestFor("M");
  request.m_mode = "Values";
  EXPECT_EQ(Reason(GetStored(request)),
            "unknown mode 'Values': possible are 'values' (also meant by an empty one) and 'readings'");
  EXPECT_EQ(Reason(GetLast(request)), "unknown mode 'Values': possible are 'values', also meant by an empty one");
  EXPECT_EQ(Reason(GetStatus(request)),
            "unknown mode 'Values': possible are 'status' (also meant by an empty one) and 'reading'");
}

TEST_F(ResultRequests, AnEmptyModeMeansValues) {
  StoreSeries("M", 1);
  cDbCtrlRequest request = RequestFor("M");
  const auto empty = All(GetStored(request));
  request.m_mode = "values";
  EXPECT_EQ(All(GetStored(request)), empty);
  EXPECT_EQ(Rows(GetLast(request)), Rows(GetLast(RequestFor("M"))));
}

TEST_F(ResultRequests, RefusesRawTelegramsWhereThereAreNone) {
  cDbCtrlRequest request = RequestFor("M");
  request.EnableRaw("base64");
  EXPECT_EQ(Reason(GetStored(request)), "raw-format 'base64': raw telegrams come in mode 'readings' only");
  EXPECT_EQ(Reason(GetLast(request)), "raw-format 'base64': raw telegrams come in mode 'readings' only");
  EXPECT_EQ(Reason(GetStatus(request)), "raw-format 'base64': raw telegrams come in mode 'reading' only");
}

TEST_F(ResultRequests, RefusesASelectionThatIsNone) {
  cDbCtrlRequest request = RequestFor("M");
  request.m_version = 3;
  EXPECT_EQ(Reason(GetStored(request)), "meter-request: bad version");
  request = RequestFor("M");
  request.EnableRaw("hex");
  EXPECT_EQ(Reason(GetStored(request)), "meter-request: unknown raw-format");
}

// ---- last values

TEST_F(ResultRequests, DeliversTheLastValueOfEachIdentifier) {
  StoreSeries("M", 3);
  StoreSeries("N", 2);
  const cMsg answer = GetLast(RequestFor(""));
  EXPECT_EQ(answer.GetType(), db_ctrl::eLastValues);
  EXPECT_FALSE(answer.Record().GetPar("handle").IsValid());
  EXPECT_THAT(Lines(Rows(answer), {"meterID", "obis-id", "value", "timestamp"}),
              ElementsAre("M 1-0:1.8.0 2 1700000002", "M 1-0:2.8.0 98 1700000002", "N 1-0:1.8.0 1 1700000001",
                          "N 1-0:2.8.0 99 1700000001"));
  EXPECT_THAT(Lines(Rows(GetLast(RequestFor("N", {"1-0:2.8.0"}))), {"value"}), ElementsAre("99"));
  cDbCtrlRequest request = RequestFor("");
  request.m_fromUTC = kNoon + 2;
  EXPECT_THAT(Lines(Rows(GetLast(request)), {"meterID"}), ElementsAre("M", "M"));
  request.m_maxLen = 1;
  EXPECT_THAT(Lines(Rows(GetLast(request)), {"obis-id"}), ElementsAre("1-0:1.8.0"));
}

TEST_F(ResultRequests, LastValuesThatFitNoMessageGoOnByHandle) {
  std::vector<cValue> values;
  for (unsigned int i = 0; i < cResultPage::kMaxRows / 2 + 50; ++i) values.push_back({"x" + std::to_string(i), "1"});
  Store(Reading("M", kNoon, values));
  Store(Reading("N", kNoon, values));
  cDbCtrlRequest request = RequestFor("");
  request.m_maxLen = 0;
  const cMsg answer = GetLast(request);
  EXPECT_EQ(Rows(answer).size(), cResultPage::kMaxRows);
  ASSERT_TRUE(Handle(answer).IsValid());
  EXPECT_EQ(All(answer).size(), 100u);
  EXPECT_EQ(m_server->CountResults(), 0u);
}

// ---- status

TEST_F(ResultRequests, DeliversTheStatusOfTheNewestReading) {
  Store(Reading("W", kNoon - 60, {{"1-0:1.8.0", "1"}}));
  Store(Whole());
  Store(Reading("A", kNoon, {{"1-0:1.8.0", "1"}}));
  const cMsg answer = GetStatus(RequestFor(""));
  EXPECT_EQ(answer.GetType(), db_ctrl::eMeterStatuses);
  const std::vector<cRecord> rows = Rows(answer, "meter-status");
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0].GetTextPar("meterID"), "A");
  cMeterRecord newest;
  ASSERT_TRUE(newest.FromRecord(Whole().ToRecord()));
  EXPECT_EQ(rows[1].ToString(), newest.GetMeterStatus().ToRecord().ToString());
  EXPECT_FALSE(rows[1].GetPar("key").IsValid());
}

TEST_F(ResultRequests, AStatusComesWithItsReadingWhenAsked) {
  Store(Whole());
  cDbCtrlRequest request = RequestFor("W");
  request.m_mode = "reading";
  request.EnableRaw("base64");
  const std::vector<cRecord> rows = Rows(GetStatus(request), "meter-status");
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0].GetTextPar("raw"), "aAD/Fg==");
  cMeterRecord expected = Whole();
  expected.SetRaw(vorn::cData());
  EXPECT_EQ(rows[0].GetRecordPar("meter-rec").ToString(), expected.ToRecord().ToString());
}

TEST_F(ResultRequests, StatusesAreSelectedByTimeAndBoundedByMaxLen) {
  for (const char* meter : {"A", "B", "C"}) Store(Reading(meter, kNoon, {{"1-0:1.8.0", "1"}}));
  Store(Reading("D", kNoon - 1, {{"1-0:1.8.0", "1"}}));
  cDbCtrlRequest request;
  request.m_fromUTC = kNoon;
  EXPECT_THAT(Lines(Rows(GetStatus(request), "meter-status"), {"meterID"}), ElementsAre("A", "B", "C"));
  request.m_maxLen = 2;
  EXPECT_THAT(Lines(Rows(GetStatus(request), "meter-status"), {"meterID"}), ElementsAre("A", "B"));
}

TEST_F(ResultRequests, StatusesThatFitNoMessageGoOnByHandle) {
  for (const char* meter : {"A", "B", "C"})
    Store(Reading(meter, kNoon, {{"1-0:1.8.0", std::string(cResultPage::kMaxBytes / 2 - 1000, 'x')}}));
  cDbCtrlRequest request;
  request.m_mode = "reading";
  const cMsg answer = GetStatus(request);
  EXPECT_THAT(Lines(Rows(answer, "meter-status"), {"meterID"}), ElementsAre("A", "B"));
  EXPECT_THAT(Lines(All(answer), {"meterID"}), ElementsAre("C"));
  EXPECT_EQ(m_server->CountResults(), 0u);
}

// ---- faults, plans

TEST_F(ResultRequests, ADamagedFileIsARefusalAndReleasesTheResult) {
  StoreSeries("M", 3);
  const vorn::cUuid handle = Handle(GetStored(RequestFor("M")));
  SQLite::Database(Options().file, SQLite::OPEN_READWRITE).exec("DROP TABLE signature");
  const cMsg refused = Fetch(handle);
  EXPECT_EQ(refused.GetType(), db_ctrl::eFetchStoredValues + 2);
  EXPECT_THAT(Reason(refused), HasSubstr("no such table: signature"));
  EXPECT_EQ(m_server->CountResults(), 0u);
}

TEST_F(ResultRequests, AnyFormOfARequestIsAnswered) {
  StoreSeries("M", 3);
  std::mt19937 random(1);
  const auto append = [&](cRecord& to, const char* name, const cRecord& nested) {
    const auto number = static_cast<unsigned int>(random() % 4 == 0 ? random() : random() % 3);
    const char* const texts[] = {"", "M", "readings", "values", "1-0:1.8.0", "base64", "SELECT 1", "\xFF"};
    switch (random() % 8) {
      case 0:
        return to.AppendUIntPar(name, number);
      case 1:
        return to.AppendTextPar(name, nullptr);
      case 2:
        return to.AppendUInt64Par(name, number);
      case 3:
        return to.AppendUuidPar(name, vorn::cUuid());
      case 4:
        return to.AppendRecordPar(name, nested);
      default:
        return to.AppendTextPar(name, texts[random() % std::size(texts)]);
    }
  };
  for (int round = 0; round < 400; ++round) {
    cRecord obis, selection, request;
    for (const char* name : {"obis-id", "obis-id"}) append(obis, name, {});
    for (const char* name : {"meterID", "addr", "vendor", "mfct", "medium", "mode", "profile", "obis-id", "raw-format",
                             "fromUTC", "toUTC", "maxlen", "version"})
      if (random() % 3 == 0) append(selection, name, obis);
    request.AppendRecordPar("meter-request", selection);
    for (const char* name : {"handle", "count", "db", "sql", "options"}) append(request, name, selection);
    constexpr unsigned int kTypes[] = {db_ctrl::eGetStoredValues, db_ctrl::eGetLastValues,     db_ctrl::eGetMeterStatus,
                                       db_ctrl::eSqlExec,         db_ctrl::eFetchStoredValues, db_ctrl::eSqlFetch,
                                       db_ctrl::eCloseResult};
    const unsigned int type = kTypes[random() % std::size(kTypes)];
    const cMsg answer = m_client->Ask([&](const vorn::cUuid& id) {
      cMsg msg(type);
      msg.SetId(id);
      msg.Record() = request;
      return m_client->Send(msg) == 1;
    });
    ASSERT_TRUE(answer.GetType() == type + 1 || answer.GetType() == type + 2) << request.ToString();
    EXPECT_EQ(answer.GetType() == type + 2, !Reason(answer).empty()) << request.ToString();
    if (Handle(answer).IsValid()) Close(Handle(answer));
  }
}

TEST_F(ResultRequests, EveryStatementGoesAlongKeys) {
  std::vector<std::string> all = {cReadingQuery::GetPageSql(), cReadingQuery::GetLastSql()};
  for (const std::string& sql : cStoredReadings::GetSql()) all.push_back(sql);
  for (const char* sql : cMeterSelection::GetSql()) all.emplace_back(sql);
  for (const char* sql : cProfileStore::GetSql()) all.emplace_back(sql);
  for (const char* sql : cProfileQuery::GetSql()) all.emplace_back(sql);
  SQLite::Database database(Options().file, SQLite::OPEN_READONLY);
  for (const std::string& sql : all) {
    SQLite::Statement explain(database, "EXPLAIN QUERY PLAN " + sql);
    unsigned int searches = 0;
    while (explain.executeStep()) {
      const std::string step = explain.getColumn(3).getString();
      EXPECT_THAT(step, testing::Not(HasSubstr("SCAN"))) << sql;
      EXPECT_THAT(step, testing::Not(HasSubstr("TEMP B-TREE"))) << sql;
      searches += step.find("SEARCH") != std::string::npos ? 1 : 0;
    }
    EXPECT_GE(searches, 1u) << sql;
  }
}

TEST_F(ResultRequests, AMeterAnIdentifierAndARangeAreFoundByMeterAndTime) {
  SQLite::Database database(Options().file, SQLite::OPEN_READONLY);
  SQLite::Statement explain(database, std::string("EXPLAIN QUERY PLAN ") + cReadingQuery::GetPageSql());
  ASSERT_TRUE(explain.executeStep());
  EXPECT_EQ(explain.getColumn(3).getString(),
            "SEARCH value USING PRIMARY KEY (meter=? AND (time,obis,value)>(?,?,?) AND time<?)");
}

}  // namespace
}  // namespace tav::data
