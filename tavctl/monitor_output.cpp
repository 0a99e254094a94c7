// SPDX-License-Identifier: Apache-2.0
#include <tavctl/monitor_output.h>

#include <limits>
#include <nlohmann/json.hpp>

#include <gateway/form/record_json.h>
#include <gateway/form/time_text.h>
#include <gateway/form/utf8.h>
#include <tav/framework/time.h>
#include <tavctl/record_text.h>
#include <tavctl/terminal_text.h>

namespace tav::ctl {

namespace {

using form::cJson;

std::string Now() { return form::FormatTime(vorn::cTime::Now().GetSeconds()); }

}  // namespace

cMonitorOutput::cMonitorOutput(cContext& context, const cMonitorOptions& options)
    : m_context(context),
      m_filter(options.filter),
      m_process(options.process),
      m_mask(options.secrets ? form::eMask::Nothing : form::eMask::Secrets),
      m_json(context.streams.out, {}),
      m_left(options.count != 0 ? options.count : std::numeric_limits<std::uint64_t>::max()) {}

void cMonitorOutput::End() {
  if (m_context.json) m_json.End();
}

void cMonitorOutput::Show(const std::string& service, const cMessageNames& names, const vorn::cScmMirrored& mirrored) {
  const std::string name = names.NameOf(mirrored.msg.GetType());
  const bool isTheirs = m_process.empty() || mirrored.processName == m_process;
  if (m_left == 0 || !isTheirs || !m_filter.Wants(name, mirrored.msg.Record())) return;
  --m_left;
  if (m_context.json)
    ShowJson(service, mirrored, name, names.FaultOf(mirrored.msg));
  else
    ShowText(service, mirrored, name, names.FaultOf(mirrored.msg));
  m_context.streams.out.flush();
}

// 2024-03-01T13:00:00+01:00  ehzif[123] -> data  store-meter-records  6ba7b810-...
void cMonitorOutput::ShowText(const std::string& service, const vorn::cScmMirrored& mirrored, const std::string& name,
                              const std::string& fault) {
  std::ostream& out = m_context.streams.out;
  out << Now() << "  " << ForTerminal(mirrored.processName) << '[' << mirrored.pid << ']'
      << (mirrored.incoming ? " -> " : " <- ") << service << "  " << name;
  if (mirrored.msg.GetId().IsValid()) out << "  " << mirrored.msg.GetId().ToString();
  out << '\n' << cRecordText(m_mask).AsLines(mirrored.msg.Record(), 2);
  if (!fault.empty()) out << "  ! " << ForTerminal(fault) << '\n';
}

void cMonitorOutput::ShowJson(const std::string& service, const vorn::cScmMirrored& mirrored, const std::string& name,
                              const std::string& fault) {
  const vorn::cUuid& id = mirrored.msg.GetId();
  cJson row;
  row["time"] = Now();
  row["service"] = service;
  row["direction"] = mirrored.incoming ? "in" : "out";
  row["process"] = form::ToUtf8(mirrored.processName);
  row["pid"] = mirrored.pid;
  row["message"] = name;
  row["type"] = mirrored.msg.GetType();
  row["id"] = id.IsValid() ? cJson(id.ToString()) : cJson(nullptr);
  row["record"] = form::ToJson(mirrored.msg.Record(), m_mask);
  row["fault"] = fault.empty() ? cJson(nullptr) : cJson(fault);
  m_json.Write(row);
}

}  // namespace tav::ctl
