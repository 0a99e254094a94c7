// SPDX-License-Identifier: Apache-2.0
// tavctl explain: what the bytes of a meter's telegrams mean, and which mapping rule names a value and why. Needs no
// service: the gateway's rules are asked where it runs.
#pragma once

#include <optional>
#include <string>

#include <tav/obis/obis_map.h>
#include <tavctl/command.h>
#include <tavctl/obis/rule_query.h>

namespace tav::ctl {

class cExplainCommand final : public cCommand {
 public:
  // Of the capture: days of telegrams, and yet no accident with a disk image.
  static constexpr std::size_t kMaxCapture = std::size_t{64} << 20;

  cExplainCommand() : cCommand("explain", "Explain the bytes of a capture of SML or M-Bus telegrams, or the name of a value") {}
  void AddOptions(CLI::App& app) override;
  // eExitNegative when a telegram is bad or there is none, and a note says where; or when no rule names the value.
  eExit Run(cContext& context) override;

 private:
  eExit ExplainCapture(cContext& context) const;
  std::optional<cObisMap> FindRules(cContext& context) const;

  std::string m_file;
  std::string m_rulesFile;
  bool m_noRules = false;
  cRuleQuery m_query;
};

}  // namespace tav::ctl
