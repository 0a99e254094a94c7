// SPDX-License-Identifier: Apache-2.0
// cRulePage: one mapping rule, to look at, change, make and delete. What the change would do to the map is judged
// before anything is sent; a rule with an error is not sent at all.
#pragma once

#include <string>

#include <gateway/rules/raw_rule.h>
#include <gateway/web/pages/config/finding_list.h>
#include <gateway/web/pages/core/web_page.h>
#include <tav/obis/obis_map.h>

namespace tav::pages {

class cRulePage final : public cWebPage {
 public:
  using cWebPage::cWebPage;

 private:
  // The rule as it was typed: its ID may be no number.
  struct cTyped {
    std::string id;
    std::string name;
    std::string obis;
    std::string map;
  };

  void Start() override;
  // What was typed stays.
  void OnUnanswered(unsigned int status, const std::string& text) override { Show(status, text); }
  void Take();
  void Save(const rules::cRawRule& rule);
  void Delete();
  // What is wrong with the typed rule beside what the linter finds; empty when nothing is.
  std::string FaultOf(rules::cRawRule& rule) const;
  const cObisMapEntry* Find(const std::string& id);
  void Show(unsigned int status, const std::string& fault);
  cHtml Form() const;
  cHtml Verdicts();

  std::string m_original;  // the ID of the rule that is changed; empty: a new one
  cTyped m_typed;
};

// Reads id, name, obis and map; false, and in error what was expected, for an ID that is no number.
bool ReadRawRule(const std::string& id, const std::string& name, const std::string& obis, const std::string& map,
                 rules::cRawRule& rule, std::string& error);

}  // namespace tav::pages
