// SPDX-License-Identifier: Apache-2.0
// tavctl config: the whole configuration as one document, out of a gateway and into one.
#pragma once

#include <string>

#include <tavctl/command.h>

namespace tav::ctl {

class cConfigCommand final : public cCommand {
 public:
  static constexpr std::size_t kMaxDocument = std::size_t{16} << 20;

  cConfigCommand() : cCommand("config", "Export and import the whole configuration as one document") {}
  void AddOptions(CLI::App& app) override;
  eExit Run(cContext& context) override;

 private:
  eExit Export(cContext& context) const;
  eExit Import(cContext& context) const;

  CLI::App* m_app = nullptr;
  std::string m_file;
  bool m_secrets = false;
  bool m_merge = false;
  bool m_check = false;
};

}  // namespace tav::ctl
