// SPDX-License-Identifier: Apache-2.0
// cCommand: one word of tavctl: what it is called, what it can be told, what it does.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <tavctl/context.h>
#include <tavctl/exit_code.h>

namespace CLI {
class App;
}

namespace tav::ctl {

class cCommand {
 public:
  cCommand(const char* name, const char* help) : m_name(name), m_help(help) {}
  virtual ~cCommand() = default;
  cCommand(const cCommand&) = delete;
  cCommand& operator=(const cCommand&) = delete;

  const char* GetName() const { return m_name; }
  // One sentence.
  const char* GetHelp() const { return m_help; }

  // See options.h.
  virtual void AddOptions(CLI::App& /*app*/) {}
  // Once, after the options were read. Throws a cFailure.
  virtual eExit Run(cContext& context) = 0;

 private:
  const char* m_name;
  const char* m_help;
};

// All commands, in the order of the help.
std::vector<std::unique_ptr<cCommand>> MakeCommands();

}  // namespace tav::ctl
