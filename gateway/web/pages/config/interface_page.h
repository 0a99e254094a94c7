// SPDX-License-Identifier: Apache-2.0
// cInterfacePage: one interface of the gateway, with the meters that are read through it.
#pragma once

#include <string>

#include <gateway/web/pages/config/edit_page.h>
#include <tav/config/interface_record.h>

namespace tav::pages {

class cInterfacePage final : public cEditPage {
 public:
  using cEditPage::cEditPage;

 private:
  std::string GetKind() const override { return "interface"; }
  std::string GetName() const override;
  bool IsNew() const override { return Query("name").empty(); }
  std::string GetUrl() const override;
  std::string GetNewUrl() const override;
  std::string GetListUrl() const override;
  void Load() override;
  void Edit(cFieldForm& form) override;
  vorn::cRecord GetRecord() const override { return m_interface.ToRecord(); }
  std::string FaultOfThing() override;
  void Store() override;
  void Erase() override;
  std::string GetLoss() const override;
  cHtml GetRest() override;

  cInterfaceRecord m_interface;
};

}  // namespace tav::pages
