// SPDX-License-Identifier: Apache-2.0
// What the tests of clients of services share: a client and a service, and the words to speak of them.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <tav/framework/helper.h>
#include <tests/support/captured_trace.h>
#include <tests/support/parameters.h>
#include <tests/support/scm_world.h>
#include <tests/support/trace_level.h>

// A client and a service on loops of their own, so that a test may leave the service without a turn. The client's clock
// stands still: it does not reconnect unless time is moved or a health check is asked for.
template <typename Proxy>
class cProxyFixture : public testing::Test {
 protected:
  explicit cProxyFixture(const std::string& service) : m_service(service) {}

  // ---- the wire
  void Serve() { m_server = std::make_unique<cRecordingServer>(&m_far, m_service); }
  // more: what the client's constructor takes behind its service.
  template <typename... More>
  void Start(const More&... more) {
    m_io = std::make_unique<Proxy>(&m_near, more...);
  }
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
  template <typename... More>
  void Connect(const More&... more) {
    Serve();
    Start(more...);
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
  // Whether a ping is under way that the service, which gets no turn, does not answer.
  bool IsHealthChecked() {
    m_near.Poll(0);
    m_clock->Advance(kPingMs + 1);
    PollUntilIdle(m_near);
    return !m_io->IsConnected();
  }
  // Whether the client pings when it hears nothing for long.
  bool PingsAnIdleService() {
    for (int look = 0; look < 2; ++look) {  // the first still sees what was heard before
      m_clock->Advance(kIdleMs);
      PollUntilIdle(m_near);
    }
    return IsHealthChecked();
  }
  // The service sends a message of its own.
  void Answer(unsigned int type, const vorn::cRecord& record = {}) {
    vorn::cMsg msg(type);
    msg.Record() = record;
    ASSERT_EQ(m_server->GetChannels().front()->Send(msg), 1);
    Settle();
  }

  // ---- what arrived, and what was said
  // The messages that the service got since the last call.
  std::vector<vorn::cMsg> Messages() {
    Settle();
    return std::exchange(m_server->messages, {});
  }
  // The same, one text a message: "51038 text text=...", its type and its parameters.
  std::vector<std::string> Received() {
    std::vector<std::string> texts;
    for (const vorn::cMsg& msg : Messages()) texts.push_back(Show(msg));
    return texts;
  }
  static std::string Show(const vorn::cMsg& msg) {
    std::string text = vorn::FormatString("%x", msg.GetType());
    for (const std::string& par : Parameters(msg.Record())) text += " " + par;
    return text;
  }
  // The library's lines since the last call.
  std::vector<std::string> Traced() {
    std::vector<std::string> lines;
    for (; m_traced < m_trace.GetLines().size(); ++m_traced)
      if (m_trace.GetLines()[m_traced].rfind("UnitTAV ", 0) == 0)
        lines.push_back(m_trace.GetLines()[m_traced].substr(8));
    return lines;
  }

  static constexpr int kPingMs = 5000;
  static constexpr int kIdleMs = 30'000;

  const std::string m_service;
  cTempFolder m_folder;
  std::shared_ptr<vorn::cManualClock> m_clock = std::make_shared<vorn::cManualClock>();
  cRecordingService m_near{"near", m_folder.GetPath(), m_clock};
  cRecordingService m_far{"far", m_folder.GetPath()};
  const cTraceLevel m_level{"UnitTAV", 16};
  const cTraceLevel m_frameworkLevel{"UnitVORN", 0};
  cCapturedTrace m_trace;
  std::size_t m_traced = 0;
  std::unique_ptr<cRecordingServer> m_server;
  std::unique_ptr<Proxy> m_io;
};

// A class derived from a client that overrides every callback: notes each, and does as the client does.
template <typename Proxy>
class cOverriding : public Proxy {
 public:
  using Proxy::Proxy;
  void OnConnect() override {
    calls.push_back("OnConnect");
    Proxy::OnConnect();
  }
  void OnClose() override {
    calls.push_back("OnClose");
    Proxy::OnClose();
  }
  bool DispatchMessage(const vorn::cMsg& msg) override {
    calls.push_back("DispatchMessage");
    return Proxy::DispatchMessage(msg);
  }
  std::string ToString() const override { return "overridden " + Proxy::ToString(); }

  std::vector<std::string> calls;
};
