// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/api/metrics_page.h>

#include <gateway/web/pages/core/gateway_clients.h>

namespace tav::pages {

void cMetricsPage::Start() {
  cDbCtrlRequest all;
  all.m_maxLen = 0;
  ReadLastValues(
      all, [this](const vorn::cRecord& row) { m_values.emplace_back(row); }, [this] { Show(); });
}

void cMetricsPage::Show() {
  cMetrics metrics;
  metrics.BeginGauge("tav_meter_value", "Last value of a meter, in the unit of its label");
  for (const cShownValue& value : m_values)
    metrics.Add({{"meter", value.meterId},
                 {"obis", value.obisId},
                 {"name", ObisText(value.obisId, Gateway().obis.map)},
                 {"unit", value.unit}},
                value.value);
  metrics.BeginGauge("tav_meter_value_timestamp_seconds", "Time of the last value, since 1970 UTC", "seconds");
  for (const cShownValue& value : m_values)
    metrics.Add({{"meter", value.meterId}, {"obis", value.obisId}}, std::to_string(value.utc));
  metrics.BeginGauge("tav_status", "What a process of the gateway tells of itself");
  for (const auto& [name, value] : Gateway().status.GetAllValues()) metrics.Add({{"name", name}}, value);
  ShowText(cMetrics::kContentType, metrics.ToText());
}

}  // namespace tav::pages
