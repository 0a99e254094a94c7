// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/view/overview_page.h>

#include <algorithm>

#include <gateway/web/pages/core/gateway_clients.h>
#include <gateway/web/pages/core/live.h>
#include <tav/framework/time.h>
#include <tav/record/meter_tav.h>

namespace tav::pages {

namespace {

// A meter that has said nothing for so long is looked at with doubt.
constexpr unsigned int kSilentSeconds = 3600;

// What tells most about a meter, whatever channel it is of: energy taken, energy given, power, volume, heat.
constexpr std::string_view kTelling[] = {":1.8.0", ":2.8.0", ":16.7.0", ":1.7.0", ":1.0.0", ":2.0.0", ":3.0.0"};

std::size_t RankOf(const std::string& obisId) {
  const std::size_t rank = static_cast<std::size_t>(
      std::find_if(std::begin(kTelling), std::end(kTelling),
                   [&](std::string_view end) { return obisId.substr(0, obisId.find('*')).ends_with(end); }) -
      std::begin(kTelling));
  return rank;
}

}  // namespace

cMeterState StateOf(const cMeterStatus& meter, unsigned int now) {
  const unsigned int heard = meter.GetLastReplyReceived();
  if (heard < now && now - heard > kSilentSeconds) return {"silent", "warn"};
  const std::string& status = meter.GetStatus();
  if (status.empty() || status == "ok" || status == "OK") return {"ok", "ok"};
  return {status, "bad"};
}

cHtml StateMark(const cMeterState& state) {
  if (state.mark == "ok") return cHtml().Put("<span class=\"state ok\">{}</span>", state.word);
  if (state.mark == "warn") return cHtml().Put("<span class=\"state warn\">{}</span>", state.word);
  return cHtml().Put("<span class=\"state bad\">{}</span>", state.word);
}

void cOverviewPage::Start() {
  cDbCtrlRequest everyMeter;
  everyMeter.m_maxLen = 0;
  ReadMeterStatus(
      everyMeter,
      [this](const vorn::cRecord& row) {
        cMeterStatus meter;
        if (meter.FromRecord(row) && meter.IsValid()) m_meters.push_back(meter);
      },
      [this] {
        cDbCtrlRequest all;
        all.m_maxLen = 0;
        ReadLastValues(
            all,
            [this](const vorn::cRecord& row) {
              cShownValue value(row);
              m_values[value.meterId].push_back(std::move(value));
            },
            [this] { Show(); });
      });
}

void cOverviewPage::Show() {
  cHtml body;
  if (m_meters.empty()) {
    body.Put(
        "<p class=\"empty\">No meter has been read yet. A driver reads the meters of an <a "
        "href=\"/interfaces\">interface</a>; its first reading appears here.</p>\n");
    return ShowPage("Meters", body);
  }
  body.Put("<div class=\"cards\">\n");
  for (const cMeterStatus& meter : m_meters) body.Put(Card(meter));
  body.Put("</div>\n");
  ShowPage("Meters", body);
}

cHtml cOverviewPage::Reading(const cShownValue& value) {
  return cHtml().Put(
      "<div class=\"reading\"><dt>{}</dt><dd><span class=\"value\" data-live=\"{}\">{}</span> <span "
      "class=\"unit\">{}</span></dd></div>\n",
      ObisText(value.obisId, Gateway().obis.map), LiveKey(value.meterId, value.obisId), value.value, value.unit);
}

cHtml cOverviewPage::Card(const cMeterStatus& meter) {
  std::vector<cShownValue>& values = m_values[meter.GetMeterID()];
  std::stable_sort(values.begin(), values.end(),
                   [](const cShownValue& a, const cShownValue& b) { return RankOf(a.obisId) < RankOf(b.obisId); });
  cHtml readings;
  for (std::size_t i = 0; i < std::min(values.size(), kValuesOfMeter); ++i) readings.Put(Reading(values[i]));
  const std::string url = MakeUrl("/meter", {{"id", meter.GetMeterID()}});
  cHtml card;
  card.Put("<section class=\"card\"><h2><a href=\"{}\">{}</a></h2>\n<p class=\"what\">{} {}</p>\n", url,
           meter.GetMeterID(), cMeterTav::MediumToString(meter.GetMedium()),
           StateMark(StateOf(meter, vorn::cTime::Now().GetSeconds())));
  card.Put("<dl class=\"readings\">\n{}</dl>\n", readings);
  card.Put("<p class=\"when\">last heard {}</p></section>\n",
           values.empty() ? TimeElement(meter.GetLastReplyReceived())
                          : cHtml().Put("<time data-live-when=\"{}\">{}</time>",
                                        LiveKey(meter.GetMeterID(), values.front().obisId), values.front().when));
  return card;
}

}  // namespace tav::pages
