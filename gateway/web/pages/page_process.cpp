// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/page_process.h>

#include <tav/framework/trace.h>
#include <tav/http/http_dispatch.h>
#include <tav/http/http_protocol.h>
#include <tav/service/db_ctrl_protocol.h>

namespace tav::pages {

namespace {

constexpr int kWarning = 4;

vorn::cUnit* UnitPages() {
  static vorn::cUnit* const unit = vorn::cUnit::Find("UnitPages");
  return unit;
}

// All paths, and to be told what becomes of what is put out.
vorn::cMsg MakeRegistration() {
  vorn::cMsg msg(http::eRegister);
  msg.Record().AppendBoolPar(http::kFlow, true);
  return msg;
}

}  // namespace

cPageProcess::cFrontEnd::cFrontEnd(vorn::cScmService* service, std::function<void()> onClose)
    : cHttpIO(service, std::string(http::kProtocol.GetService()), nullptr), m_onClose(std::move(onClose)) {}

void cPageProcess::cFrontEnd::OnConnect() {
  cHttpIO::OnConnect();
  Send(MakeRegistration());
}

void cPageProcess::cFrontEnd::OnClose() {
  cHttpIO::OnClose();
  m_onClose();
}

cPageProcess::cPageProcess(const std::string& directory, const cAccess::cOptions& options,
                           std::shared_ptr<const vorn::cClock> clock)
    : cServiceHost("tav-pages", directory, std::move(clock)),
      m_gateway(this),
      m_access(this, options, [this](const vorn::cUuid& sid) { EndLogin(sid); }),
      m_live(this, m_gateway),
      m_gate(this, m_gateway, m_access, m_live),
      m_frontEnd(this, [this] { EndRuns(); }),
      m_publisher(this),
      m_publish(this, [this] { Publish(); }) {
  m_publisher.AddSource("pages", [this](gateway::cStatusValues& values) {
    values.Set("requests", std::to_string(m_requests));
    values.Set("requests-refused", std::to_string(m_refused));
    values.Set("logins", std::to_string(m_access.logins.Count()));
  });
  m_publish.Start(0);
}

cPageProcess::~cPageProcess() {
  for (const auto& [sid, run] : m_runs) HttpSessions.Remove(sid);
}

bool cPageProcess::DispatchMessage(const vorn::cMsg& msg) {
  const bool handled = Dispatch(msg);
  Sweep();
  return handled;
}

bool cPageProcess::Dispatch(const vorn::cMsg& msg) {
  vorn::cMsg copy = msg;
  switch (msg.GetType()) {
    case http::eRequest:
      StartRun(copy);
      return true;
    case http::eSessionTimeout:
      m_access.logins.End(msg.Record().GetUuidPar(http::kSid));
      return true;
    case http::ePageTimeout:
      return httpDisptachBySID(copy);
    case http::eRegisterFailed:
      vorn::Trace(UnitPages(), kWarning,
                  "the web front end does not take the pages: ", msg.Record().GetTextPar(http::kReason));
      return true;
    default:
      if (cServiceHost::DispatchMessage(msg) || m_live.DispatchMessage(msg) || httpDisptachByMsgID(copy)) return true;
      GiveBack(msg);
      return true;
  }
}

void cPageProcess::StartRun(vorn::cMsg& msg) {
  cHttpRequest request(msg);
  ++m_requests;
  if (m_runs.size() >= kMaxRuns) {
    ++m_refused;
    vorn::cMsg refusal(http::eRequestRefused);
    refusal.SetId(msg.GetId());
    refusal.Record().AppendTextPar(http::kReason, "too many requests at a time");
    if (const auto& channel = msg.GetReplyChannel()) channel->Send(refusal);
    return;
  }
  vorn::cUuid sid;
  sid.Create();
  cRun& run = m_runs[sid];
  run.session = std::make_unique<cHttpSession>(sid, this, 0);
  run.page = m_gate.Admit(request);
  HttpSessions.Set(sid, run.session.get());
  run.session->Run(request, run.page.get());
}

// A result whose page has gone before it came.
void cPageProcess::GiveBack(const vorn::cMsg& msg) {
  const bool hasResult = msg.GetType() == db_ctrl::eStoredValues || msg.GetType() == db_ctrl::eLastValues ||
                         msg.GetType() == db_ctrl::eMeterStatuses;
  const vorn::cUuid handle = hasResult ? msg.Record().GetUuidPar(db_ctrl::kHandle) : vorn::cUuid();
  if (handle.IsValid()) m_gateway.data.CloseResult(msg.GetId(), handle);
}

// What a login has open ends with it.
void cPageProcess::EndLogin(const vorn::cUuid& sid) {
  for (const auto& [own, run] : m_runs)
    if (run.page->GetVisitor().sid == sid) run.page->Abandon();
}

void cPageProcess::EndRuns() {
  for (const auto& [own, run] : m_runs) run.page->Abandon();
  Sweep();
}

void cPageProcess::Publish() {
  m_publisher.Publish();
  m_publish.Start(gateway::cStatusPublisher::kIntervalMs, gateway::cStatusPublisher::kSlackMs);
}

void cPageProcess::Sweep() {
  for (auto at = m_runs.begin(); at != m_runs.end();)
    if (at->second.page->IsFinished()) {
      HttpSessions.Remove(at->first);
      at = m_runs.erase(at);
    } else {
      ++at;
    }
}

}  // namespace tav::pages
