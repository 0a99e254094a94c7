// SPDX-License-Identifier: Apache-2.0
// tavctl obis: the mapping rules of the gateway, one by one and as a file, and what is wrong with them.
#pragma once

#include <string>
#include <vector>

#include <tav/obis/obis_map.h>
#include <tavctl/command.h>

namespace tav::ctl {

class cObisCommand final : public cCommand {
 public:
  cObisCommand() : cCommand("obis", "List, change and check the rules that give values their names") {}
  void AddOptions(CLI::App& app) override;
  eExit Run(cContext& context) override;

 private:
  eExit List(cContext& context) const;
  eExit Show(cContext& context) const;
  eExit Set(cContext& context) const;
  eExit Delete(cContext& context) const;
  eExit Check(cContext& context) const;
  eExit Import(cContext& context) const;
  eExit Export(cContext& context) const;

  cObisMapEntry ChangedRule(const cObisMap& map) const;
  bool IsGiven(const char* option) const;

  CLI::App* m_app = nullptr;
  std::string m_id;
  std::vector<std::string> m_ids;
  std::string m_obis;
  std::string m_name;
  std::string m_map;
  std::string m_filter;
  std::string m_file;
  bool m_replace = false;
  bool m_dryRun = false;
  bool m_defaults = false;
};

}  // namespace tav::ctl
