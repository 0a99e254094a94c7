// SPDX-License-Identifier: Apache-2.0
// The vocabulary of the configuration's tests: a service on a real file, people and drivers that talk to it through
// real clients, and the usual interface, meter, collector and push target.
#pragma once

#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <gateway/service/data/data_server.h>
#include <tav/config/meter_template.h>
#include <tav/service/db_ctrl_io.h>
#include <tav/service/db_ctrl_io_driver_notify.h>
#include <tav/service/db_ctrl_protocol.h>
#include <tests/service/data/store_fixture.h>
#include <tests/support/captured_trace.h>
#include <tests/support/parameters.h>
#include <tests/support/scm_world.h>

namespace tav::data {

inline constexpr const char* kSecretKey = "000102030405060708090A0B0C0D0E0F";
inline constexpr const char* kSecretPassword = "correct horse battery staple";

inline cInterfaceRecord Interface(const std::string& name = "RS232", const std::string& options = "baud=9600") {
  return {name, options, true};
}

inline cMeterConfig Meter(const std::string& meterId = "M1", const std::string& interfaceName = "RS232",
                          const std::string& protocol = "SML") {
  cMeterConfig meter;
  meter.SetIdentification(meterId, "addr-" + meterId, "E", "EMH");
  meter.SetInterfaceOptions(interfaceName, protocol, "interval=900");
  meter.SetKey(kSecretKey);
  meter.SetVendor("Vendor");
  meter.pushEnabled = true;
  return meter;
}

inline cCollectorConfig Collector(const std::string& addr = "1") {
  cCollectorConfig collector;
  collector.SetAddr(addr);
  collector.SetActivation(true);
  collector.SetLogger(100, 4, "15min");
  collector.SetLoggedObisID("1-0:1.8.0,1-0:2.8.0*255");
  collector.pushPeriod = "1h";
  collector.pushRandomOffset = 65535;
  return collector;
}

inline cMeterConfig With(cMeterConfig meter, const cCollectorConfig& collector) {
  meter.AddCollector(collector);
  return meter;
}

inline cPushTarget Target(const std::string& name = "cloud", unsigned long long idx = 0) {
  cPushTarget target;
  target.configure(idx, name, "https", "push.example:8443", "user", kSecretPassword, "in/put", 7, 90, true, false,
                   true);
  return target;
}

inline cMeterTemplate Template(const std::string& name = "standard") {
  cMeterTemplate preset;
  preset.name = name;
  preset.enable = true;
  preset.meterConfig = With(Meter(), Collector());
  preset.pushConfig = Target();
  return preset;
}

// A process with one real client of the service, by name a driver or none.
class cPeer {
 public:
  cPeer(const std::string& directory, const std::string& driver)
      : m_service("peer", directory), io(&m_service, driver) {}

  bool Poll(unsigned int milliseconds) { return m_service.Poll(milliseconds); }
  // The messages that the client leaves to its process.
  std::vector<vorn::cMsg>& GetMessages() { return m_service.messages; }

 private:
  cRecordingService m_service;

 public:
  cDbCtrlIO io;
};

class ConfigWorld : public StoreFixture {
 protected:
  void SetUp() override {
    Open();
    Serve();
  }
  void TearDown() override {
    m_peers.clear();
    m_server.reset();
    m_host.reset();
  }
  void Serve() {
    m_host = std::make_unique<gateway::cServiceHost>("data-test", m_folder.GetPath(), m_clock);
    m_server = std::make_unique<cDataServer>(m_host.get(), m_store.get());
    ASSERT_TRUE(m_server->IsListening()) << m_server->GetError();
    m_user = &Connect("");
  }
  // The service ends and starts anew on the same file.
  void Restart(const cDataOptions& options) {
    TearDown();
    Open(options);
    Serve();
  }

  // ---- peers
  cPeer& Connect(const std::string& driver) {
    m_peers.push_back(std::make_unique<cPeer>(m_folder.GetPath(), driver));
    cPeer& peer = *m_peers.back();
    EXPECT_TRUE(Await([&] { return peer.io.IsConnected(); }));
    Settle();
    return peer;
  }
  void Disconnect(const cPeer& peer) {
    std::erase_if(m_peers, [&](const auto& known) { return known.get() == &peer; });
    Settle();
  }
  bool Await(const std::function<bool()>& holds) {
    return PollUntil(*m_host, [&] {
      for (const auto& peer : m_peers) peer->Poll(0);
      return holds();
    });
  }
  // Lets pass whatever is under way; nothing waits for time here. A loop that has only written says that it did
  // nothing, so one quiet turn of all is not enough.
  void Settle() {
    for (int quiet = 0; quiet < 4; ++quiet) {
      bool busy = m_host->Poll(1);
      for (const auto& peer : m_peers) busy = peer->Poll(0) || busy;
      if (busy) quiet = 0;
    }
  }

