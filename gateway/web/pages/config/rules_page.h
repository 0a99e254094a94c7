// SPDX-License-Identifier: Apache-2.0
// cRulesPage: all mapping rules, with what is wrong with them.
#pragma once

#include <string>

#include <gateway/web/pages/config/finding_list.h>
#include <gateway/web/pages/core/web_page.h>
#include <tav/obis/obis_map.h>

namespace tav::pages {

class cRulesPage final : public cWebPage {
 public:
  using cWebPage::cWebPage;

 private:
  void Start() override;
  cHtml Tools() const;
  cHtml Rules(const cObisMap& map, const Findings& findings) const;
};

// The note of a page whose rules may have changed since they were last heard of; nothing while the service is there.
cHtml StaleRulesNote(bool loaded);

}  // namespace tav::pages
