// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/config/collector_page.h>

#include <algorithm>

#include <gateway/web/pages/config/config_urls.h>
#include <gateway/web/pages/core/gateway_clients.h>
#include <tav/service/db_ctrl_protocol.h>

namespace tav::pages {

std::string cCollectorPage::GetUrl() const { return CollectorUrl(m_meter, GetName()); }
std::string cCollectorPage::GetNewUrl() const { return CollectorUrl(m_meter, ""); }
std::string cCollectorPage::GetListUrl() const { return MeterConfigUrl(m_meter); }

void cCollectorPage::Load() {
  m_collector.activation = true;  // a new one is meant to log
  FindMeter({Query("meter"), Query("medium"), Query("mfct")}, eFit::Meant, [this](const cMeterConfig* meter) {
    if (meter == nullptr) return ShowError(404, "There is no meter \"" + Query("meter") + "\".");
    m_meter = *meter;
    const std::string addr = IsNew() ? Posted("addr") : Query("addr");
    const auto found = std::find_if(m_meter.collectors.begin(), m_meter.collectors.end(),
                                    [&](const cCollectorConfig& each) { return each.addr == addr; });
    if (found != m_meter.collectors.end() && !IsNew()) m_collector = *found;
    Loaded(found != m_meter.collectors.end());
  });
}

void cCollectorPage::Edit(cFieldForm& form) {
  const cCollectorConfig before = m_collector;
  if (IsNew())
    form.Edit(m_collector, form::kCollectorFields, {});
  else
    form.Edit(m_collector, form::kCollectorFields, {.fixed = {"addr"}});
  FollowTarget(before);
}

// A push target is named twice, by number and name: who has changed one of them means that target.
void cCollectorPage::FollowTarget(const cCollectorConfig& before) {
  const bool isNumberNew = m_collector.pushTargetIdx != before.pushTargetIdx;
  const bool isNameNew = m_collector.pushTargetName != before.pushTargetName;
  if (isNumberNew && !isNameNew) m_collector.pushTargetName.clear();
  if (isNameNew && !isNumberNew) m_collector.pushTargetIdx = 0;
}

std::string cCollectorPage::FaultOfThing() {
  return m_collector.IsValid() ? std::string() : "a collector needs an address, an event type and OBIS identifiers";
}

cCollectorConfig& cCollectorPage::InMeter() {
  for (cCollectorConfig& each : m_meter.collectors)
    if (each.addr == m_collector.addr) return each;
  return m_meter.collectors.emplace_back();
}

void cCollectorPage::StoreMeter() { AwaitChange(db_ctrl::eSetMeter, Gateway().data.SetMeter(Id(), m_meter)); }

void cCollectorPage::Store() {
  InMeter() = m_collector;
  StoreMeter();
}

void cCollectorPage::Erase() {
  InMeter().shouldRemoved = true;
  StoreMeter();
}

std::string cCollectorPage::GetLoss() const { return "It logs nothing any more."; }

cHtml cCollectorPage::GetLead() {
  return cHtml().Put("<p>Of meter <a href=\"{}\">{}</a></p>\n", MeterConfigUrl(m_meter), m_meter.meterID);
}

cHtml cCollectorPage::GetRest() { return GetLead(); }

}  // namespace tav::pages
