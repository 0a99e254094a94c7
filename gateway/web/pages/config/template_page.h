// SPDX-License-Identifier: Apache-2.0
// cTemplatePage: a preset for new meters: its own fields, those of its meter and of its push target. The collectors of
// its meter are shown and stay as they are.
#pragma once

#include <string>

#include <gateway/web/pages/config/edit_page.h>
#include <tav/config/meter_template.h>

namespace tav::pages {

class cTemplatePage final : public cEditPage {
 public:
  using cEditPage::cEditPage;

 private:
  std::string GetKind() const override { return "template"; }
  std::string GetName() const override { return IsNew() ? m_template.name : Query("name"); }
  bool IsNew() const override { return Query("name").empty(); }
  std::string GetUrl() const override;
  std::string GetNewUrl() const override;
  std::string GetListUrl() const override;
  void Load() override;
  void Edit(cFieldForm& form) override;
  vorn::cRecord GetRecord() const override { return m_template.ToRecord(); }
  std::string FaultOfThing() override;
  void Store() override;
  void Erase() override;
  cHtml GetRest() override;

  cMeterTemplate m_template;
};

}  // namespace tav::pages
