// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/view/series_page.h>

#include <nlohmann/json.hpp>

#include <gateway/form/json.h>
#include <gateway/web/pages/core/gateway_clients.h>
#include <gateway/web/pages/core/show.h>
#include <gateway/web/pages/view/download_page.h>

namespace tav::pages {

void cSeriesPage::Start() {
  cDbCtrlRequest request;
  std::string error;
  m_obisId = Query("obis");
  if (m_obisId.empty()) return ShowError(400, "obis: expected an OBIS identifier");
  if (!ReadSelection(GetRequest(), request, error)) return ShowError(400, error);
  ReadStoredValues(
      request,
      [this](const vorn::cRecord& row) {
        const cShownValue value(row);
        m_unit = value.unit;
        m_curve.Add(value.utc, value.value);
      },
      [](const Go& go) { go(); }, [this] { Show(); });
}

void cSeriesPage::Show() {
  const auto text = [](const std::string& of) { return form::ToLine(nlohmann::ordered_json(of)); };
  ShowText("application/json", "{\"label\":" + text(ObisText(m_obisId, Gateway().obis.map)) +
                                   ",\"obis\":" + text(m_obisId) + ",\"unit\":" + text(m_unit) +
                                   ",\"points\":" + m_curve.ToJson() + "}\n");
}

}  // namespace tav::pages
