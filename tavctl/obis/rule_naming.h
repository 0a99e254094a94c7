// SPDX-License-Identifier: Apache-2.0
// cRuleNaming: what a set of mapping rules says about identifiers, as explanations of captures show it.
#pragma once

#include <map>
#include <string>

#include <gateway/driver/sml/sml_explain.h>
#include <tav/obis/obis_map.h>

namespace tav::ctl {

class cRuleNaming {
 public:
  // Of the rules behind the one that names a value, and of those that are near to it.
  static constexpr std::size_t kShown = 3;

  explicit cRuleNaming(const cObisMap& map) : m_map(map) {}

  // Texts may be shown on a terminal.
  const sml::cObisNaming& Ask(const std::string& obis);

 private:
  sml::cObisNaming Match(const std::string& obis) const;

  cObisMap m_map;
  std::map<std::string, sml::cObisNaming> m_known;  // a capture has the same few again and again
};

}  // namespace tav::ctl
