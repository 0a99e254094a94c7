// SPDX-License-Identifier: Apache-2.0
#include <tavctl/monitor_view.h>

namespace tav::ctl {

cMonitorView::cMonitorView(cContext& context, const std::string& service, cMonitorOutput& output)
    : cScmMonitor(&context.service, service), m_context(context), m_names(service), m_output(output) {}

void cMonitorView::OnWatching() { m_context.Note("watching service '" + GetName() + "'"); }

void cMonitorView::OnRefused(const std::string& reason) { m_refusal = reason; }

void cMonitorView::OnClose() { m_context.Note("service '" + GetName() + "' has ended; waiting for it"); }

void cMonitorView::OnMirrored(const vorn::cScmMirrored& mirrored) { m_output.Show(GetName(), m_names, mirrored); }

}  // namespace tav::ctl
