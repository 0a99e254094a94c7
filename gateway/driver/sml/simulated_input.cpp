// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/simulated_input.h>

#include <tav/framework/time.h>

namespace tav::sml {

cSimulatedInput::cSimulatedInput(vorn::cService* service, const cSimulatedInputOptions& options, cInputEvents events,
                                 unsigned int timerType)
    : m_options(options),
      m_simulator(options.simulator),
      m_events(std::move(events)),
      m_timerType(timerType),
      m_timer(service) {
  m_timer.Start(0, m_timerType);
}

std::uint32_t cSimulatedInput::Now() const {
  if (!m_options.begin) return vorn::cTime::Now().GetSeconds();
  return static_cast<std::uint32_t>(*m_options.begin + m_round * m_options.periodSeconds);
}

void cSimulatedInput::Resume() {
  if (m_options.rounds != 0 && m_round == m_options.rounds) return;
  if (!m_timer.IsRunning()) m_timer.Start(CanWait() ? 0 : m_options.periodSeconds * 1000, m_timerType);
}

void cSimulatedInput::OnTimer() {
  Resume();  // before the bytes: what takes them may pause this input
  const std::uint32_t now = Now();
  m_time = now;
  ++m_round;
  for (unsigned int meter = 0; meter < m_options.simulator.meters; ++meter) {
    const std::string telegram = m_simulator.Telegram(now);
    m_events.onBytes(reinterpret_cast<const unsigned char*>(telegram.data()), telegram.size());
  }
  if (m_round != m_options.rounds) return;
  m_timer.Stop();
  m_events.onEnd({});
}

}  // namespace tav::sml
