// SPDX-License-Identifier: Apache-2.0
// cPushTargetPage: one server to which the gateway pushes values. Its number tells it from others; the name may change.
#pragma once

#include <string>

#include <gateway/web/pages/config/edit_page.h>
#include <tav/config/push_target.h>

namespace tav::pages {

class cPushTargetPage final : public cEditPage {
 public:
  using cEditPage::cEditPage;

 private:
  std::string GetKind() const override { return "push target"; }
  std::string GetName() const override;
  bool IsNew() const override { return Query("idx").empty(); }
  std::string GetUrl() const override;
  std::string GetNewUrl() const override;
  std::string GetListUrl() const override;
  void Load() override;
  void Edit(cFieldForm& form) override;
  vorn::cRecord GetRecord() const override { return m_target.ToRecord(); }
  std::string FaultOfThing() override;
  void Store() override;
  void Erase() override;
  std::string FaultOfNew() const override;
  void TakeChange(const vorn::cRecord& answer) override;

  cPushTarget m_target;
  std::string m_name;  // that it is stored under
};

}  // namespace tav::pages
