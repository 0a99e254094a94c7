// SPDX-License-Identifier: Apache-2.0
// cRuleWhyPage: which rule names a value, and why the nearest others do not.
#pragma once

#include <string>

#include <gateway/rules/rule_match.h>
#include <gateway/web/pages/core/web_page.h>

namespace tav::pages {

class cRuleWhyPage final : public cWebPage {
 public:
  static constexpr std::size_t kNearest = 5;  // rules that do not fit

  using cWebPage::cWebPage;

 private:
  void Start() override;
  cHtml Form() const;
  cHtml Answer(const rules::cQuery& query);
  // False, and in error what was expected, for what is no value.
  bool ReadQuery(rules::cQuery& query, std::string& error) const;
};

}  // namespace tav::pages
