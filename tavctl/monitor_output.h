// SPDX-License-Identifier: Apache-2.0
// cMonitorOutput: where the messages of all watched services are shown, those that are wanted: when, between whom, by
// name, with their parameters and what they lack.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <gateway/form/record_json.h>
#include <tav/framework/monitor.h>
#include <tavctl/context.h>
#include <tavctl/json_rows.h>
#include <tavctl/message_filter.h>
#include <tavctl/message_names.h>

namespace tav::ctl {

struct cMonitorOptions {
  std::vector<std::string> services;  // none: all there are
  std::string filter;                 // see cMessageFilter
  std::string process;                // only messages of clients with this name; empty: of all
  std::uint64_t count = 0;            // messages to show, 0: no end
  bool secrets = false;               // show them
};

class cMonitorOutput {
 public:
  // The context outlives it.
  cMonitorOutput(cContext& context, const cMonitorOptions& options);

  void Show(const std::string& service, const cMessageNames& names, const vorn::cScmMirrored& mirrored);
  // As many messages were shown as were asked for.
  bool IsComplete() const { return m_left == 0; }
  void End();

 private:
  void ShowText(const std::string& service, const vorn::cScmMirrored& mirrored, const std::string& name,
                const std::string& fault);
  void ShowJson(const std::string& service, const vorn::cScmMirrored& mirrored, const std::string& name,
                const std::string& fault);

  cContext& m_context;
  cMessageFilter m_filter;
  std::string m_process;
  form::eMask m_mask;
  cJsonRows m_json;
  std::uint64_t m_left;
};

}  // namespace tav::ctl
