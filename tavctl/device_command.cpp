// SPDX-License-Identifier: Apache-2.0
#include <tavctl/device_command.h>

#include <limits>

#include <tav/config/hardware_id.h>
#include <tav/service/ui_ctrl_io.h>
#include <tavctl/device_services.h>
#include <tavctl/failure.h>
#include <tavctl/input_file.h>
#include <tavctl/options.h>
#include <tavctl/service_link.h>

namespace tav::ctl {

namespace {

constexpr cColumn kIdColumns[] = {{"id", "ID"}, {"hardware", "HARDWARE"}};

constexpr std::string_view kWanWords[] = {"up", "down"};
constexpr std::string_view kModemWords[] = {"start", "stop"};
constexpr unsigned int kUp = 0, kStart = 0;

// More than any PIN or password has.
constexpr std::size_t kMaxSecret = 1024;

// A request that says nothing when it is done.
void Tell(cContext& context, const cDeviceService& service, unsigned int type, const vorn::cRecord& request = {}) {
  cServiceLink(context, service.protocol).Ask(type, request);
}

std::string Secret(const cContext& context, const std::string& file) {
  return file.empty() ? std::string() : ReadValue(file, context.streams.in, kMaxSecret);
}

}  // namespace

void cDeviceCommand::AddOptions(CLI::App& app) {
  m_app = &app;
  CLI::App& identify = AddAction(app, "identify", "Name the hardware that an identifier stands for");
  AddArgument(identify, "ID", m_id, "Identifier, such as MUC-014", eNeed::Required);
  CLI::App& led = AddAction(app, "led", "Switch a light");
  AddChoice(led, ui::kLeds, m_led, "Which light", eNeed::Required);
  AddChoice(led, ui::kLedModes, m_ledMode, "What it is to show", eNeed::Required);
  CLI::App& relay = AddAction(app, "relay", "Switch the relay, or show how it is");
  AddChoice(relay, ui::kRelayModes, m_relayMode, "The mode; without it the present one is shown", eNeed::Optional);
  AddNumber(relay, "--for", m_seconds, "Seconds until it goes back; without it, and for 0, it stays");
  CLI::App& time = AddAction(app, "time", "Set the clock, or show how it is");
  AddTime(time, "TIME", m_time, "The time to set; without it the clock is shown");
  CLI::App& wan = AddAction(app, "wan", "Say how the link to the wide area network is");
  AddChoice(wan, kWanWords, m_wan, "How it is", eNeed::Required);
  AddModemOptions(AddAction(app, "modem", "Start or stop the mobile data connection"));
  AllowNoAction(app);
}

void cDeviceCommand::AddModemOptions(CLI::App& modem) {
  AddChoice(modem, kModemWords, m_modem, "What to do", eNeed::Required);
  AddText(modem, "--apn", m_apn, "Access point of the mobile network, for start");
  AddText(modem, "--pin-file", m_pinFile, "File with the PIN of the SIM card; - is standard input");
  AddText(modem, "--user", m_user, "User at the access point");
  AddText(modem, "--password-file", m_passwordFile, "File with the password at the access point; - is standard input");
}

eExit cDeviceCommand::Run(cContext& context) {
  const std::string action = ChosenAction(*m_app);
  if (action.empty()) return ShowDevices(context);
  if (action == "identify") return Identify(context);
  if (action == "led")
    SwitchLed(context);
  else if (action == "relay")
    m_relayMode ? SwitchRelay(context) : ShowRelay(context);
  else if (action == "time")
    m_time ? SetTime(context) : ShowDevice(context, kTimeService);
  else if (action == "wan")
    SetWan(context);
  else
    m_modem == kStart ? StartModem(context) : StopModem(context);
  return eExitDone;
}

eExit cDeviceCommand::Identify(const cContext& context) const {
  const std::string hardware = GetHWNameFromID(m_id);
  vorn::cRecord row;
  row.AppendTextPar("id", m_id);
  row.AppendTextPar("hardware", hardware);
  const auto rows = context.Rows(kIdColumns);
  rows->Write(row);
  rows->End();
  return hardware == GetHWNameFromID({}) ? eExitNegative : eExitDone;
}

void cDeviceCommand::SwitchLed(cContext& context) const {
  vorn::cRecord request;
  request.AppendUIntPar(device::kLed, *m_led);
  request.AppendUIntPar(device::kLedMode, *m_ledMode);
  Tell(context, kUiService, ui::eSwitchLed, request);
}

void cDeviceCommand::SwitchRelay(cContext& context) const {
  constexpr std::uint64_t kMax = std::numeric_limits<unsigned int>::max();
  if (m_seconds > kMax) throw cFailure(eExitUsage, "device relay: --for: expected at most " + std::to_string(kMax));
  vorn::cRecord request;
  request.AppendUIntPar(device::kRelayMode, *m_relayMode);
  request.AppendUIntPar(device::kTimeout, static_cast<unsigned int>(m_seconds));
  Tell(context, kUiService, ui::eSwitchRelay, request);
}

void cDeviceCommand::ShowRelay(cContext& context) const {
  if (m_seconds != 0) throw cFailure(eExitUsage, "device relay: --for: the mode is missing");
  const vorn::cRecord answer = cServiceLink(context, ui::kProtocol).Ask(ui::eGetRelayMode, {});
  const bool isClosed = answer.GetUIntPar(device::kRelayMode) == cUiCtrlIO::eRelayClosed;
  ShowDeviceValue(context, kUiService, "relay", std::string(ui::kRelayModes[isClosed]));
}

void cDeviceCommand::SetTime(cContext& context) const {
  vorn::cRecord request;
  request.AppendTimePar(device::kNewUtc, vorn::cTime::FromSeconds(*m_time, true));
  Tell(context, kTimeService, time_service::eSetTime, request);
}

void cDeviceCommand::SetWan(cContext& context) const {
  Tell(context, kTimeService, m_wan == kUp ? time_service::eWanUp : time_service::eWanDown);
}

void cDeviceCommand::StartModem(cContext& context) const {
  if (m_apn.empty()) throw cFailure(eExitUsage, "device modem start: --apn is missing");
  if (m_pinFile == "-" && m_passwordFile == "-")
    throw cFailure(eExitUsage, "device modem start: standard input cannot be both --pin-file and --password-file");
  vorn::cRecord request;
  request.AppendTextPar(device::kMobilePin, Secret(context, m_pinFile));
  request.AppendTextPar(device::kApn, m_apn);
  request.AppendTextPar(device::kUser, m_user);
  request.AppendTextPar(device::kPassword, Secret(context, m_passwordFile));
  Tell(context, kGsmService, gsm::eStart, request);
}

void cDeviceCommand::StopModem(cContext& context) const {
  if (!m_apn.empty() || !m_pinFile.empty() || !m_user.empty() || !m_passwordFile.empty())
    throw cFailure(eExitUsage, "device modem stop: takes no options");
  Tell(context, kGsmService, gsm::eStop);
}

}  // namespace tav::ctl
