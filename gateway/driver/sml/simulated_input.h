// SPDX-License-Identifier: Apache-2.0
// cSimulatedInput: simulated meters as an input, one telegram of each every period. By the wall clock it cannot wait,
// as a meter does not; with a begin of its own, time runs as fast as the telegrams are taken.
#pragma once

#include <optional>

#include <tav/framework/timer.h>

#include <gateway/driver/input/byte_input.h>
#include <gateway/driver/sml/sml_simulator.h>

namespace tav::sml {

constexpr unsigned int kMostSimulatedMeters = 1000;

struct cSimulatedInputOptions {
  cSmlSimulatorOptions simulator;
  unsigned int periodSeconds = 2;
  std::uint64_t rounds = 0;            // of telegrams, then the input ends; 0: it does not
  std::optional<std::uint32_t> begin;  // time of the first round, seconds since 1970-01-01 UTC; none: the wall clock

  friend bool operator==(const cSimulatedInputOptions&, const cSimulatedInputOptions&) = default;
};

class cSimulatedInput : public cByteInput {
 public:
  // timerType: of the timer message that the owner's DispatchMessage hands to OnTimer.
  cSimulatedInput(vorn::cService* service, const cSimulatedInputOptions& options, cInputEvents events,
                  unsigned int timerType);

  bool CanWait() const override { return m_options.begin.has_value(); }
  void Pause() override { m_timer.Stop(); }
  void Resume() override;
  std::optional<std::uint32_t> GetTime() const override { return m_options.begin ? m_time : std::nullopt; }
  void OnTimer();

 private:
  std::uint32_t Now() const;

  cSimulatedInputOptions m_options;
  cSmlSimulator m_simulator;
  cInputEvents m_events;
  unsigned int m_timerType;
  vorn::cTimer m_timer;
  std::uint64_t m_round = 0;
  std::optional<std::uint32_t> m_time;  // of the latest round
};

}  // namespace tav::sml
