// SPDX-License-Identifier: Apache-2.0
#include <tests/service/device/fake_modem_manager.h>

#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <utility>

namespace tav::gateway {

namespace {

constexpr const char* kSimple = "org.freedesktop.ModemManager1.Modem.Simple";

constexpr const char* kConfiguration = R"xml(<busconfig>
  <listen>ADDRESS</listen>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
    <allow user="*"/>
  </policy>
</busconfig>
)xml";

// "apn=internet" of each entry of a{sv}, in their order.
std::string Properties(sd_bus_message* request) {
  std::string text;
  sd_bus_message_enter_container(request, 'a', "{sv}");
  while (sd_bus_message_enter_container(request, 'e', "sv") > 0) {
    const char* key = "";
    const char* type = "";
    sd_bus_message_read(request, "s", &key);
    sd_bus_message_peek_type(request, nullptr, &type);
    sd_bus_message_enter_container(request, 'v', type);
    text += std::string(" ") + key + "=";
    if (std::string(type) == "u") {
      std::uint32_t number = 0;
      sd_bus_message_read(request, "u", &number);
      text += std::to_string(number);
    } else {
      const char* value = "";
      sd_bus_message_read(request, "s", &value);
      text += value;
    }
    sd_bus_message_exit_container(request);
    sd_bus_message_exit_container(request);
  }
  return text;
}

}  // namespace

bool cPrivateBus::IsPossible() { return access(kDaemon, X_OK) == 0; }

cPrivateBus::cPrivateBus() {
  std::string configuration = kConfiguration;
  configuration.replace(configuration.find("ADDRESS"), 7, m_address);
  std::ofstream(m_folder.File("bus.conf")) << configuration;
  m_daemon.emplace(
      std::vector<std::string>{kDaemon, "--nofork", "--nopidfile", "--config-file=" + m_folder.File("bus.conf")},
      std::vector<std::string>{}, m_folder.File("log"));
}

bool cPrivateBus::AwaitStart() {
  struct stat status {};
  for (int tries = 0; tries < 1000; ++tries) {
    if (stat(m_folder.File("bus").c_str(), &status) == 0) return true;
    if (m_daemon->Wait(10)) return false;  // it has ended
  }
  return false;
}

const sd_bus_vtable cFakeModemManager::kVtable[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Connect", "a{sv}", "o", OnConnect, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Disconnect", "o", "", OnDisconnect, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END,
};

cFakeModemManager::cFakeModemManager(cServiceHost* host, const std::string& address, bool withModem)
    : m_bus(host, address, nullptr) {
  if (!m_bus.IsOpen()) return;
  sd_bus_slot* slot = nullptr;
  sd_bus_add_object_manager(m_bus.Get(), &slot, "/org/freedesktop/ModemManager1");
  m_manager.reset(slot);
  if (withModem) {
    sd_bus_add_object_vtable(m_bus.Get(), &slot, kModem, kSimple, kVtable, this);
    m_modem.reset(slot);
  }
  // Waits for the daemon, which is another process.
  sd_bus_request_name(m_bus.Get(), "org.freedesktop.ModemManager1", 0);
  m_bus.Flush();
}

int cFakeModemManager::OnConnect(sd_bus_message* request, void* self, sd_bus_error*) {
  auto* const fake = static_cast<cFakeModemManager*>(self);
  fake->asked.push_back("Connect" + Properties(request));
  return fake->Answer(request, true);
}

int cFakeModemManager::OnDisconnect(sd_bus_message* request, void* self, sd_bus_error*) {
  auto* const fake = static_cast<cFakeModemManager*>(self);
  const char* bearer = "";
  sd_bus_message_read(request, "o", &bearer);
  fake->asked.push_back(std::string("Disconnect ") + bearer);
  return fake->Answer(request, false);
}

int cFakeModemManager::Answer(sd_bus_message* request, bool withBearer) {
  if (reply != eReply::Wait) return ReplyTo(request, withBearer, reply);
  m_waiting = sd_bus_message_ref(request);
  m_waitingWithBearer = withBearer;
  return 1;
}

int cFakeModemManager::ReplyTo(sd_bus_message* request, bool withBearer, eReply how) {
  if (how == eReply::Error)
    return sd_bus_reply_method_errorf(request, "org.freedesktop.ModemManager1.Error.MobileEquipment.Unknown",
                                      "the network does not want it");
  return withBearer ? sd_bus_reply_method_return(request, "o", kBearer) : sd_bus_reply_method_return(request, "");
}

void cFakeModemManager::Reply(eReply how) {
  sd_bus_message* const request = std::exchange(m_waiting, nullptr);
  ReplyTo(request, m_waitingWithBearer, how);
  sd_bus_message_unref(request);
  m_bus.Flush();
}

void cFakeModemManager::ChangeState(int before, int now) {
  sd_bus_emit_signal(m_bus.Get(), kModem, "org.freedesktop.ModemManager1.Modem", "StateChanged", "iiu", before, now,
                     1U);
  m_bus.Flush();
}

void cFakeModemManager::RemoveModem() {
  sd_bus_emit_object_removed(m_bus.Get(), kModem);
  m_modem.reset();
  m_bus.Flush();
}

}  // namespace tav::gateway
