// SPDX-License-Identifier: Apache-2.0
// cMonitorView: watches one service and shows each message that is wanted, by name, with all its parameters.
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

class cMonitorView final : public vorn::cScmMonitor {
 public:
  cMonitorView(cContext& context, const std::string& service, const cMessageFilter& filter,
               cRecordText::eSecrets secrets);

  std::uint64_t CountShown() const { return m_shown; }
  bool IsWatching() const { return m_watching; }
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
  std::uint64_t m_shown = 0;
  bool m_watching = false;
  std::string m_refusal;
};

}  // namespace tav::ctl
