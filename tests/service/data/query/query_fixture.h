// SPDX-License-Identifier: Apache-2.0
// The vocabulary of the tests of queries: a service on a real file, real clients of it, and time that is moved by hand.
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gateway/service/data/data_server.h>
#include <tav/config/interface_record.h>
#include <tav/config/meter_config.h>
#include <tav/service/db_ctrl_io.h>
#include <tav/service/db_ctrl_protocol.h>
#include <tav/service/db_ctrl_request.h>
#include <tests/service/data/store_fixture.h>
#include <tests/support/captured_trace.h>
#include <tests/support/scm_world.h>
#include <tests/support/time_zone.h>

namespace tav::data {

// A midnight of UTC: 2023-11-14.
constexpr unsigned int kMidnight = 1'699'920'000;
constexpr unsigned int kQuarter = 900;
constexpr unsigned int kHour = 3600;
constexpr unsigned int kDay = 86400;

// A client as programs hold it, which keeps the answers that are left to its owner.
class cQueryClient : public cDbCtrlIO {
 public:
  explicit cQueryClient(vorn::cScmService* service) : cDbCtrlIO(service, "") {}

  bool DispatchMessage(const vorn::cMsg& msg) override {
    if (!cDbCtrlIO::DispatchMessage(msg)) m_answers.push_back(msg);
    return true;
  }
  bool Await(const std::function<bool()>& holds) { return PollUntil(*GetService(), holds); }
  // The answer to what is sent under a fresh identifier; a message of type 0 when none comes.
  vorn::cMsg Ask(const std::function<bool(const vorn::cUuid& id)>& send) {
    vorn::cUuid id;
    id.Create();
    EXPECT_TRUE(send(id));
    if (!Await([this] { return !m_answers.empty(); })) return vorn::cMsg();
    const vorn::cMsg answer = m_answers.front();
    m_answers.pop_front();
    EXPECT_EQ(answer.GetId(), id);
    return answer;
  }

 private:
  std::deque<vorn::cMsg> m_answers;
};

class QueryFixture : public StoreFixture {
 protected:
  void SetUp() override {
    Open();
    Serve();
  }
  void TearDown() override {
    m_client.reset();
    m_server.reset();
    m_host.reset();
  }

  void Serve() {
    m_host = std::make_unique<gateway::cServiceHost>("query-test", m_folder.GetPath(), m_clock);
    m_server = std::make_unique<cDataServer>(m_host.get(), m_store.get(), [this] { return Now(); });
    ASSERT_TRUE(m_server->IsListening()) << m_server->GetError();
    m_client = Connect();
  }
  std::unique_ptr<cQueryClient> Connect() {
    auto client = std::make_unique<cQueryClient>(m_host.get());
    EXPECT_TRUE(client->Await([&] { return client->IsConnected(); }));
    return client;
  }
  std::int64_t Now() const { return m_wall + m_clock->Now() / 1000; }
  // Lets so many seconds pass, all that is due on their way included.
  void Pass(unsigned int seconds) {
    m_clock->Advance(std::int64_t{1000} * seconds);
    PollUntilIdle(*m_host);
  }

  // ---- asking
  vorn::cMsg GetStored(cDbCtrlRequest request) {
    return m_client->Ask([&](const vorn::cUuid& id) { return m_client->GetStoredValues(id, request); });
  }
  vorn::cMsg GetLast(cDbCtrlRequest request) {
    return m_client->Ask([&](const vorn::cUuid& id) { return m_client->GetLastValues(id, request); });
  }
  vorn::cMsg GetStatus(cDbCtrlRequest request) {
    return m_client->Ask([&](const vorn::cUuid& id) { return m_client->GetMeterStatus(id, request); });
  }
  static vorn::cMsg Fetch(cQueryClient& client, const vorn::cUuid& handle, unsigned int count) {
    return client.Ask([&](const vorn::cUuid& id) { return client.FetchStoredValues(id, handle, count); });
  }
  vorn::cMsg Fetch(const vorn::cUuid& handle, unsigned int count = 0) { return Fetch(*m_client, handle, count); }
  vorn::cMsg Close(const vorn::cUuid& handle) {
    return m_client->Ask([&](const vorn::cUuid& id) { return m_client->CloseResult(id, handle); });
  }
  vorn::cMsg Sql(const std::string& sql, unsigned int options = 0, const std::string& db = "") {
    return m_client->Ask([&](const vorn::cUuid& id) { return m_client->sqlExec(id, db, sql, options); });
  }
  vorn::cMsg FetchSql(const vorn::cUuid& handle, unsigned int count = 0) {
    return m_client->Ask([&](const vorn::cUuid& id) { return m_client->sqlFetch(id, handle, count); });
  }

