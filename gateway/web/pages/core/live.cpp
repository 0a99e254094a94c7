// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/core/live.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include <gateway/form/json.h>
#include <gateway/form/utf8.h>
#include <gateway/web/pages/core/show.h>
#include <tav/service/db_ctrl_protocol.h>
#include <tav/service/db_ctrl_request.h>

namespace tav::pages {

namespace {

// More than one answer of the service holds is not followed live.
constexpr const char* kMostValues = "10000";
constexpr const char* kSignOfLife = ": all is as it was\n\n";

std::string MakeEvent(const char* kind, const nlohmann::ordered_json& data) {
  return std::string("event: ") + kind + "\ndata: " + form::ToLine(data) + "\n\n";
}

}  // namespace

std::string LiveKey(const std::string& meterId, const std::string& obisId) { return meterId + " " + obisId; }

// ---- listeners

cLive::cListener::cListener(cLive& live, std::function<void(const std::string& events)> tell)
    : m_live(live), m_tell(std::move(tell)) {
  m_live.m_listeners.push_back(this);
  // A new listener is told at once; while nobody listens nothing is asked.
  m_live.m_look.Start(0);
}

cLive::cListener::~cListener() { std::erase(m_live.m_listeners, this); }

cLive::cLive(gateway::cServiceHost* host, cGatewayClients& gateway)
    : m_gateway(gateway), m_look(host, [this] { Look(); }) {}

// ---- looking

void cLive::Look() {
  if (m_listeners.empty()) return;
  m_look.Start(kLookMs);
  TakeStatus();
  m_question.Create();
  cDbCtrlRequest request;
  request.SetMaxLen(kMostValues);
  // While the service is away the listeners hear at least that they are still connected.
  if (!m_gateway.data.GetLastValues(m_question, request)) Tell();
}

bool cLive::DispatchMessage(const vorn::cMsg& msg) {
  if (!m_question.IsValid() || msg.GetId() != m_question) return false;
  if (msg.GetType() == db_ctrl::eLastValues) TakeValues(msg.Record());
  m_question.Clear();
  Tell();
  return true;
}

void cLive::Note(Shown& all, const std::string& key, const std::string& text,
                 const std::function<std::string()>& event) {
  cShown& shown = all[key];
  if (shown.text == text && !shown.event.empty()) return;
  shown = {text, event()};
  m_news += shown.event;
}

void cLive::TakeValues(const vorn::cRecord& answer) {
  const vorn::cUuid handle = answer.GetUuidPar(db_ctrl::kHandle);
  if (handle.IsValid()) m_gateway.data.CloseResult(m_question, handle);
  for (vorn::cRecordPar par = answer.GetPar(db_ctrl::kRow); par.IsValid(); par = par.NextSame()) {
    vorn::cRecord row;
    par.GetRecord(row);
    const cShownValue value(row);
    const std::string key = LiveKey(value.meterId, value.obisId);
    Note(m_values, key, value.value + value.when, [&] {
      return MakeEvent("value", {{"key", key}, {"text", value.value}, {"when", value.when}, {"state", "ok"}});
    });
  }
}

void cLive::TakeStatus() {
  const auto& values = m_gateway.status.GetAllValues();
  const auto event = [](const std::string& name, const std::string& value) {
    return MakeEvent("status", {{"key", form::ToUtf8(name)}, {"text", form::ToUtf8(value)}});
  };
  for (const auto& each : values)
    Note(m_status, each.first, each.second, [&] { return event(each.first, each.second); });
  for (auto at = m_status.begin(); at != m_status.end();)
    if (values.Contains(at->first)) {
      ++at;
    } else {
      m_news += event(at->first, "");
      at = m_status.erase(at);
    }
}

// ---- telling

std::string cLive::Everything() const {
  std::string events;
  for (const Shown* all : {&m_values, &m_status})
    for (const auto& [key, shown] : *all) events += shown.event;
  return events;
}

void cLive::Tell() {
  const std::string news = std::exchange(m_news, {});
  m_silent = news.empty() ? m_silent + 1 : 0;
  const std::string& said = m_silent >= kSilentLooks ? kSignOfLife : news;
  if (m_silent >= kSilentLooks) m_silent = 0;
  // A listener may end while he is told.
  for (cListener* const listener : std::vector<cListener*>(m_listeners)) {
    if (std::find(m_listeners.begin(), m_listeners.end(), listener) == m_listeners.end()) continue;
    const std::string events = std::exchange(listener->m_isNew, false) ? Everything() + kSignOfLife : said;
    if (!events.empty()) listener->m_tell(events);
  }
}

}  // namespace tav::pages
