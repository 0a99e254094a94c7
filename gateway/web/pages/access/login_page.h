// SPDX-License-Identifier: Apache-2.0
// The pages before all others: setting the first password, logging in, and logging out.
#pragma once

#include <string>

#include <gateway/web/pages/core/web_page.h>

namespace tav::pages {

class cSetupPage final : public cWebPage {
 public:
  using cWebPage::cWebPage;

 private:
  void Start() override;
  void ShowForm(unsigned int status, const std::string& fault);
  void Take();
};

class cLoginPage final : public cWebPage {
 public:
  using cWebPage::cWebPage;

 private:
  void Start() override;
  void ShowForm(unsigned int status, const std::string& fault);
  void Take();
  // Where the visitor wanted to go: a path of this gateway, "/" for all else.
  std::string Destination() const;
};

class cLogoutPage final : public cWebPage {
 public:
  using cWebPage::cWebPage;

 private:
  void Start() override;
};

}  // namespace tav::pages
