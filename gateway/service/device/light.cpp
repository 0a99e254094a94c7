// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/device/light.h>

#include <iterator>

#include <tav/framework/trace.h>
#include <tav/service/device_protocol.h>

namespace tav::gateway {

namespace {

struct cRhythm {
  bool lit;         // at first
  unsigned int ms;  // until it is the other way round; 0: for ever
};

// By mode; a flash has none.
constexpr cRhythm kRhythms[] = {
    {true, 0}, {false, 0}, {true, cLight::kBlinkMs}, {true, cLight::kTryMs}, {true, cLight::kErrorMs},
};
static_assert(std::size(kRhythms) == cUiCtrlIO::eLedMeterData);
static_assert(std::size(ui::kLedModes) == cUiCtrlIO::eLedMeterData + 1);

}  // namespace

cLight::cLight(cServiceHost* host, std::string name, std::unique_ptr<cLed> led)
    : m_name(std::move(name)), m_led(std::move(led)), m_timer(host, [this] { OnTime(); }) {
  Show(false);
}

std::string cLight::Switch(cUiCtrlIO::LED_Mode mode) {
  if (mode == cUiCtrlIO::eLedMeterData) return Flash();
  const cRhythm& rhythm = kRhythms[mode];
  if (std::string fault = Show(rhythm.lit); !fault.empty()) return fault;
  m_mode = mode;
  m_phase = rhythm.lit;
  m_flashing = false;
  m_timer.Stop();
  if (rhythm.ms != 0) m_timer.Start(rhythm.ms);
  return {};
}

std::string cLight::Flash() {
  if (m_flashing) return {};
  if (std::string fault = Show(!m_phase); !fault.empty()) return fault;
  m_flashing = true;
  m_timer.Start(kFlashMs);
  return {};
}

std::string cLight::Show(bool lit) {
  const std::string fault = m_led->Switch(lit);
  static vorn::cUnit* const unit = vorn::cUnit::Find("UnitGateway");
  // Once for as long as it lasts: a light that blinks fails many times a second.
  if (!fault.empty() && m_fault.empty()) vorn::Trace(unit, 4, "light ", m_name, ": ", fault);
  if (fault.empty() && !m_fault.empty()) vorn::Trace(unit, 8, "light ", m_name, " obeys again");
  if (fault.empty()) m_lit = lit;
  return m_fault = fault;
}

void cLight::OnTime() {
  if (!m_flashing) m_phase = !m_phase;
  m_flashing = false;
  Show(m_phase);
  if (const unsigned int ms = kRhythms[m_mode].ms; ms != 0) m_timer.Start(ms);
}

std::string cLight::GetState() const {
  const std::string mode(ui::kLedModes[m_mode]);
  return m_fault.empty() ? mode + (m_lit ? ", lit" : ", dark") : mode + ", out of reach: " + m_fault;
}

}  // namespace tav::gateway
