// SPDX-License-Identifier: Apache-2.0
// A gateway with its pages and a visitor: the real services and the real page process over real sockets; the front end
// is played by the test, which sees what every front end would see.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <functional>
#include <iterator>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gateway/service/data/data_server.h>
#include <gateway/tav_gateway/services.h>
#include <gateway/web/pages/page_process.h>
#include <tav/framework/helper.h>
#include <tav/http/http_protocol.h>
#include <tav/record/meter_record.h>
#include <tav/service/db_ctrl_protocol.h>
#include <tests/support/scm_world.h>

namespace tav::pages {

using cFields = std::vector<std::pair<std::string, std::string>>;

// What came back for one request.
struct cAnswer {
  bool isTaken = false;
  bool isFinished = false;
  bool isWhole = false;
  std::string refusal;
  std::string header;
  std::string body;
  unsigned int outputs = 0;

  unsigned int Status() const {
    return header.starts_with("Status: ") ? static_cast<unsigned int>(std::stoi(header.substr(8))) : 0;
  }
  // Of the first line of that name; empty when there is none.
  std::string Header(const std::string& name) const {
    const std::size_t at = ("\r\n" + header).find("\r\n" + name + ": ");
    if (at == std::string::npos) return {};
    const std::size_t begin = at + name.size() + 2;
    return header.substr(begin, header.find("\r\n", begin) - begin);
  }
};

class cPagesWorld : public testing::Test {
 protected:
  static constexpr const char* kPassword = "correct horse";

  void SetUp() override {
    StartGateway();
    StartPages();
  }
  void TearDown() override {
    m_pages.reset();
    m_front.reset();
    m_services.clear();
    m_gateway.reset();
  }

  // ---- the world
  void StartGateway() {
    m_gateway = std::make_unique<gateway::cServiceHost>("gateway", m_folder.GetPath());
    m_options.dir = m_folder.GetPath();
    m_options.durability = data::eDurability::Normal;
    for (const gateway::cServiceKind& kind : gateway::GetServiceKinds()) {
      if (std::string_view(kind.name) == "web") continue;
      std::string error;
      m_services.push_back(kind.make(m_gateway.get(), m_options));
      ASSERT_EQ(m_services.back()->Start(error), gateway::eExitDone) << error;
    }
    m_front = std::make_unique<cRecordingServer>(m_gateway.get(), "web");
    m_front->onMessage = [this](const vorn::cMsg& msg) { Take(msg); };
  }
  void StartPages(std::shared_ptr<const vorn::cClock> clock = nullptr) {
    m_pages.reset();
    m_front->messages.clear();
    m_pages = std::make_unique<cPageProcess>(m_folder.GetPath(), cAccess::cOptions{m_folder.File("accounts.json"), 600},
                                             std::move(clock));
    std::string error;
    ASSERT_TRUE(m_pages->GetAccess().Load(error)) << error;
    ASSERT_TRUE(Await([this] {
      const cGatewayClients& clients = m_pages->GetGateway();
      return !m_front->messages.empty() && clients.data.IsConnected() && clients.obis.loaded &&
             clients.status.m_synced && clients.ui.IsConnected() && clients.time.IsConnected() &&
             clients.gsm.IsConnected();
    }));
  }
  // Ends one of the gateway's services, as when its process has died.
  void EndService(const std::string& name) {
    std::size_t number = 0;
    for (const gateway::cServiceKind& kind : gateway::GetServiceKinds()) {
      if (std::string_view(kind.name) == "web") continue;
      if (kind.name == name) std::next(m_services.begin(), static_cast<std::ptrdiff_t>(number))->reset();
      ++number;
    }
  }
  bool Await(const std::function<bool()>& condition) {
    return PollUntil(*m_pages, [&] {
      while (m_gateway->Poll(0)) {
      }
      return condition();
    });
  }
  // Stores a reading as a driver does; values as identifier, value and unit.
  void Store(const std::string& meterId, unsigned int utc, const std::vector<std::array<std::string, 3>>& values,
             const std::string& medium = "E") {
    cMeterRecord reading("test", "TAV", medium, meterId, "1", "ok", utc, cMeterTav::eTsRtc, vorn::GetOSC());
    reading.SetInterfaceInfo("SIM", "SML", {});
    for (const auto& [obisId, value, unit] : values)
      reading.AddMeasurementEntry(cMeasurementEntry(obisId, value, unit, utc, cMeterTav::eTsRtc));
    vorn::cMsg msg(db_ctrl::eStoreMeterRec);
    msg.Record().AppendRecordPar(db_ctrl::kMeterRecord, reading.ToRecord());
    cRecordingClient driver(m_gateway.get(), "data");
    bool isStored = false;
    driver.onMessage = [&](const vorn::cMsg& answer) { isStored |= answer.GetType() == db_ctrl::eMeterRecStored; };
    ASSERT_TRUE(PollUntil(*m_gateway, [&] { return driver.IsConnected(); }));
    ASSERT_EQ(driver.Send(msg), 1);
    ASSERT_TRUE(PollUntil(*m_gateway, [&] { return isStored; }));
  }

  // A number of the data service, such as "results": those that it holds for somebody.
  std::uint64_t Statistic(const std::string& name) {
    cRecordingClient client(m_gateway.get(), "data");
    if (!PollUntil(*m_gateway, [&] { return client.IsConnected(); })) return UINT64_MAX;
    client.Send(vorn::cMsg(db_ctrl::eGetStatistics));
    if (!PollUntil(*m_gateway, [&] { return !client.messages.empty(); })) return UINT64_MAX;
    for (vorn::cRecordPar par = client.messages[0].Record().GetPar(db_ctrl::kRow); par.IsValid();
         par = par.NextSame()) {
      vorn::cRecord row;
      if (par.GetRecord(row) && row.GetTextPar("name") == name) return row.GetUInt64Par("value");
    }
    return UINT64_MAX;
  }
  // The client of a request has gone.
  void Lose(const vorn::cUuid& id) {
    vorn::cMsg lost(http::eOutputLost);
    lost.SetId(id);
    lost.Record().AppendTextPar(http::kReason, "the client is gone");
    m_front->GetChannels().at(0)->Send(lost);
  }

