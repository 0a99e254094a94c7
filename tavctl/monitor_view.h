// SPDX-License-Identifier: Apache-2.0
// cMonitorView: watches one service, and hands its messages to the output.
#pragma once

#include <string>

#include <tav/framework/monitor.h>
#include <tavctl/monitor_output.h>

namespace tav::ctl {

class cMonitorView final : public vorn::cScmMonitor {
 public:
  // Context and output outlive it.
  cMonitorView(cContext& context, const std::string& service, cMonitorOutput& output);

  // Empty, or why the service does not show its messages.
  const std::string& GetRefusal() const { return m_refusal; }

  void OnWatching() override;
  void OnRefused(const std::string& reason) override;
  void OnClose() override;
  void OnMirrored(const vorn::cScmMirrored& mirrored) override;

 private:
  cContext& m_context;
  cMessageNames m_names;
  cMonitorOutput& m_output;
  std::string m_refusal;
};

}  // namespace tav::ctl
