// SPDX-License-Identifier: Apache-2.0
// What the tests of sessions and pages share: a page process and a web front end that hands it requests.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <tav/http/http_io.h>
#include <tav/http/http_page.h>
#include <tav/http/http_protocol.h>
#include <tav/http/http_session.h>
#include <tests/support/proxy_fixture.h>

// A page that writes down what it is given, and does what a test tells it.
class cNotingPage : public tav::cHttpPage {
 public:
  using cHttpPage::cHttpPage;
  bool Process(tav::cHttpRequest& request) override {
    processed.push_back(request.GetRequestId());
    if (onProcess) onProcess(request);
    return processResult;
  }
  bool OnMessage(vorn::cMsg& msg) override {
    messages.push_back(msg);
    const bool more = wantsMore;
    const auto call = onMessage;  // copies: what is called may end this object
    if (call) call();
    return more;
  }

  bool processResult = true;
  bool wantsMore = true;
  std::vector<vorn::cUuid> processed;
  std::vector<vorn::cMsg> messages;
  std::function<void(tav::cHttpRequest&)> onProcess;
  std::function<void()> onMessage;
};

class cPageFixture : public cProxyFixture<tav::cHttpIO> {
 protected:
  cPageFixture() : cProxyFixture("web") {}
  ~cPageFixture() override { tav::HttpSessions.clear(); }

  void SetUp() override { Connect(std::string("web"), static_cast<vorn::cMsg*>(nullptr)); }

  static vorn::cUuid Fresh() {
    vorn::cUuid id;
    id.Create();
    return id;
  }
  // The one whose first hexadecimal digit is that.
  static vorn::cUuid Uuid(char digit) {
    vorn::cUuid id;
    EXPECT_TRUE(id.FromString(std::string(1, digit) + "0000000-0000-4000-8000-000000000001"));
    return id;
  }
  // A request, as it comes to the page process over the channel.
  tav::cHttpRequest Request(const std::string& serverProtocol = "HTTP/1.1", const vorn::cUuid& id = Fresh()) {
    vorn::cMsg msg(tav::http::eRequest);
    msg.SetId(id);
    msg.Record().AppendTextPar(tav::http::kTechnologyName, "web");
    msg.Record().AppendTextPar(tav::http::kServerProtocol, serverProtocol);
    const std::size_t before = m_near.messages.size();
    EXPECT_EQ(m_server->GetChannels().front()->Send(msg), 1);
    EXPECT_TRUE(Await([&] { return m_near.messages.size() > before; }));
    vorn::cMsg arrived = m_near.messages.back();
    m_near.messages.clear();
    return tav::cHttpRequest(arrived);
  }
  // The contents of the outputs that the front end got since the last call, put together.
  std::string Output() {
    std::string text;
    for (const vorn::cMsg& msg : Messages())
      if (msg.GetType() == tav::http::eOutput) text += msg.Record().GetTextPar(tav::http::kContent);
    return text;
  }
  // What timers posted to the page process since the last call, when so much time has passed.
  std::vector<vorn::cMsg> PostedAfter(std::int64_t milliseconds) {
    m_clock->Advance(milliseconds);
    PollUntilIdle(m_near);
    return std::exchange(m_near.messages, {});
  }
};
