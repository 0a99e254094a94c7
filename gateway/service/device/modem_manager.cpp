// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/device/modem_manager.h>

#include <systemd/sd-bus.h>

#include <cstring>
#include <string_view>
#include <utility>

#include <tav/service/device_protocol.h>

namespace tav::gateway {

namespace {

constexpr const char* kService = "org.freedesktop.ModemManager1";
constexpr const char* kRoot = "/org/freedesktop/ModemManager1";
constexpr const char* kModemInterface = "org.freedesktop.ModemManager1.Modem";
constexpr const char* kSimple = "org.freedesktop.ModemManager1.Modem.Simple";
constexpr const char* kObjectManager = "org.freedesktop.DBus.ObjectManager";
constexpr const char* kOwnerMatch =
    "type='signal',sender='org.freedesktop.DBus',interface='org.freedesktop.DBus',member='NameOwnerChanged',"
    "arg0='org.freedesktop.ModemManager1',arg2=''";

// ModemManager's numbers: states of a modem from "disconnecting" on have a connection; ways to authenticate.
constexpr int kStateDisconnecting = 9;
constexpr std::uint32_t kAuthNone = 1 << 0, kAuthPap = 1 << 1, kAuthChap = 1 << 2;

constexpr const char* kAllBearers = "/";

struct cUnrefMessage {
  void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using cMessage = std::unique_ptr<sd_bus_message, cUnrefMessage>;

std::string CodeText(int code) { return std::strerror(-code); }

// Why a reply is none; empty: it is one.
std::string ErrorOf(sd_bus_message* reply) {
  const sd_bus_error* const error = sd_bus_message_get_error(reply);
  if (error == nullptr) return {};
  return error->message != nullptr && *error->message != '\0' ? error->message : error->name;
}

bool IsServiceMissing(sd_bus_message* reply) {
  const sd_bus_error* const error = sd_bus_message_get_error(reply);
  const std::string_view name = error != nullptr ? error->name : "";
  return name == SD_BUS_ERROR_SERVICE_UNKNOWN || name == SD_BUS_ERROR_NAME_HAS_NO_OWNER ||
         name.substr(0, 32) == "org.freedesktop.DBus.Error.Spawn";
}

// Whether an object's interfaces, a{sa{sv}}, have the one to connect with. Reads them whole.
bool HasSimple(sd_bus_message* reply) {
  bool found = false;
  sd_bus_message_enter_container(reply, SD_BUS_TYPE_ARRAY, "{sa{sv}}");
  while (sd_bus_message_enter_container(reply, SD_BUS_TYPE_DICT_ENTRY, "sa{sv}") > 0) {
    const char* name = "";
    sd_bus_message_read(reply, "s", &name);
    found = found || std::string_view(name) == kSimple;
    sd_bus_message_skip(reply, "a{sv}");
    sd_bus_message_exit_container(reply);
  }
  sd_bus_message_exit_container(reply);
  return found;
}

// The first modem of a{oa{sa{sv}}}; empty: none.
std::string FirstModem(sd_bus_message* reply) {
  std::string modem;
  sd_bus_message_enter_container(reply, SD_BUS_TYPE_ARRAY, "{oa{sa{sv}}}");
  while (modem.empty() && sd_bus_message_enter_container(reply, SD_BUS_TYPE_DICT_ENTRY, "oa{sa{sv}}") > 0) {
    const char* path = "";
    sd_bus_message_read(reply, "o", &path);
    if (HasSimple(reply)) modem = path;
    sd_bus_message_exit_container(reply);
  }
  return modem;
}

// Appends what a connection needs as a{sv}; why it could not, naming the parameter that it came from.
std::string AppendProperties(sd_bus_message* message, const cDialUp& how) {
  const struct {
    const char* key;
    std::string_view parameter;
    const std::string& value;
  } texts[] = {
      {"pin", device::kMobilePin, how.pin},
      {"apn", device::kApn, how.apn},
      {"user", device::kUser, how.user},
      {"password", device::kPassword, how.password},
  };
  const std::uint32_t auth = how.user.empty() && how.password.empty() ? kAuthNone : kAuthPap | kAuthChap;
  sd_bus_message_open_container(message, SD_BUS_TYPE_ARRAY, "{sv}");
  for (const auto& text : texts)
    if (!text.value.empty() && sd_bus_message_append(message, "{sv}", text.key, "s", text.value.c_str()) < 0)
      return "parameter \"" + std::string(text.parameter) + "\": no UTF-8 text";
  sd_bus_message_append(message, "{sv}", "allowed-auth", "u", auth);
  sd_bus_message_close_container(message);
  return {};
}

}  // namespace

struct cModemManager::cCalls {
  template <void (cModemManager::*Member)(sd_bus_message*)>
  static int To(sd_bus_message* message, void* self, sd_bus_error* /*error*/) {
    (static_cast<cModemManager*>(self)->*Member)(message);
    return 0;
  }
};

cModemManager::cModemManager(cServiceHost* host, std::string busAddress)
    : m_host(host), m_busAddress(std::move(busAddress)) {}

std::string cModemManager::GetPlace() const { return m_modem.empty() ? "ModemManager" : m_modem; }

std::string cModemManager::OpenBus() {
  if (m_bus && m_bus->IsOpen()) return {};
  for (cBusSlot* slot : {&m_call, &m_stateMatch, &m_ownerMatch, &m_removedMatch}) slot->reset();
  m_bus = std::make_unique<cBus>(m_host, m_busAddress, [this](const std::string& fault) { OnBusClosed(fault); });
  if (!m_bus->IsOpen())
    return (m_busAddress.empty() ? "there is no system bus: " : "there is no bus at " + m_busAddress + ": ") +
           m_bus->GetError();
  Watch();
  return {};
}

void cModemManager::Watch() {
  sd_bus_slot* slot = nullptr;
  const auto keep = [&](int code) { return cBusSlot(code >= 0 ? slot : nullptr); };
  m_stateMatch = keep(sd_bus_match_signal_async(m_bus->Get(), &slot, kService, nullptr, kModemInterface, "StateChanged",
                                                cCalls::To<&cModemManager::OnStateChanged>, nullptr, this));
  m_removedMatch =
      keep(sd_bus_match_signal_async(m_bus->Get(), &slot, kService, kRoot, kObjectManager, "InterfacesRemoved",
                                     cCalls::To<&cModemManager::OnRemoved>, nullptr, this));
  m_ownerMatch = keep(
      sd_bus_add_match_async(m_bus->Get(), &slot, kOwnerMatch, cCalls::To<&cModemManager::OnEnded>, nullptr, this));
}

void cModemManager::Connect(const cDialUp& how, Done begun) {
  if (const std::string fault = OpenBus(); !fault.empty()) return begun(fault);
  m_how = how;
  m_begun = std::move(begun);
  sd_bus_slot* slot = nullptr;
  const int code = sd_bus_call_method_async(m_bus->Get(), &slot, kService, kRoot, kObjectManager, "GetManagedObjects",
                                            cCalls::To<&cModemManager::OnModems>, this, "");
  if (code < 0) return Begin("the bus does not take a question: " + CodeText(code));
  m_call.reset(slot);
  m_bus->Flush();
}

void cModemManager::Begin(const std::string& fault) {
  m_how = {};
  if (const Done begun = std::exchange(m_begun, nullptr)) begun(fault);
}

void cModemManager::OnModems(sd_bus_message* reply) {
  m_call.reset();
  if (IsServiceMissing(reply)) return Begin(std::string("there is no ") + kService + " on the bus: " + ErrorOf(reply));
  if (const std::string error = ErrorOf(reply); !error.empty())
    return Begin("ModemManager does not tell its modems: " + error);
  m_modem = FirstModem(reply);
  Begin(m_modem.empty() ? "ModemManager knows no modem" : SendConnect());
}

std::string cModemManager::SendConnect() {
  sd_bus_message* raw = nullptr;
  int code = sd_bus_message_new_method_call(m_bus->Get(), &raw, kService, m_modem.c_str(), kSimple, "Connect");
  if (code < 0) return m_modem + " cannot be asked: " + CodeText(code);
  const cMessage message(raw);
  sd_bus_message_sensitive(raw);  // its bytes are wiped when they are not needed any more
  if (std::string fault = AppendProperties(raw, m_how); !fault.empty()) return fault;
  sd_bus_slot* slot = nullptr;
  code = sd_bus_call_async(m_bus->Get(), &slot, raw, cCalls::To<&cModemManager::OnConnectReply>, this,
                           std::uint64_t{kConnectSeconds} * 1'000'000);
  if (code < 0) return m_modem + " cannot be asked: " + CodeText(code);
  m_call.reset(slot);
  m_bus->Flush();
  return {};
}

void cModemManager::OnConnectReply(sd_bus_message* reply) {
  m_call.reset();
  if (const std::string error = ErrorOf(reply); !error.empty()) return Failed(error);
  const char* bearer = kAllBearers;
  sd_bus_message_read(reply, "o", &bearer);
  m_bearer = bearer;
  m_connected = true;
  Connected();
}

void cModemManager::Disconnect(Done done) {
  m_call.reset();
  m_begun = nullptr;
  m_how = {};
  m_connected = false;
  if (!m_bus || !m_bus->IsOpen() || m_modem.empty()) return done({});
  const std::string bearer = std::exchange(m_bearer, {});
  sd_bus_slot* slot = nullptr;
  const int code = sd_bus_call_method_async(m_bus->Get(), &slot, kService, m_modem.c_str(), kSimple, "Disconnect",
                                            cCalls::To<&cModemManager::OnDisconnectReply>, this, "o",
                                            bearer.empty() ? kAllBearers : bearer.c_str());
  if (code < 0) return done("the bus does not take a request: " + CodeText(code));
  m_done = std::move(done);
  m_call.reset(slot);
  m_bus->Flush();
}

void cModemManager::OnDisconnectReply(sd_bus_message* reply) {
  m_call.reset();
  // A connection whose modem or ModemManager has gone has ended too.
  std::exchange(m_done, nullptr)(IsServiceMissing(reply) ? std::string() : ErrorOf(reply));
}

void cModemManager::OnStateChanged(sd_bus_message* signal) {
  int before = 0, now = 0;
  std::uint32_t why = 0;
  if (m_modem != sd_bus_message_get_path(signal) || sd_bus_message_read(signal, "iiu", &before, &now, &why) < 0) return;
  if (now < kStateDisconnecting)
    Lose("the modem has lost its connection, its state is " + std::to_string(now) + ", reason " + std::to_string(why));
}

void cModemManager::OnRemoved(sd_bus_message* signal) {
  const char* path = "";
  if (sd_bus_message_read(signal, "o", &path) >= 0 && m_modem == path) Lose("the modem " + m_modem + " has gone");
}

void cModemManager::OnEnded(sd_bus_message* /*signal*/) { Lose("ModemManager has ended"); }

void cModemManager::OnBusClosed(const std::string& fault) {
  const std::string reason = "the bus has closed the connection: " + fault;
  m_call.reset();
  // With the bus ModemManager's answers have gone, whatever the modem does now.
  if (const Done done = std::exchange(m_done, nullptr)) return done(reason);
  if (m_begun) return Begin(reason);
  Lose(reason);
}

void cModemManager::Lose(const std::string& reason) {
  if (!std::exchange(m_connected, false)) return;
  m_bearer.clear();
  Failed(reason);
}

}  // namespace tav::gateway
