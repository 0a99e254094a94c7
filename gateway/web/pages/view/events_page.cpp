// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/view/events_page.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include <gateway/form/config_fields.h>
#include <gateway/form/record_json.h>
#include <gateway/form/time_text.h>
#include <gateway/form/utf8.h>
#include <gateway/web/pages/core/form_parts.h>
#include <gateway/web/pages/core/gateway_clients.h>
#include <gateway/web/pages/core/show.h>
#include <tav/framework/time.h>
#include <tav/service/db_ctrl_protocol.h>

namespace tav::pages {

namespace {

constexpr std::size_t kMaxLine = 120;  // characters
constexpr unsigned int kRows = 1000;   // of one answer
constexpr int kIndent = 2;

// The first characters of a text.
std::string Cut(const std::string& given) {
  const std::string text = form::ToUtf8(given);
  std::string_view rest = text;
  for (std::size_t i = 0; i < kMaxLine && !rest.empty(); ++i)
    if (form::TakeCharacter(rest) == form::kNoCharacter) break;
  return rest.empty() ? text : text.substr(0, text.size() - rest.size()) + "...";
}

cHtml Row(unsigned int utc, const vorn::cRecord& event) {
  const std::string details =
      form::ToJson(event, form::eMask::Secrets).dump(kIndent, ' ', false, form::cJson::error_handler_t::replace);
  return cHtml().Put(
      "<tr><td>{}</td><td><details><summary>{}</summary><pre class=\"code\">{}</pre></details></td></tr>\n",
      TimeElement(utc), EventLine(event), details);
}

}  // namespace

std::string EventLine(const vorn::cRecord& event) {
  std::string line;
  for (vorn::cRecordPar par = event.First(); par.IsValid() && line.size() <= 4 * kMaxLine; par = par.Next()) {
    if (!line.empty()) line += ", ";
    line += par.GetName();
    if (form::IsSecret(par.GetName()))
      line += std::string(" ") + form::kMasked;
    else if (!par.IsRecord() && !par.IsData())
      line += " " + par.GetText().substr(0, 4 * kMaxLine);
  }
  return line.empty() ? "nothing" : Cut(line);
}

void cEventsPage::Start() {
  std::string error;
  if (!ReadRange(error)) return ShowFault(400, error);
  m_spanTo = m_to;
  ReadSpan();
}

bool cEventsPage::ReadRange(std::string& error) {
  const unsigned int now = vorn::cTime::Now().GetSeconds();
  const auto read = [&](const char* name, unsigned int absent, unsigned int& utc) {
    const std::string text = Query(name);
    utc = absent;
    if (text.empty() || form::ParseTime(text, now, utc, error)) return true;
    error = std::string(name) + ": " + error;
    return false;
  };
  // The clock may have been ahead when an event came: without an end all of them are wanted.
  if (!read("from", 0, m_from) || !read("to", UINT32_MAX, m_to)) return false;
  if (m_from > m_to) {
    error = "from: expected a time before that of \"to\"";
    return false;
  }
  std::string expected;
  std::uint64_t before = 0;
  const std::string text = Query("before");
  if (text.empty()) return true;
  if (!form::TakeText(text, UINT32_MAX, before, expected)) {
    error = "before: expected " + expected + ", found \"" + text + "\"";
    return false;
  }
  m_before = before;
  return true;
}

// ---- from the newest span to the oldest

void cEventsPage::ReadSpan() {
  // Where nothing tells the end, the first span reaches back from now.
  const std::int64_t end = std::min<std::int64_t>(m_spanTo, vorn::cTime::Now().GetSeconds());
  m_spanFrom = std::max<std::int64_t>(m_from, std::max<std::int64_t>(0, end - m_span + 1));
  m_last = {};
  Fetch({});
}

void cEventsPage::Fetch(const vorn::cData& after) {
  vorn::cRecord request;
  request.AppendUIntPar(db_ctrl::kFromUtc, static_cast<unsigned int>(m_spanFrom));
  request.AppendUIntPar(db_ctrl::kToUtc, static_cast<unsigned int>(m_spanTo));
  request.AppendUIntPar(db_ctrl::kMaxLen, kRows);
  if (!after.IsEmpty()) request.AppendDataPar(db_ctrl::kAfter, after);
  Ask(Gateway().data, db_ctrl::kProtocol, db_ctrl::eListEvents, request, [this](const vorn::cRecord& answer) {
    for (vorn::cRecordPar par = answer.GetPar(db_ctrl::kRow); par.IsValid(); par = par.NextSame()) {
      vorn::cRecord row;
      if (par.GetRecord(row)) Take(row.GetUIntPar(db_ctrl::kTimestamp), row.GetRecordPar("event"));
    }
    const vorn::cData next = answer.GetDataPar(db_ctrl::kNext);
    next.IsEmpty() ? EndSpan() : Fetch(next);
  });
}

void cEventsPage::Take(unsigned int utc, const vorn::cRecord& event) {
  m_last = {utc, utc == m_last.utc && m_last.utc != 0 ? m_last.number + 1 : 0, event};
  if (utc == m_to && m_last.number >= m_before) return;
  m_found.push_back(m_last);
  if (m_found.size() > kEvents + 1) m_found.pop_front();
}

void cEventsPage::EndSpan() {
  m_events.insert(m_events.begin(), m_found.begin(), m_found.end());
  m_found.clear();
  if (m_events.size() > kEvents || m_spanFrom <= m_from) return Show();
  m_spanTo = m_spanFrom - 1;
  m_span *= kLonger;
  ReadSpan();
}

// ---- what is shown

cHtml cEventsPage::RangeForm() const {
  return cHtml().Put(
      "<form class=\"range\" method=\"get\" action=\"/events\">\n{}{}"
      "<div class=\"actions\"><button>Show</button></div></form>\n",
      TextField({"from", "From", Query("from"), "A time such as 2024-03-01, 2024-03-01 12:00, -24h or today."}),
      TextField({"to", "To", Query("before").empty() ? Query("to") : std::string(), "Empty: up to now."}));
}

void cEventsPage::ShowFault(unsigned int status, const std::string& fault) {
  ShowPage("Events", ErrorNote(fault).Put(RangeForm()), status);
}

// Older than the oldest one that is shown.
std::string cEventsPage::OlderUrl() const {
  const cEvent& oldest = m_events[m_events.size() - kEvents];
  return MakeUrl(
      "/events",
      {{"from", Query("from")}, {"to", std::to_string(oldest.utc)}, {"before", std::to_string(oldest.number)}});
}

void cEventsPage::Show() {
  cHtml rows;
  const std::size_t shown = std::min(m_events.size(), kEvents);
  for (std::size_t i = 0; i < shown; ++i) {
    const cEvent& event = m_events[m_events.size() - 1 - i];
    rows.Put(Row(event.utc, event.record));
  }
  cHtml body = RangeForm();
  if (rows.IsEmpty())
    body.Put("<p class=\"empty\">No event is stored in that time.</p>\n");
  else
    body.Put(Table({"Time", "Event"}, rows));
  if (m_events.size() > kEvents)
    body.Put("<p class=\"actions\"><a class=\"button\" href=\"{}\" rel=\"next\">Older</a></p>\n", OlderUrl());
  ShowPage("Events", body);
}

}  // namespace tav::pages
