// SPDX-License-Identifier: Apache-2.0
// cMonitorView: watches one service and shows each message that is wanted: its name, its parameters,
// and what it lacks.
#pragma once

#include <cstdint>
#include <string>

#include <tav/framework/monitor.h>
#include <tavctl/context.h>
#include <tavctl/json_rows.h>
#include <tavctl/message_filter.h>
#include <tavctl/message_names.h>
#include <tavctl/record_text.h>

namespace tav::ctl {

struct cMonitorOptions {
  std::string service;
  std::string filter;       // see cMessageFilter
  std::uint64_t count = 0;  // messages to show, 0: no end
  bool secrets = false;     // show them
};

class cMonitorView final : public vorn::cScmMonitor {
 public:
  cMonitorView(cContext& context, const cMonitorOptions& options);

  // As many messages were shown as were asked for.
  bool IsComplete() const { return m_left == 0; }
  // Empty, or why the service does not show its messages.
  const std::string& GetRefusal() const { return m_refusal; }
  // Ends the output.
  void End();

  void OnWatching() override;
  void OnRefused(const std::string& reason) override;
  void OnClose() override;
  void OnMirrored(const vorn::cScmMirrored& mirrored) override;

 private:
  void ShowText(const vorn::cScmMirrored& mirrored, const std::string& name, const std::string& fault);
  void ShowJson(const vorn::cScmMirrored& mirrored, const std::string& name, const std::string& fault);

  cContext& m_context;
  cMessageNames m_names;
  cMessageFilter m_filter;
  cRecordText m_text;
  cJsonRows m_json;
  std::uint64_t m_left;
  std::string m_refusal;
};

}  // namespace tav::ctl
