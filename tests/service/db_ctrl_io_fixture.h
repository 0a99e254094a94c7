// SPDX-License-Identifier: Apache-2.0
// What the tests of cDbCtrlIO share: a client and a real service, and the words to speak of them.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <tav/framework/helper.h>
#include <tav/service/db_ctrl_io.h>
#include <tests/support/captured_trace.h>
#include <tests/support/parameters.h>
#include <tests/support/scm_world.h>
#include <tests/support/trace_level.h>

namespace db_ctrl_io_fixture {

using tav::cDbCtrlIO;
using tav::cMeterRecord;
using tav::cMeterTav;

inline constexpr unsigned int kLimit = 50;
inline constexpr int kPingMs = 5000;

inline cMeterRecord Reading(const std::string& meterID) {
  cMeterRecord record("ehzif", "EMH", "E", meterID, "12", "ok", 1, cMeterTav::eTsRtc, 2);
  record.AddMeasurementEntry({"1-0:1.8.0", "1", "Wh", 1, cMeterTav::eTsRtc});
  return record;
}

inline vorn::cRecord Event(const std::string& text) {
  vorn::cRecord event;
  event.AppendTextPar("text", text);
  return event;
}

inline void AppendStoreValue(vorn::cRecord& to, const std::string& key, const std::string& value) {
  vorn::cRecord pair;
  pair.AppendTextPar("key", key);
  pair.AppendTextPar("value", value);
  to.AppendRecordPar("store-value", pair);
}

inline vorn::cRecord StoreOf(const std::vector<std::pair<std::string, std::string>>& values) {
  vorn::cRecord store;
  for (const auto& [key, value] : values) AppendStoreValue(store, key, value);
  return store;
}

inline vorn::cRecord Because(const std::string& reason) {
  vorn::cRecord record;
  record.AppendTextPar("reason", reason);
  return record;
}

// A client and a service on loops of their own, so that a test may leave the service without a turn. The client's clock
// stands still: it does not reconnect unless time is moved or a health check is asked for.
class cDbCtrlIOFixture : public testing::Test {
 protected:
  // ---- the wire
  void Serve() { m_server = std::make_unique<cRecordingServer>(&m_far, "data"); }
  void Start(const std::string& driver) { m_io = std::make_unique<cDbCtrlIO>(&m_near, driver); }
  bool Await(const std::function<bool()>& condition) {
    return PollUntil(m_near, [&] {
      m_far.Poll(0);
      return condition();
    });
  }
  bool AwaitConnection() {
    return Await([&] { return m_io->IsConnected() && !m_server->GetChannels().empty(); });
  }
  // Lets pass whatever is under way; nothing waits for time here.
  void Settle() {
    while (m_near.Poll(0) || m_far.Poll(0) || m_near.Poll(1)) {
    }
  }
  void Connect(const std::string& driver) {
    Serve();
    Start(driver);
    ASSERT_TRUE(AwaitConnection());
    Settle();
  }
  void CutWire() {
    m_server.reset();
    ASSERT_TRUE(Await([&] { return !m_io->IsConnected(); }));
  }
  void Reconnect() {
    Serve();
    m_io->HealthRequest();
    ASSERT_TRUE(AwaitConnection());
    Settle();
  }
  // Fills the output buffer while the service gets no turn.
  void Congest() {
    vorn::cMsg bulk(0x50000);
    bulk.Record().AppendDataPar("bulk", vorn::cData(std::string(1 << 20, 'x')));
    while (m_io->Send(bulk) == 1) {
    }
    bulk.Record() = vorn::cRecord();
    while (m_io->Send(bulk) == 1) {
    }
  }
  // Whether a health check is under way that the service, which gets no turn, does not answer.
  bool IsHealthChecked() {
    m_near.Poll(0);
    m_clock->Advance(kPingMs + 1);
    while (m_near.Poll(0)) {
    }
    return !m_io->IsConnected();
  }
  void Answer(unsigned int type, const vorn::cRecord& record = {}) {
    vorn::cMsg msg(type);
    msg.Record() = record;
    ASSERT_EQ(m_server->GetChannels().front()->Send(msg), 1);
    Settle();
  }

  // ---- what was stored and what arrived
  bool Store(const std::string& meterID) { return m_io->StoreMeterRec(Reading(meterID)); }
  void StoreMany(unsigned int count) {
    const cTraceLevel quiet("UnitTAV", 0);
    for (unsigned int i = 1; i <= count; ++i) Store(std::to_string(i));
  }
  // One text a message: "51009 4711", "51038 text=...", otherwise its type and its parameters.
  std::vector<std::string> Received() {
    Settle();
    std::vector<std::string> texts;
    for (const vorn::cMsg& msg : m_server->messages) {
      std::string text = vorn::FormatString("%x", msg.GetType());
      if (msg.GetType() == 0x51009)
        for (auto par = msg.Record().GetPar("meter-record"); par.IsValid(); par = par.NextSame()) {
          vorn::cRecord reading;
          par.GetRecord(reading);
          text += " " + reading.GetTextPar("meterID");
        }
      else
        for (const std::string& par : Parameters(msg.Record())) text += " " + par;
      texts.push_back(text);
    }
    m_server->messages.clear();
    return texts;
  }
  std::vector<std::string> Queued() const {
    std::vector<std::string> texts;
    for (const vorn::cMsg& msg : m_io->m_queue)
      texts.push_back(msg.GetType() == 0x51009 ? msg.Record().GetRecordPar("meter-record").GetTextPar("meterID")
                                               : msg.Record().GetTextPar("text"));
    return texts;
  }
  // The library's lines since the last call.
  std::vector<std::string> Traced() {
    std::vector<std::string> lines;
    for (; m_traced < m_trace.GetLines().size(); ++m_traced)
      if (m_trace.GetLines()[m_traced].rfind("UnitTAV ", 0) == 0)
        lines.push_back(m_trace.GetLines()[m_traced].substr(8));
    return lines;
  }

  cTempFolder m_folder;
  std::shared_ptr<vorn::cManualClock> m_clock = std::make_shared<vorn::cManualClock>();
  cRecordingService m_near{"driver", m_folder.GetPath(), m_clock};
  cRecordingService m_far{"data", m_folder.GetPath()};
  const cTraceLevel m_level{"UnitTAV", 16};
  const cTraceLevel m_frameworkLevel{"UnitVORN", 0};
  cCapturedTrace m_trace;
  std::size_t m_traced = 0;
  std::unique_ptr<cRecordingServer> m_server;
  std::unique_ptr<cDbCtrlIO> m_io;
};

}  // namespace db_ctrl_io_fixture
