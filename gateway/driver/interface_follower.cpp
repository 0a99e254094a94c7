// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/interface_follower.h>

#include <gateway/driver/unit_driver.h>
#include <tav/service/db_ctrl_protocol.h>

namespace tav {

namespace {

constexpr int kFailure = 2;

}  // namespace

void cInterfaceFollower::Ask() {
  m_asked.Clear();
  m_service.GetInterface(m_asked, {}, true, false);
}

bool cInterfaceFollower::DispatchMessage(const vorn::cMsg& msg) {
  switch (msg.GetType()) {
    case db_ctrl::eInterfaces:
      if (msg.GetId() == m_asked) TakeInterfaces(msg);
      return true;
    case db_ctrl::eGetInterface + 2:
      vorn::Trace(DriverUnit(), kFailure,
                  "the configuration was refused: ", [&] { return msg.Record().GetTextPar(db_ctrl::kReason); });
      return true;
    case db_ctrl::eNotifyDriver:
      TakeNotification(msg);
      return true;
    default:
      return false;
  }
}

void cInterfaceFollower::TakeInterfaces(const vorn::cMsg& answer) {
  std::vector<cInterfaceRecord> interfaces;
  vorn::cRecord form;
  for (vorn::cRecordPar par = answer.Record().GetPar(db_ctrl::kInterfaceRecord); par.IsValid(); par = par.NextSame()) {
    cInterfaceRecord interface;
    if (par.GetRecord(form) && interface.FromRecord(form))
      interfaces.push_back(interface);
    else
      vorn::Trace(DriverUnit(), kFailure, "an interface of the configuration cannot be read: ", interface.error);
  }
  m_owner.OnInterfaces(interfaces);
}

std::string cInterfaceFollower::Obey(const cDbCtrlIODriverNotify& notification) {
  if (notification.m_command == "interface-deleted") {
    m_owner.OnInterfaceDeleted(notification.m_interfaceName);
    return {};
  }
  if (notification.m_command != "interface-changed") return m_owner.OnCommand(notification);
  cInterfaceRecord interface;
  if (interface.FromRecord(notification.m_content.GetRecordPar(db_ctrl::kInterfaceRecord)))
    return m_owner.OnInterfaceChanged(interface);
  return "interface '" + notification.m_interfaceName + "': its record cannot be read, " +
         (interface.error.empty() ? "it is empty" : interface.error);
}

void cInterfaceFollower::TakeNotification(const vorn::cMsg& msg) {
  const cDbCtrlIODriverNotify notification(msg.Record());
  const std::string fault = Obey(notification);
  vorn::cMsg answer(fault.empty() ? db_ctrl::eDriverDone : db_ctrl::eDriverFailed);
  answer.SetId(msg.GetId());
  if (!fault.empty()) {
    vorn::Trace(DriverUnit(), kFailure, notification.m_command, ": ", fault);
    answer.Record().AppendTextPar(db_ctrl::kReason, fault);
  }
  if (const auto& channel = msg.GetReplyChannel()) channel->Send(answer);
}

}  // namespace tav
