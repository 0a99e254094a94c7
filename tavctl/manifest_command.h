// SPDX-License-Identifier: Apache-2.0
// tavctl manifest: what a firmware manifest says.
#pragma once

#include <string>

#include <tavctl/command.h>

namespace tav::ctl {

class cManifestCommand final : public cCommand {
 public:
  cManifestCommand() : cCommand("manifest", "Show what a firmware manifest says") {}
  void AddOptions(CLI::App& app) override;
  eExit Run(cContext& context) override;

 private:
  std::string m_file;
};

}  // namespace tav::ctl
