// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/device/ui_server.h>

#include <iterator>
#include <span>

#include <gateway/service/device/gpio_relay.h>
#include <gateway/service/device/kernel_led.h>
#include <tav/service/device_protocol.h>

namespace tav::gateway {

namespace {

constexpr std::string_view kSimulated = "simulated";
constexpr std::string_view kKernel = "kernel";

static_assert(std::size(ui::kLeds) == 3);

std::unique_ptr<cLed> MakeLed(const cUiOptions& options, const std::string& directory) {
  if (options.leds != kKernel || directory.empty()) return std::make_unique<cSimulatedLed>();
  return std::make_unique<cKernelLed>(options.ledRoot + "/" + directory);
}

std::unique_ptr<cRelay> MakeRelay(const cUiOptions& options) {
  if (options.relayChip.empty()) return std::make_unique<cSimulatedRelay>();
  return std::make_unique<cGpioRelay>(options.relayChip, options.relayLine);
}

// "parameter "led": expected 0 (wan), 1 (meter-1) or 2 (meter-2), found 7"
std::string NoSuch(std::string_view parameter, std::span<const std::string_view> words, unsigned int found) {
  std::string text = "parameter \"" + std::string(parameter) + "\": expected ";
  for (std::size_t i = 0; i < words.size(); ++i) {
    if (i != 0) text += i + 1 == words.size() ? " or " : ", ";
    text += std::to_string(i) + " (" + std::string(words[i]) + ")";
  }
  return text + ", found " + std::to_string(found);
}

}  // namespace

std::string cUiOptions::Check() const { return CheckChoice("leds", leds, kSimulated, kKernel); }

cUiServer::cUiServer(cServiceHost* host, const cUiOptions& options)
    : cDeviceServer(host, ui::kProtocol, ui::eGetState),
      m_lights{{{host, std::string(ui::kLeds[0]), MakeLed(options, options.ledWan)},
                {host, std::string(ui::kLeds[1]), MakeLed(options, options.ledMeter1)},
                {host, std::string(ui::kLeds[2]), MakeLed(options, options.ledMeter2)}}},
      m_relay(host, MakeRelay(options), [this] { StateChanged(); }) {
  On(ui::eSwitchLed, [this](const vorn::cMsg& request) { SwitchLed(request); });
  On(ui::eSwitchRelay, [this](const vorn::cMsg& request) { SwitchRelay(request); });
  On(ui::eGetRelayMode, [this](const vorn::cMsg& request) { GetRelayMode(request); });
}

void cUiServer::SwitchLed(const vorn::cMsg& request) {
  const unsigned int led = request.Record().GetUIntPar(device::kLed);
  const unsigned int mode = request.Record().GetUIntPar(device::kLedMode);
  if (led >= m_lights.size()) return Refuse(request, NoSuch(device::kLed, ui::kLeds, led));
  if (mode >= std::size(ui::kLedModes)) return Refuse(request, NoSuch(device::kLedMode, ui::kLedModes, mode));
  const std::string fault = m_lights[led].Switch(static_cast<cUiCtrlIO::LED_Mode>(mode));
  if (!fault.empty()) return Refuse(request, fault);
  Answer(request);
  // A flash passes.
  if (mode != cUiCtrlIO::eLedMeterData) StateChanged();
}

void cUiServer::SwitchRelay(const vorn::cMsg& request) {
  const unsigned int mode = request.Record().GetUIntPar(device::kRelayMode);
  if (mode >= std::size(ui::kRelayModes)) return Refuse(request, NoSuch(device::kRelayMode, ui::kRelayModes, mode));
  const std::string fault =
      m_relay.Switch(mode == cUiCtrlIO::eRelayClosed, request.Record().GetUIntPar(device::kTimeout));
  if (!fault.empty()) return Refuse(request, fault);
  Answer(request);
  StateChanged();
}

void cUiServer::GetRelayMode(const vorn::cMsg& request) {
  vorn::cRecord answer;
  answer.AppendUIntPar(device::kRelayMode, m_relay.IsClosed() ? cUiCtrlIO::eRelayClosed : cUiCtrlIO::eRelayOpen);
  Answer(request, answer);
}

cStateRows cUiServer::GetState() const {
  cStateRows rows;
  for (std::size_t i = 0; i < m_lights.size(); ++i)
    rows.emplace_back("led." + std::string(ui::kLeds[i]), m_lights[i].GetState());
  rows.emplace_back("relay", GetRelayState());
  rows.emplace_back("relay.back-in", std::to_string(m_relay.GetSecondsLeft()));
  rows.emplace_back("hardware", GetHardware());
  return rows;
}

std::string cUiServer::GetRelayState() const {
  const std::string mode(ui::kRelayModes[m_relay.IsClosed()]);
  return m_relay.GetFault().empty() ? mode : mode + ", out of reach: " + m_relay.GetFault();
}

std::string cUiServer::GetHardware() const {
  std::string places;
  const auto add = [&](const std::string& name, const std::string& place) {
    if (place != kSimulated) places += (places.empty() ? "" : ", ") + name + " " + place;
  };
  for (std::size_t i = 0; i < m_lights.size(); ++i) add("led." + std::string(ui::kLeds[i]), m_lights[i].GetPlace());
  add("relay", m_relay.GetPlace());
  return places.empty() ? std::string(kSimulated) : places;
}

}  // namespace tav::gateway
