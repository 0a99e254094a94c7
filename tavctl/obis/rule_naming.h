// SPDX-License-Identifier: Apache-2.0
// cRuleNaming: what a set of mapping rules says about values, as explanations of captures show it.
#pragma once

#include <map>
#include <string>

#include <gateway/driver/capture_explain.h>
#include <gateway/rules/rule_match.h>
#include <tav/obis/obis_map.h>

namespace tav::ctl {

class cRuleNaming {
 public:
  // Of the rules behind the one that names a value, and of those that are near to it.
  static constexpr std::size_t kShown = 3;

  explicit cRuleNaming(const cObisMap& map) : m_map(map) {}

  // By an identifier. Texts may be shown on a terminal.
  const cObisNaming& Ask(const std::string& obis);
  // The same for a value read over M-Bus.
  const cObisNaming& Ask(const std::string& meterAddr, const std::string& medium, const vorn::cData& dib,
                         const vorn::cData& vib);

 private:
  const cObisNaming& Ask(const std::string& key, const rules::cQuery& query);
  cObisNaming Match(const rules::cQuery& query) const;

  cObisMap m_map;
  std::map<std::string, cObisNaming> m_known;  // a capture has the same few again and again
};

}  // namespace tav::ctl
