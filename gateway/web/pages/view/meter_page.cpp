// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/view/meter_page.h>

#include <algorithm>

#include <gateway/web/pages/core/gateway_clients.h>
#include <gateway/web/pages/core/live.h>
#include <gateway/web/pages/view/overview_page.h>
#include <tav/framework/time.h>
#include <tav/record/meter_tav.h>
#include <tav/service/db_ctrl_protocol.h>

namespace tav::pages {

namespace {

constexpr const char* kFromByDefault = "-24h";
constexpr const char* kToByDefault = "now";

cHtml Fact(const char* name, const std::string& text) {
  if (text.empty()) return {};
  return cHtml().Put("<dt>{}</dt><dd>{}</dd>\n", std::string_view(name), text);
}

cHtml Option(const std::string& value, const std::string& text, bool isChosen) {
  if (isChosen) return cHtml().Put("<option value=\"{}\" selected>{}</option>", value, text);
  return cHtml().Put("<option value=\"{}\">{}</option>", value, text);
}

}  // namespace

void cMeterPage::Start() {
  cDbCtrlRequest request;
  request.m_meterID = Query("id");
  if (request.m_meterID.empty()) return ShowError(400, "Which meter? The address names none.");
  ReadMeterStatus(
      request,
      [this](const vorn::cRecord& row) {
        cMeterStatus meter;
        if (meter.FromRecord(row) && meter.IsValid()) m_meter = meter;
      },
      [this] { ReadConfig(); });
}

void cMeterPage::ReadConfig() {
  if (!m_meter.IsValid()) return ShowError(404, "No meter \"" + Query("id") + "\" has been read.");
  Await(db_ctrl::kProtocol, db_ctrl::eGetMeter, Gateway().data.GetMeter(Id(), ""), [this](const vorn::cRecord& answer) {
    for (vorn::cRecordPar par = answer.GetPar(db_ctrl::kMeterConfigRecord); par.IsValid(); par = par.NextSame()) {
      vorn::cRecord record;
      cMeterConfig config;
      if (par.GetRecord(record) && config.FromRecord(record) && config.meterID == m_meter.GetMeterID())
        m_config = config;
    }
    cDbCtrlRequest request;
    request.m_meterID = m_meter.GetMeterID();
    request.m_maxLen = 0;
    ReadLastValues(
        request, [this](const vorn::cRecord& row) { m_values.emplace_back(row); }, [this] { Show(); });
  });
}

// ---- what is shown

void cMeterPage::Choose() {
  m_choice = {Query("obis"), Query("profile"), Query("from"), Query("to")};
  if (m_choice.from.empty()) m_choice.from = kFromByDefault;
  if (m_choice.to.empty()) m_choice.to = kToByDefault;
  if (m_choice.obisId.empty())
    for (const cShownValue& value : m_values)
      if (m_choice.obisId.empty() && IsNumber(value.obisId)) m_choice.obisId = value.obisId;
}

// A curve is drawn of numbers.
bool cMeterPage::IsNumber(const std::string& obisId) const {
  const auto at =
      std::find_if(m_values.begin(), m_values.end(), [&](const cShownValue& value) { return value.obisId == obisId; });
  return at != m_values.end() && !at->value.empty() &&
         at->value.find_first_not_of("+-.0123456789") == std::string::npos;
}

void cMeterPage::Show() {
  Choose();
  cHtml body;
  body.Put("{}\n<h2>Last values</h2>\n{}", Facts(), Values());
  if (!m_choice.obisId.empty()) body.Put(Curve());
  ShowPage("Meter " + m_meter.GetMeterID(), body);
}

cHtml cMeterPage::Facts() const {
  cHtml facts;
  facts.Put("<dl class=\"facts\">\n<dt>State</dt><dd>{}</dd>\n",
            StateMark(StateOf(m_meter, vorn::cTime::Now().GetSeconds())));
  facts.Put(Fact("Medium", cMeterTav::MediumToString(m_meter.GetMedium())));
  facts.Put(Fact("Manufacturer", m_meter.GetManufactor()));
  facts.Put(Fact("Address", m_meter.GetAddr()));
  facts.Put(Fact("Interface", m_meter.GetInterfaceName()));
  facts.Put(Fact("Protocol", m_meter.GetInterfaceProtocol()));
  facts.Put(Fact("Encryption", m_meter.GetEncryption()));
  facts.Put("<dt>Last heard</dt><dd>{}</dd>\n", TimeElement(m_meter.GetLastReplyReceived()));
  return facts.Put("</dl>\n");
}

cHtml cMeterPage::Values() {
  cHtml rows;
  for (const cShownValue& value : m_values) {
    const std::string key = LiveKey(value.meterId, value.obisId);
    rows.Put("<tr><th scope=\"row\">{}</th><td><code>{}</code></td>", ObisText(value.obisId, Gateway().obis.map),
             value.obisId);
    rows.Put(
        "<td class=\"num\" data-live=\"{}\">{}</td><td>{}</td><td><time data-live-when=\"{}\">{}</time></td></tr>\n",
        key, value.value, value.unit, key, value.when);
  }
  return cHtml().Put(
      "<div class=\"table-wrap\" tabindex=\"0\"><table><thead><tr><th scope=\"col\">Value</th><th "
      "scope=\"col\">OBIS</th>"
      "<th scope=\"col\" class=\"num\">Reading</th><th scope=\"col\">Unit</th><th "
      "scope=\"col\">Time</th></tr></thead>\n"
      "<tbody>\n{}</tbody></table></div>\n",
      rows);
}

cHtml cMeterPage::ChoiceForm() {
  cHtml values;
  for (const cShownValue& value : m_values)
    if (IsNumber(value.obisId))
      values.Put(Option(value.obisId, ObisText(value.obisId, Gateway().obis.map) + " (" + value.obisId + ")",
                        value.obisId == m_choice.obisId));
  cHtml profiles;
  profiles.Put(Option("", "every reading", m_choice.profile.empty()));
  for (const cCollectorConfig& collector : m_config.collectors)
    profiles.Put(Option(collector.addr, "profile " + collector.addr + " (" + collector.eventType + ")",
                        collector.addr == m_choice.profile));
  cHtml form;
  form.Put(
      "<form class=\"range\" method=\"get\" action=\"/meter\" data-chart-form>"
      "<input type=\"hidden\" name=\"id\" value=\"{}\">\n",
      m_meter.GetMeterID());
  form.Put(
      "<div class=\"field\"><label for=\"obis\">Value</label><select id=\"obis\" name=\"obis\">{}</select></div>\n",
      values);
  form.Put(
      "<div class=\"field\"><label for=\"profile\">Logged as</label>"
      "<select id=\"profile\" name=\"profile\">{}</select></div>\n",
      profiles);
  form.Put(
      "<div class=\"field\"><label for=\"from\">From</label><input id=\"from\" name=\"from\" value=\"{}\"></div>\n"
      "<div class=\"field\"><label for=\"to\">To</label><input id=\"to\" name=\"to\" value=\"{}\">"
      "<p class=\"hint\">A time such as 2024-03-01, 2024-03-01 12:00, -24h, -7d, today or now.</p></div>\n",
      m_choice.from, m_choice.to);
  return form.Put("<div class=\"actions\"><button>Show</button></div></form>\n");
}

cHtml cMeterPage::Downloads() {
  const auto url = [this](std::string_view format, std::string_view obisId) {
    return MakeUrl("/download", {{"meter", m_meter.GetMeterID()},
                                 {"obis", obisId},
                                 {"profile", m_choice.profile},
                                 {"from", m_choice.from},
                                 {"to", m_choice.to},
                                 {"format", format}});
  };
  return cHtml().Put(
      "<p class=\"actions\"><a class=\"button\" href=\"{}\" download>CSV of this value</a> "
      "<a class=\"button\" href=\"{}\" download>JSON of this value</a> "
      "<a class=\"button\" href=\"{}\" download>CSV of all values</a></p>\n",
      url("csv", m_choice.obisId), url("json", m_choice.obisId), url("csv", ""));
}

cHtml cMeterPage::Curve() {
  const std::string url = MakeUrl("/api/series", {{"meter", m_meter.GetMeterID()},
                                                  {"obis", m_choice.obisId},
                                                  {"profile", m_choice.profile},
                                                  {"from", m_choice.from},
                                                  {"to", m_choice.to}});
  cHtml curve;
  curve.Put("<h2 id=\"curve\">Curve</h2>\n{}", ChoiceForm());
  curve.Put(
      "<div class=\"chart\"><canvas id=\"chart\" role=\"img\" aria-label=\"Curve of {}\" data-chart=\"{}\" "
      "data-chart-summary=\"chart-summary\"></canvas></div>\n",
      ObisText(m_choice.obisId, Gateway().obis.map), url);
  curve.Put(
      "<p id=\"chart-summary\" class=\"summary\" aria-live=\"polite\"></p>\n"
      "<noscript><p class=\"note\">The curve needs scripts; the values can be downloaded.</p></noscript>\n{}"
      "<script src=\"/static/chart.js\" defer></script>\n<script src=\"/static/meter_chart.js\" defer></script>\n",
      Downloads());
  return curve;
}

}  // namespace tav::pages
