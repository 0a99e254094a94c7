// SPDX-License-Identifier: Apache-2.0
// cInterfaceFollower: keeps a driver in step with the gateway's configuration. It asks for the interfaces with their
// meters whenever the driver has been registered, and takes the service's notifications after that
// (docs/protocol/notifications.md), answering each.
#pragma once

#include <string>
#include <vector>

#include <tav/config/interface_record.h>
#include <tav/service/db_ctrl_io.h>
#include <tav/service/db_ctrl_io_driver_notify.h>

namespace tav {

// The driver that follows. What returns a text says with it why not; an empty one means that it is done.
class cInterfaceOwner {
 public:
  // All interfaces there are: what is open and not among them is not there any more.
  virtual void OnInterfaces(const std::vector<cInterfaceRecord>& interfaces) = 0;
  virtual std::string OnInterfaceChanged(const cInterfaceRecord& interface) = 0;
  virtual void OnInterfaceDeleted(const std::string& name) = 0;
  // Something to do at a meter: "activate-meter", "set-valve", "set-time-date".
  virtual std::string OnCommand(const cDbCtrlIODriverNotify& command) = 0;

 protected:
  ~cInterfaceOwner() = default;
};

class cInterfaceFollower {
 public:
  // Both outlive it.
  cInterfaceFollower(cDbCtrlIO& service, cInterfaceOwner& owner) : m_service(service), m_owner(owner) {}

  // Of the registration: asks for all interfaces.
  void Ask();
  // For messages that the proxy left to the driver; false when it is none of these.
  bool DispatchMessage(const vorn::cMsg& msg);

 private:
  void TakeInterfaces(const vorn::cMsg& answer);
  std::string Obey(const cDbCtrlIODriverNotify& notification);
  void TakeNotification(const vorn::cMsg& msg);

  cDbCtrlIO& m_service;
  cInterfaceOwner& m_owner;
  vorn::cUuid m_asked;  // the request whose answer is awaited
};

}  // namespace tav
