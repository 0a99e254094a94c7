// SPDX-License-Identifier: Apache-2.0
// tavctl explain: what the bytes of a meter's telegrams mean. Needs no service.
#pragma once

#include <tavctl/command.h>

namespace tav::ctl {

class cExplainCommand final : public cCommand {
 public:
  // Of the capture: days of telegrams, and yet no accident with a disk image.
  static constexpr std::size_t kMaxCapture = std::size_t{64} << 20;

  cExplainCommand() : cCommand("explain", "Explain the bytes of a capture of SML telegrams") {}
  void AddOptions(CLI::App& app) override;
  // eExitNegative when a telegram is bad or there is none; a note says where.
  eExit Run(cContext& context) override;

 private:
  std::string m_file;
};

}  // namespace tav::ctl
