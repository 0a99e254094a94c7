// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/device/gsm_server.h>

#include <iterator>
#include <utility>

#include <gateway/service/device/modem_manager.h>
#include <gateway/service/device/simulated_modem.h>
#include <tav/framework/trace.h>
#include <tav/service/device_protocol.h>

namespace tav::gateway {

namespace {

constexpr const char* kSimulated = "simulated";
constexpr const char* kModemManager = "modemmanager";

constexpr const char* kReplaced = "a later request to start with another access point has taken its place";
constexpr const char* kStopped = "a later request has stopped it";

constexpr const char* kStates[] = {"off", "connecting", "connected", "failed", "disconnecting"};

std::unique_ptr<cModem> MakeModem(cServiceHost* host, const cGsmOptions& options) {
  if (options.modem == kModemManager) return std::make_unique<cModemManager>(host, options.busAddress);
  return std::make_unique<cSimulatedModem>(host);
}

cDialUp DialUp(const vorn::cRecord& record) {
  return {record.GetTextPar(device::kMobilePin), record.GetTextPar(device::kApn), record.GetTextPar(device::kUser),
          record.GetTextPar(device::kPassword)};
}

// What is needed to answer it later: nothing of what it says.
vorn::cMsg WithoutParameters(const vorn::cMsg& request) {
  vorn::cMsg bare(request.GetType());
  bare.SetId(request.GetId());
  bare.SetReplyChannel(request.GetReplyChannel());
  return bare;
}

}  // namespace

std::string cGsmOptions::Check() const { return CheckChoice("modem", modem, kSimulated, kModemManager); }

cGsmServer::cGsmServer(cServiceHost* host, const cGsmOptions& options, std::unique_ptr<cModem> modem)
    : cDeviceServer(host, gsm::kProtocol, gsm::eGetState),
      m_modem(modem ? std::move(modem) : MakeModem(host, options)),
      m_display(host),
      m_since(vorn::cTime::Now()) {
  m_modem->SetOnConnected([this] { OnConnected(); });
  m_modem->SetOnFailed([this](const std::string& reason) { OnFailed(reason); });
  On(gsm::eStart, [this](const vorn::cMsg& request) { Start(request); });
  On(gsm::eStop, [this](const vorn::cMsg& request) { Stop(request); });
}

void cGsmServer::Start(const vorn::cMsg& request) {
  const cDialUp how = DialUp(request.Record());
  const bool isUp = m_state == eState::Connecting || m_state == eState::Connected;
  if (m_state == eState::Off || m_state == eState::Failed) {
    Dial(WithoutParameters(request), how);
  } else if (isUp && how.apn == m_apn) {
    if (m_starts.empty()) return Answer(request);
    m_starts.push_back(WithoutParameters(request));
  } else {
    DropNext(kReplaced);
    m_next = cNext{WithoutParameters(request), how};
    if (isUp) HangUp(kReplaced);
  }
}

void cGsmServer::Stop(const vorn::cMsg& request) {
  DropNext(kStopped);
  if (m_state == eState::Failed) Enter(eState::Off, m_reason);
  if (m_state == eState::Off) return Answer(request);
  m_stops.push_back(WithoutParameters(request));
  if (m_state != eState::Disconnecting) HangUp(kStopped);
}

void cGsmServer::Dial(const vorn::cMsg& request, const cDialUp& how) {
  m_apn = how.apn;
  m_starts = {request};
  Enter(eState::Connecting);
  m_modem->Connect(how, [this](const std::string& fault) { OnBegun(fault); });
}

void cGsmServer::OnBegun(const std::string& fault) {
  if (!fault.empty()) Enter(eState::Failed, fault);
  Finish(m_starts, fault);
}

void cGsmServer::OnConnected() {
  if (m_state == eState::Connecting) Enter(eState::Connected);
}

void cGsmServer::OnFailed(const std::string& reason) {
  if (m_state == eState::Connecting || m_state == eState::Connected) Enter(eState::Failed, reason);
}

void cGsmServer::HangUp(const char* why) {
  Finish(m_starts, why);
  Enter(eState::Disconnecting);
  m_modem->Disconnect([this](const std::string& fault) { OnHungUp(fault); });
}

void cGsmServer::OnHungUp(const std::string& fault) {
  Enter(fault.empty() ? eState::Off : eState::Failed, fault);
  Finish(m_stops, fault);
  if (const auto next = std::exchange(m_next, std::nullopt)) Dial(next->request, next->how);
}

void cGsmServer::DropNext(const char* why) {
  if (const auto next = std::exchange(m_next, std::nullopt)) Refuse(next->request, why);
}

void cGsmServer::Finish(std::vector<vorn::cMsg>& requests, const std::string& fault) {
  for (const vorn::cMsg& request : std::exchange(requests, {})) {
    if (fault.empty())
      Answer(request);
    else
      Refuse(request, fault);
  }
}

void cGsmServer::Enter(eState state, const std::string& reason) {
  using eWan = cWanDisplay::eWan;
  constexpr eWan kWans[] = {eWan::Off, eWan::Try, eWan::Up, eWan::Error};
  static vorn::cUnit* const unit = vorn::cUnit::Find("UnitGateway");
  m_state = state;
  m_since = vorn::cTime::Now();
  m_reason = reason;
  const auto number = static_cast<std::size_t>(state);
  if (state == eState::Failed)
    vorn::Trace(unit, 4, "gsm: access point \"", m_apn, "\" failed: ", reason);
  else
    vorn::Trace(unit, 8, "gsm: access point \"", m_apn, "\" ", kStates[number]);
  if (number < std::size(kWans)) m_display.Show(kWans[number]);
  StateChanged();
}

cStateRows cGsmServer::GetState() const {
  return {
      {"modem", m_modem->GetPlace()},
      {"state", kStates[static_cast<std::size_t>(m_state)]},
      {"since", m_since.ToISO8601String()},
      {"apn", m_apn},
      {"reason", m_reason},
  };
}

}  // namespace tav::gateway
