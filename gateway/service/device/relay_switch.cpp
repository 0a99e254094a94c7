// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/device/relay_switch.h>

#include <algorithm>

#include <tav/framework/trace.h>

namespace tav::gateway {

cRelaySwitch::cRelaySwitch(cServiceHost* host, std::unique_ptr<cRelay> relay, std::function<void()> onBack)
    : m_host(host), m_relay(std::move(relay)), m_onBack(std::move(onBack)), m_timer(host, [this] { GoBack(); }) {
  Set(false);
}

std::string cRelaySwitch::Switch(bool closed, unsigned int seconds) {
  if (seconds > kMaxSeconds)
    return "parameter \"timeout\": expected at most " + std::to_string(kMaxSeconds) + " seconds, found " +
           std::to_string(seconds);
  if (std::string fault = Set(closed); !fault.empty()) return fault;
  m_timer.Stop();
  if (seconds == 0) {
    m_forGood = closed;
  } else {
    m_end = m_host->GetClock().Now() + std::int64_t{seconds} * 1000;
    m_timer.Start(seconds * 1000);
  }
  return {};
}

std::string cRelaySwitch::Set(bool closed) {
  const std::string fault = m_relay->Switch(closed);
  static vorn::cUnit* const unit = vorn::cUnit::Find("UnitGateway");
  if (!fault.empty() && m_fault.empty()) vorn::Trace(unit, 4, "relay: ", fault);
  if (fault.empty() && !m_fault.empty()) vorn::Trace(unit, 8, "relay obeys again");
  if (fault.empty()) m_closed = closed;
  return m_fault = fault;
}

void cRelaySwitch::GoBack() {
  // What hangs at the relay must not stay switched because one write has failed.
  if (!Set(m_forGood).empty()) return m_timer.Start(kRetryMs);
  m_onBack();
}

unsigned int cRelaySwitch::GetSecondsLeft() const {
  if (!m_timer.IsStarted()) return 0;
  const std::int64_t left = std::max<std::int64_t>(m_end - m_host->GetClock().Now(), 1);
  return static_cast<unsigned int>((left + 999) / 1000);
}

}  // namespace tav::gateway
