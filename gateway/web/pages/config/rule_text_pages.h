// SPDX-License-Identifier: Apache-2.0
// The mapping rules for programs: what is wrong with a rule that is not stored yet, as lines of text, and all rules as
// TOML.
#pragma once

#include <gateway/web/pages/core/web_page.h>

namespace tav::pages {

// A line "error: ..." or "warning: ..." a finding; no line when nothing is wrong.
class cRuleLintPage final : public cWebPage {
 public:
  using cWebPage::cWebPage;

 private:
  void Start() override;
};

class cRulesDownloadPage final : public cWebPage {
 public:
  using cWebPage::cWebPage;

 private:
  void Start() override;
};

}  // namespace tav::pages
