// SPDX-License-Identifier: Apache-2.0
// The lists of configured things, each row with a link to its thing.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <gateway/web/pages/core/web_page.h>

namespace tav::pages {

class cListPage : public cWebPage {
 public:
  using cWebPage::cWebPage;

 protected:
  // newPath: where one is created.
  void ShowList(const std::string& title, const cHtml& table, const char* newPath, const char* newText);
};

class cInterfacesPage final : public cListPage {
 public:
  using cListPage::cListPage;

 private:
  void Start() override;
};

class cMeterConfigsPage final : public cListPage {
 public:
  using cListPage::cListPage;

 private:
  void Start() override;
};

class cPushTargetsPage final : public cListPage {
 public:
  using cListPage::cListPage;

 private:
  void Start() override;
};

class cTemplatesPage final : public cListPage {
 public:
  using cListPage::cListPage;

 private:
  void Start() override;
};

}  // namespace tav::pages