  // ---- the visitor
  void MakeAccount(const std::string& name = "admin", eRole role = eRole::Admin) {
    std::string error;
    ASSERT_TRUE(m_pages->GetAccess().accounts.Set(name, role, kPassword, error)) << error;
  }
  // Takes the cookie of a login without the form: what the forms do has tests of its own.
  void Enter(eRole role = eRole::Admin) {
    if (m_pages->GetAccess().NeedsSetup()) MakeAccount();
    const cVisitor& visitor = m_pages->GetAccess().logins.Begin(role == eRole::Admin ? "admin" : "viewer", role);
    m_cookie = visitor.sid.ToString();
    m_csrf = visitor.csrfToken;
  }
  cAnswer Get(const std::string& path, const cFields& query = {}) { return Ask(MakeRequest("GET", path, query, {})); }
  // A form with the token that belongs into it.
  cAnswer Post(const std::string& path, cFields fields, const cFields& query = {}) {
    fields.emplace_back("csrf", m_csrf);
    return Ask(MakeRequest("POST", path, query, fields));
  }
  cAnswer Ask(const vorn::cMsg& request) {
    const vorn::cUuid id = Send(request);
    EXPECT_TRUE(Await([&] { return IsOver(m_answers[id]); })) << "no answer; so far: " << m_answers[id].body;
    return m_answers[id];
  }
  vorn::cUuid Send(const vorn::cMsg& request) {
    EXPECT_EQ(m_front->GetChannels().at(0)->Send(request), 1);
    return request.GetId();
  }
  static bool IsOver(const cAnswer& answer) { return answer.isFinished || !answer.refusal.empty(); }

  vorn::cMsg MakeRequest(const std::string& method, const std::string& path, const cFields& query,
                         const cFields& fields) const {
    vorn::cUuid id;
    id.Create();
    vorn::cMsg msg(http::eRequest);
    msg.SetId(id);
    vorn::cRecord& record = msg.Record();
    record.AppendTextPar(http::kServerPort, "8080");
    record.AppendTextPar(http::kTechnologyName, "web");
    record.AppendTextPar(http::kServerProtocol, "HTTP/1.1");
    record.AppendTextPar(http::kRequestMethod, method);
    record.AppendTextPar(http::kRequestScheme, "http");
    record.AppendTextPar(http::kPathInfo, path);
    record.AppendTextPar(http::kRemoteAddr, m_address);
    record.AppendRecordPar(http::kQueryString, Texts(query));
    record.AppendRecordPar(http::kPostData, Texts(fields));
    if (!m_cookie.empty()) {
      vorn::cRecord cookie;
      cookie.AppendTextPar(http::kValue, m_cookie);
      vorn::cRecord cookies;
      cookies.AppendRecordPar("sid", cookie);
      record.AppendRecordPar(http::kCookies, cookies);
    }
    cFields headers = m_headers;
    headers.emplace_back("host", "127.0.0.1:8080");
    record.AppendRecordPar(http::kHeaders, Texts(headers));
    return msg;
  }
  static vorn::cRecord Texts(const cFields& fields) {
    vorn::cRecord record;
    for (const auto& [name, value] : fields) record.AppendTextPar(name, value);
    return record;
  }

  // What a front end does with what a page sends; passes on at once unless a test holds it back.
  void Take(const vorn::cMsg& msg) {
    cAnswer& answer = m_answers[msg.GetId()];
    switch (msg.GetType()) {
      case http::eRequestTaken:
        answer.isTaken = true;
        break;
      case http::eRequestRefused:
        answer.refusal = msg.Record().GetTextPar(http::kReason);
        break;
      case http::eOutput:
        TakeOutput(msg, answer);
        break;
      default:
        break;
    }
  }
  void TakeOutput(const vorn::cMsg& msg, cAnswer& answer) {
    if (msg.Record().GetBoolPar(http::kFinish)) {
      answer.isFinished = true;
      answer.isWhole = msg.Record().GetBoolPar(http::kSuccess);
    }
    if (!msg.Record().GetPar(http::kContent).IsValid()) return;
    ++answer.outputs;
    answer.body += msg.Record().GetTextPar(http::kContent);
    const std::size_t end = answer.header.empty() ? answer.body.find("\r\n\r\n") : std::string::npos;
    if (end != std::string::npos) {
      answer.header = answer.body.substr(0, end + 2);
      answer.body.erase(0, end + 4);
    }
    if (!m_holdsBack) PassOn(msg.GetId());
  }
  void PassOn(const vorn::cUuid& id) {
    vorn::cMsg passed(http::eOutputPassed);
    passed.SetId(id);
    m_front->GetChannels().at(0)->Send(passed);
  }

  cTempFolder m_folder;
  gateway::cOptions m_options;
  std::unique_ptr<gateway::cServiceHost> m_gateway;
  std::list<std::unique_ptr<gateway::cHostedService>> m_services;
  std::unique_ptr<cRecordingServer> m_front;
  std::unique_ptr<cPageProcess> m_pages;
  std::map<vorn::cUuid, cAnswer> m_answers;
  std::string m_address = "127.0.0.1";
  std::string m_cookie;
  std::string m_csrf;
  cFields m_headers;  // of every request, beside host
  bool m_holdsBack = false;
};

}  // namespace tav::pages
