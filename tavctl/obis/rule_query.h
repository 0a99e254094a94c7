// SPDX-License-Identifier: Apache-2.0
// cRuleQuery: a value as somebody describes it on the command line, and what the mapping rules say about it.
#pragma once

#include <string>

#include <gateway/rules/rule_match.h>
#include <tavctl/context.h>
#include <tavctl/exit_code.h>

namespace CLI {
class App;
}

namespace tav::ctl {

class cRuleQuery {
 public:
  // Of the rules that do not fit.
  static constexpr std::size_t kNearest = 5;

  void AddOptions(CLI::App& app);
  // Whether a value was described at all.
  bool IsGiven() const { return !m_value.empty() || !m_protocol.empty(); }
  // Throws a cFailure for a description that is no value of its protocol.
  rules::cQuery Make() const;
  // A row a rule; eExitNegative when none names the value.
  eExit Answer(const cObisMap& map, const cContext& context) const;

 private:
  std::string m_value;
  std::string m_protocol;
  std::string m_meterAddr;
  std::string m_medium;
  std::string m_dif;
  std::string m_vif;
  std::string m_register;
  bool m_all = false;
};

}  // namespace tav::ctl
