// SPDX-License-Identifier: Apache-2.0
// cCollectorPage: one collector of a meter. It lives in its meter's record: a change reads that, changes the collector
// in it, and stores the whole again.
#pragma once

#include <string>

#include <gateway/web/pages/config/meter_based_page.h>

namespace tav::pages {

class cCollectorPage final : public cMeterBasedPage {
 public:
  using cMeterBasedPage::cMeterBasedPage;

 private:
  std::string GetKind() const override { return "collector"; }
  std::string GetName() const override { return IsNew() ? m_collector.addr : Query("addr"); }
  bool IsNew() const override { return Query("addr").empty(); }
  std::string GetUrl() const override;
  std::string GetNewUrl() const override;
  std::string GetListUrl() const override;
  void Load() override;
  void Edit(cFieldForm& form) override;
  vorn::cRecord GetRecord() const override { return m_collector.ToRecord(); }
  std::string FaultOfThing() override;
  void Store() override;
  void Erase() override;
  std::string GetLoss() const override;
  cHtml GetLead() override;
  cHtml GetRest() override;

  // The collector's place in its meter; a new one gets one.
  cCollectorConfig& InMeter();
  void StoreMeter();
  void FollowTarget(const cCollectorConfig& before);

  cMeterConfig m_meter;
  cCollectorConfig m_collector;
};

}  // namespace tav::pages