  static vorn::cUuid Handle(const vorn::cMsg& msg) { return msg.Record().GetUuidPar("handle"); }
  static std::string Reason(const vorn::cMsg& msg) { return msg.Record().GetTextPar("reason"); }
  static bool IsEnd(const vorn::cMsg& msg) { return msg.Record().GetBoolPar("end"); }
  static std::vector<vorn::cRecord> Rows(const vorn::cMsg& msg, const std::string& name = "row") {
    std::vector<vorn::cRecord> rows;
    vorn::cRecord row;
    for (auto at = msg.Record().GetPar(name); at.GetRecord(row); at = at.NextSame()) rows.push_back(row);
    return rows;
  }
  // Some parameters of each row as one line, separated by blanks.
  static std::vector<std::string> Lines(const std::vector<vorn::cRecord>& rows, const std::vector<std::string>& names) {
    std::vector<std::string> lines;
    for (const vorn::cRecord& row : rows) {
      std::string& line = lines.emplace_back();
      for (const std::string& name : names) line += (line.empty() ? "" : " ") + row.GetPar(name).GetText();
    }
    return lines;
  }
  // All rows of a result, fetched in pages of so many.
  std::vector<vorn::cRecord> All(const vorn::cMsg& answer, unsigned int count = 0) {
    EXPECT_EQ(Reason(answer), "");
    std::vector<vorn::cRecord> all;
    for (const vorn::cUuid handle = Handle(answer); handle.IsValid();) {
      const vorn::cMsg page = Fetch(handle, count);
      EXPECT_EQ(page.GetType(), db_ctrl::eStoredValueRows) << Reason(page);
      for (const vorn::cRecord& row : Rows(page)) all.push_back(row);
      if (page.GetType() != db_ctrl::eStoredValueRows || IsEnd(page)) break;
    }
    return all;
  }
  std::vector<std::string> Stored(const cDbCtrlRequest& request, const std::vector<std::string>& names,
                                  unsigned int count = 0) {
    return Lines(All(GetStored(request), count), names);
  }

  // ---- collectors
  static cCollectorConfig Collector(const std::string& addr, const std::string& event, const std::string& obisIds,
                                    unsigned int count = 0, unsigned int distance = 1) {
    cCollectorConfig collector;
    collector.SetAddr(addr);
    collector.SetActivation(true);
    collector.SetLogger(count, distance, event);
    collector.SetLoggedObisID(obisIds);
    return collector;
  }
  // Sets the collectors of a meter by SQL: what a client writes loses the distance on its way.
  void Configure(const std::string& meter, const std::vector<cCollectorConfig>& collectors,
                 const std::string& vendor = "") {
    const cFault fault = m_store->Write([&](cTables& tables) {
      SQLite::Database& database = tables.database;
      database.exec("INSERT OR IGNORE INTO interface VALUES('MBUS', '', 1)");
      database.exec(
          "INSERT OR IGNORE INTO meter_config(meter_id, medium, mfct, addr, key, vendor, interface_name, "
          "interface_protocol, interface_options, push_enabled, store_raw_enabled) VALUES('" +
          meter + "', 'E', 'EMH', '', 'secret', '" + vendor + "', 'MBUS', 'MBUS', '', 0, 1)");
      const std::string id = "(SELECT id FROM meter_config WHERE meter_id='" + meter + "')";
      database.exec("DELETE FROM collector WHERE meter=" + id);
      for (const cCollectorConfig& each : collectors)
        database.exec(
            "INSERT INTO collector(meter, addr, activation, count_rp, distance_rp, event_type, obis_ids, "
            "push_period, push_enabled, push_raw_enabled, push_random_offset) VALUES(" +
            id + ", '" + each.addr + "', " + std::to_string(each.activation) + ", " + std::to_string(each.countRP) +
            ", " + std::to_string(each.distanceRP) + ", '" + each.eventType + "', '" + each.obisIds +
            "', '', 0, 0, 0)");
    });
    ASSERT_FALSE(fault) << fault.text;
    // A change that changes nothing makes the service look.
    m_client->Ask([&](const vorn::cUuid& id) {
      vorn::cUuid own = id;
      return m_client->DeleteMeter(own, "nobody", "", "");
    });
    PollUntilIdle(*m_host);
  }

  cTimeZone m_zone{"UTC"};
  std::shared_ptr<vorn::cManualClock> m_clock = std::make_shared<vorn::cManualClock>();
  std::int64_t m_wall = kMidnight;  // when the manual clock stood at 0
  std::unique_ptr<gateway::cServiceHost> m_host;
  std::unique_ptr<cDataServer> m_server;
  std::unique_ptr<cQueryClient> m_client;
  cCapturedTrace m_trace;
};

// A request for the data of one meter; empty: of all.
inline cDbCtrlRequest RequestFor(const std::string& meter, const std::vector<std::string>& obis = {}) {
  cDbCtrlRequest request;
  request.m_meterID = meter;
  for (const std::string& id : obis) request.AddObisID(id);
  return request;
}

}  // namespace tav::data
