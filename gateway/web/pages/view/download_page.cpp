// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/view/download_page.h>

#include <gateway/form/time_text.h>
#include <tav/framework/time.h>

namespace tav::pages {

bool ReadSelection(const cHttpRequest& query, cDbCtrlRequest& request, std::string& error) {
  request.m_meterID = query.GetFromQueryString("meter");
  request.m_profile = query.GetFromQueryString("profile");
  request.m_maxLen = 0;
  request.AddObisID(query.GetFromQueryString("obis"));
  if (request.m_meterID.empty()) {
    error = "meter: expected the identifier of a meter";
    return false;
  }
  const unsigned int now = vorn::cTime::Now().GetSeconds();
  const auto read = [&](const char* name, unsigned int& utc) {
    const std::string text = query.GetFromQueryString(name);
    if (text.empty() || form::ParseTime(text, now, utc, error)) return true;
    error = std::string(name) + ": " + error;
    return false;
  };
  if (!read("from", request.m_fromUTC) || !read("to", request.m_toUTC)) return false;
  if (request.m_fromUTC > request.m_toUTC) error = "from: the range begins behind its end";
  return error.empty();
}

void cDownloadPage::Start() {
  cDbCtrlRequest request;
  std::string error;
  m_export = MakeValueExport(Format());
  if (m_export == nullptr) return ShowError(400, "format: expected csv or json");
  if (!ReadSelection(GetRequest(), request, error)) return ShowError(400, error);
  m_gathered = m_export->Begin();
  ReadStoredValues(
      request, [this](const vorn::cRecord& row) { m_gathered += m_export->Row(row); },
      [this](Go go) { Pass(std::move(go)); },
      [this] {
        m_gathered += m_export->End();
        Pass({});
        if (!IsFinished()) Close();
      });
}

void cDownloadPage::Pass(Go go) {
  if (!m_begun) {
    m_begun = true;
    if (IsFile()) AddHeader("Content-Disposition: attachment; filename=\"values." + Format() + "\"");
    BeginAnswer(m_export->ContentType());
    ++m_waiting;
  }
  m_go = std::move(go);
  if (!m_gathered.empty()) {
    ++m_waiting;
    if (!Put(std::exchange(m_gathered, {}))) {
      OnGone();
      return Break();
    }
  }
  GoOn();
}

void cDownloadPage::OnPassed() {
  if (m_waiting != 0) --m_waiting;
  GoOn();
}

void cDownloadPage::GoOn() {
  if (m_waiting != 0 || !m_go) return;
  const Go go = std::exchange(m_go, {});
  go();
}

}  // namespace tav::pages
