// SPDX-License-Identifier: Apache-2.0
// cMeterConfigPage: the settings of one meter with its collectors, and what its driver can be asked to do with it. A
// new one may begin as a template has it, with the template's key and collectors.
#pragma once

#include <string>
#include <vector>

#include <gateway/web/pages/config/meter_based_page.h>
#include <tav/config/meter_template.h>

namespace tav::pages {

class cMeterConfigPage final : public cMeterBasedPage {
 public:
  // Seconds that a driver has: as long as the front end waits for a first output, less what passing it on takes.
  static constexpr unsigned int kDriverPatience = 25;

  using cMeterBasedPage::cMeterBasedPage;

 private:
  std::string GetKind() const override { return "meter"; }
  std::string GetName() const override;
  bool IsNew() const override { return Query("id").empty(); }
  std::string GetUrl() const override;
  std::string GetNewUrl() const override;
  std::string GetListUrl() const override;
  void Load() override;
  void Edit(cFieldForm& form) override;
  vorn::cRecord GetRecord() const override;
  std::string FaultOfThing() override;
  void Store() override;
  void Erase() override;
  std::string GetLoss() const override;
  cHtml GetLead() override;
  cHtml GetRest() override;
  void Act(const std::string& action) override;

  void LoadNew();
  bool BeginAsTemplate();
  cHtml Actions() const;
  void SetClock();
  // Shows what the driver has answered.
  void AwaitDriver(unsigned int request, bool sent);

  cMeterConfig m_meter;
  std::vector<cMeterTemplate> m_templates;  // that are offered
};

}  // namespace tav::pages
