// SPDX-License-Identifier: Apache-2.0
// tavctl store: the values of a key/value store, or the names of all stores.
#pragma once

#include <tavctl/command.h>

namespace tav::ctl {

class cStoreCommand final : public cCommand {
 public:
  cStoreCommand() : cCommand("store", "Show the values of a key/value store, or the names of all") {}
  void AddOptions(CLI::App& app) override;
  // eExitNegative when the store that was named holds nothing.
  eExit Run(cContext& context) override;

 private:
  std::string m_name;
};

}  // namespace tav::ctl
