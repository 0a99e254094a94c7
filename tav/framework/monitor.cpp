// SPDX-License-Identifier: Apache-2.0
#include <tav/framework/monitor.h>

#include "detail/connector.h"
#include "detail/frame.h"

namespace vorn {

namespace {

cScmMirrored MirroredOf(const cRecord& record) {
  cScmMirrored mirrored;
  mirrored.incoming = record.GetTextView("direction") == "in";
  mirrored.processName = record.GetTextPar("process");
  mirrored.pid = static_cast<pid_t>(record.GetUIntPar("pid"));
  mirrored.msg.SetType(record.GetUIntPar("type"));
  mirrored.msg.SetId(record.GetUuidPar("id"));
  record.GetPar("record").GetRecord(mirrored.msg.Record());
  return mirrored;
}

}  // namespace

cScmMonitor::cScmMonitor(cScmService* service, const std::string& name) : cScmServiceIO(service, name) {
  m_connector->TakeMonitorMessages();
}

void cScmMonitor::OnWatching() {}

void cScmMonitor::OnRefused(const std::string&) {}

void cScmMonitor::OnMirrored(const cScmMirrored&) {}

void cScmMonitor::OnConnect() {
  if (const auto channel = m_connector->GetChannel()) channel->SendFramework(cMsg(detail::eFrameMonitor));
}

bool cScmMonitor::DispatchMessage(const cMsg& msg) {
  switch (msg.GetType()) {
    case detail::eFrameMonitorOn:
      OnWatching();
      return true;
    case detail::eFrameMonitorRefused:
      OnRefused(msg.Record().GetTextPar("reason"));
      return true;
    case detail::eFrameMirrored:
      OnMirrored(MirroredOf(msg.Record()));
      return true;
    default:
      return false;
  }
}

}  // namespace vorn
