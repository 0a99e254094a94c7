// SPDX-License-Identifier: Apache-2.0
// tavctl sql: one statement against the gateway's database, as docs/queries.md allows it.
#pragma once

#include <cstdint>
#include <string>

#include <tavctl/command.h>

namespace tav::ctl {

class cSqlCommand final : public cCommand {
 public:
  cSqlCommand() : cCommand("sql", "Run an SQL statement in the gateway's database") {}
  void AddOptions(CLI::App& app) override;
  eExit Run(cContext& context) override;

 private:
  std::string m_statement;
  std::uint64_t m_limit = 1000;
  bool m_write = false;
};

}  // namespace tav::ctl
