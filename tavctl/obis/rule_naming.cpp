// SPDX-License-Identifier: Apache-2.0
#include <tavctl/obis/rule_naming.h>

#include <tavctl/terminal_text.h>

namespace tav::ctl {

namespace {

// Identifiers with another C or D are about something else, and so are values with another VIF.
constexpr unsigned int kNear = 16;
constexpr unsigned int kNearMbus = 8;

std::string Described(const rules::cVerdict& verdict, const char* before) {
  return "rule " + std::to_string(verdict.rule->GetID()) + " (" + verdict.rule->ToString() + ") " + before +
         verdict.text;
}

}  // namespace

const cObisNaming& cRuleNaming::Ask(const std::string& obis) {
  rules::cQuery query;
  query.obis = obis;
  return Ask(obis, query);
}

const cObisNaming& cRuleNaming::Ask(const std::string& meterAddr, const std::string& medium, const vorn::cData& dib,
                                    const vorn::cData& vib) {
  const std::string key = meterAddr + '/' + medium + '/' + dib.ToString(0) + '/' + vib.ToString(0);
  return Ask(key, {rules::eRoad::Mbus, "", meterAddr, medium, dib, vib, ""});
}

const cObisNaming& cRuleNaming::Ask(const std::string& key, const rules::cQuery& query) {
  const auto known = m_known.find(key);
  return known != m_known.end() ? known->second : m_known.emplace(key, Match(query)).first->second;
}

cObisNaming cRuleNaming::Match(const rules::cQuery& query) const {
  const unsigned int near = query.road == rules::eRoad::Mbus ? kNearMbus : kNear;
  cObisNaming naming;
  std::size_t behind = 0, found = 0;
  for (const rules::cVerdict& verdict : rules::Nearest(rules::Match(m_map, query), kShown)) {
    if (verdict.fit == rules::eFit::Names) {
      const cObisMapEntry& rule = *verdict.rule;
      naming.rule = {rule.GetID(), ForTerminal(rule.GetName()), ForTerminal(rule.GetObisID())};
      naming.notes.push_back(ForTerminal(Described(verdict, "")));
    } else if (verdict.fit == rules::eFit::Behind && ++behind <= kShown) {
      naming.notes.push_back(ForTerminal(Described(verdict, "")));
    } else if (verdict.fit == rules::eFit::No && !naming.rule && verdict.distance < near) {
      if (++found == 1) naming.notes.emplace_back("no rule names it");
      naming.notes.push_back(ForTerminal(Described(verdict, "does not fit: ")));
    }
  }
  if (behind > kShown) naming.notes.push_back(std::to_string(behind - kShown) + " more would fit as well");
  if (naming.notes.empty()) naming.notes.emplace_back("no rule names it, and none is near");
  return naming;
}

}  // namespace tav::ctl