  // ---- requests
  using Request = std::function<bool(cDbCtrlIO& io, vorn::cUuid& tid)>;
  // The answer that the user's process gets under the request's identifier.
  vorn::cMsg Ask(const Request& request) {
    vorn::cUuid tid;
    EXPECT_TRUE(request(m_user->io, tid));
    return AnswerTo(*m_user, tid);
  }
  vorn::cMsg AnswerTo(cPeer& peer, const vorn::cUuid& tid) {
    vorn::cMsg answer;
    const auto found = [&] {
      for (const vorn::cMsg& msg : peer.GetMessages())
        if (msg.GetId() == tid && msg.GetType() != db_ctrl::eNotifyDriver) answer = msg;
      return answer.GetType() != 0;
    };
    EXPECT_TRUE(Await(found));
    return answer;
  }
  vorn::cMsg AskRaw(unsigned int type, const vorn::cRecord& record) {
    return Ask([&](cDbCtrlIO& io, vorn::cUuid& tid) {
      tid.Create();
      vorn::cMsg request(type);
      request.SetId(tid);
      request.Record() = record;
      return io.Send(request) == 1;
    });
  }
  static std::string Reason(const vorn::cMsg& answer) { return answer.Record().GetTextPar("reason"); }
  static std::vector<std::string> Texts(const vorn::cMsg& answer, const std::string& name) {
    std::vector<std::string> texts;
    for (auto par = answer.Record().GetPar(name); par.IsValid(); par = par.NextSame()) texts.push_back(par.GetText());
    return texts;
  }
  template <typename Thing>
  static std::vector<Thing> Things(const vorn::cMsg& answer, const std::string& name) {
    std::vector<Thing> things;
    vorn::cRecord record;
    for (auto par = answer.Record().GetPar(name); par.GetRecord(record); par = par.NextSame())
      EXPECT_TRUE(things.emplace_back().FromRecord(record)) << record.ToString();
    return things;
  }

  vorn::cMsg Set(const cInterfaceRecord& interface) {
    return Ask([&](cDbCtrlIO& io, vorn::cUuid& tid) { return io.SetInterface(tid, interface); });
  }
  vorn::cMsg Set(const cMeterConfig& meter) {
    return Ask([&](cDbCtrlIO& io, vorn::cUuid& tid) { return io.SetMeter(tid, meter); });
  }
  vorn::cMsg Set(cPushTarget target) {
    return Ask([&](cDbCtrlIO& io, vorn::cUuid& tid) { return io.SetPushTarget(tid, target); });
  }
  vorn::cMsg Set(const cMeterTemplate& preset) {
    return Ask([&](cDbCtrlIO& io, vorn::cUuid& tid) { return io.SetMeterTemplate(tid, preset); });
  }
  std::vector<cMeterConfig> GetMeters(const std::string& addr = "") {
    return Things<cMeterConfig>(Ask([&](cDbCtrlIO& io, vorn::cUuid& tid) { return io.GetMeter(tid, addr); }),
                                "meterconfig-record");
  }
  std::vector<cInterfaceRecord> GetInterfaces(const std::string& name = "", bool withMeters = true,
                                              bool withLoggers = true) {
    return Things<cInterfaceRecord>(
        Ask([&](cDbCtrlIO& io, vorn::cUuid& tid) { return io.GetInterface(tid, name, withMeters, withLoggers); }),
        "interface-record");
  }
  std::vector<cPushTarget> GetTargets(const std::string& name = "") {
    return Things<cPushTarget>(Ask([&](cDbCtrlIO& io, vorn::cUuid& tid) { return io.GetPushTarget(tid, name); }),
                               "pushtarget-record");
  }
  std::vector<cMeterTemplate> GetTemplates(const std::string& name = "") {
    return Things<cMeterTemplate>(Ask([&](cDbCtrlIO& io, vorn::cUuid& tid) { return io.GetMeterTemplate(tid, name); }),
                                  "metertemplate-record");
  }
  vorn::cMsg DeleteMeter(const std::string& id, const std::string& medium = "", const std::string& mfct = "") {
    return Ask([&](cDbCtrlIO& io, vorn::cUuid& tid) { return io.DeleteMeter(tid, id, medium, mfct); });
  }
  vorn::cMsg DeleteInterface(const std::string& name) {
    return Ask([&](cDbCtrlIO& io, vorn::cUuid& tid) { return io.DeleteInterface(tid, name); });
  }
  vorn::cMsg DeleteTarget(unsigned long long idx, const std::string& name) {
    return Ask([&](cDbCtrlIO& io, vorn::cUuid& tid) { return io.DeletePushTarget(tid, idx, name); });
  }
  vorn::cMsg DeleteTemplate(unsigned long long idx, const std::string& name) {
    return Ask([&](cDbCtrlIO& io, vorn::cUuid& tid) { return io.DeleteMeterTemplate(tid, idx, name); });
  }

  // ---- what stands in the file, as one text
  std::string Dump() {
    std::string all;
    for (const char* table : {"interface", "push_target", "meter_config", "collector", "meter_template"}) {
      SQLite::Database database(Options().file, SQLite::OPEN_READONLY);
      SQLite::Statement rows(database, "SELECT * FROM " + std::string(table));
      while (rows.executeStep()) {
        all += table;
        for (int i = 0; i < rows.getColumnCount(); ++i) all += "|" + rows.getColumn(i).getString();
        all += "\n";
      }
    }
    return all;
  }

  std::shared_ptr<vorn::cManualClock> m_clock = std::make_shared<vorn::cManualClock>();
  cCapturedTrace m_trace;
  std::unique_ptr<gateway::cServiceHost> m_host;
  std::unique_ptr<cDataServer> m_server;
  std::vector<std::unique_ptr<cPeer>> m_peers;
  cPeer* m_user = nullptr;
};

}  // namespace tav::data
