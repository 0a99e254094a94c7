// SPDX-License-Identifier: Apache-2.0
// cApplication: tavctl from its command line to its exit code.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <tavctl/command.h>

namespace tav::ctl {

class cApplication {
 public:
  // service: the loop to work on in place of one of its own, for tests; --dir then has no meaning.
  explicit cApplication(const cStreams& streams, vorn::cScmService* service = nullptr);
  ~cApplication();

  // Once. arguments: without the program's name. Throws nothing that a command throws.
  eExit Run(std::vector<std::string> arguments);

 private:
  void Describe();
  cCommand* FindChosen() const;
  eExit RefuseUsage(const std::string& text) const;
  eExit RefuseExtra(const std::string& word) const;
  eExit RunCommand(cCommand& command);
  eExit CheckOutput(eExit exit) const;

  cStreams m_streams;
  vorn::cScmService* m_service;
  std::unique_ptr<CLI::App> m_app;
  std::vector<std::unique_ptr<cCommand>> m_commands;
  std::string m_directory;
  bool m_json = false;
  unsigned int m_timeoutMs = 10'000;
};

}  // namespace tav::ctl
