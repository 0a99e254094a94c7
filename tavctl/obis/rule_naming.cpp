// SPDX-License-Identifier: Apache-2.0
#include <tavctl/obis/rule_naming.h>

#include <gateway/rules/rule_match.h>
#include <tavctl/terminal_text.h>

namespace tav::ctl {

namespace {

// Identifiers with another C or D are about something else.
constexpr unsigned int kNear = 16;

std::string Described(const rules::cVerdict& verdict, const char* before) {
  return "rule " + std::to_string(verdict.rule->GetID()) + " (" + verdict.rule->ToString() + ") " + before +
         verdict.text;
}

}  // namespace

const sml::cObisNaming& cRuleNaming::Ask(const std::string& obis) {
  const auto known = m_known.find(obis);
  return known != m_known.end() ? known->second : m_known.emplace(obis, Match(obis)).first->second;
}

sml::cObisNaming cRuleNaming::Match(const std::string& obis) const {
  rules::cQuery query;
  query.obis = obis;
  sml::cObisNaming naming;
  std::size_t behind = 0, near = 0;
  for (const rules::cVerdict& verdict : rules::Nearest(rules::Match(m_map, query), kShown)) {
    if (verdict.fit == rules::eFit::Names) {
      const cObisMapEntry& rule = *verdict.rule;
      naming.rule = {rule.GetID(), ForTerminal(rule.GetName()), ForTerminal(rule.GetObisID())};
      naming.notes.push_back(ForTerminal(Described(verdict, "")));
    } else if (verdict.fit == rules::eFit::Behind && ++behind <= kShown) {
      naming.notes.push_back(ForTerminal(Described(verdict, "")));
    } else if (verdict.fit == rules::eFit::No && !naming.rule && verdict.distance < kNear) {
      if (++near == 1) naming.notes.emplace_back("no rule names it");
      naming.notes.push_back(ForTerminal(Described(verdict, "does not fit: ")));
    }
  }
  if (behind > kShown) naming.notes.push_back(std::to_string(behind - kShown) + " more would fit as well");
  if (naming.notes.empty()) naming.notes.emplace_back("no rule names it, and none is near");
  return naming;
}

}  // namespace tav::ctl
