// SPDX-License-Identifier: Apache-2.0
// cPrivateBus: a dbus-daemon of the test's own. cFakeModemManager: the part of ModemManager that a connection needs, on
// such a bus; what it is asked to connect waits until the test lets it answer.
#pragma once

#include <systemd/sd-bus.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gateway/service/device/bus.h>
#include <tests/support/child_process.h>
#include <tests/support/temp_folder.h>

namespace tav::gateway {

class cPrivateBus {
 public:
  static constexpr const char* kDaemon = "/usr/bin/dbus-daemon";

  static bool IsPossible();

  cPrivateBus();
  const std::string& GetAddress() const { return m_address; }
  // Its socket is there; false when it does not come.
  bool AwaitStart();
  // As when the machine's bus ends.
  void End() { m_daemon.reset(); }

 private:
  cTempFolder m_folder;
  std::string m_address = "unix:path=" + m_folder.File("bus");
  std::optional<cChildProcess> m_daemon;
};

class cFakeModemManager {
 public:
  static constexpr const char* kModem = "/org/freedesktop/ModemManager1/Modem/7";
  static constexpr const char* kBearer = "/org/freedesktop/ModemManager1/Bearer/3";

  // What happens to a request to connect or to disconnect.
  enum class eReply { Wait, Done, Error };

  cFakeModemManager(cServiceHost* host, const std::string& address, bool withModem = true);

  ~cFakeModemManager() { sd_bus_message_unref(m_waiting); }
  cFakeModemManager(const cFakeModemManager&) = delete;
  cFakeModemManager& operator=(const cFakeModemManager&) = delete;

  void ChangeState(int before, int now);
  void RemoveModem();
  // Lets a request answer that waits.
  void Reply(eReply reply);

  eReply reply = eReply::Done;
  // "Connect apn=internet allowed-auth=1", "Disconnect /path"
  std::vector<std::string> asked;

 private:
  static int OnConnect(sd_bus_message* request, void* self, sd_bus_error* error);
  static int OnDisconnect(sd_bus_message* request, void* self, sd_bus_error* error);
  int Answer(sd_bus_message* request, bool withBearer);
  int ReplyTo(sd_bus_message* request, bool withBearer, eReply how);

  static const sd_bus_vtable kVtable[];

  cBus m_bus;
  cBusSlot m_manager;
  cBusSlot m_modem;
  sd_bus_message* m_waiting = nullptr;
  bool m_waitingWithBearer = false;
};

}  // namespace tav::gateway
