// SPDX-License-Identifier: Apache-2.0
// cRelaySwitch: the relay, and the time after which it goes back.
//
// It goes back to the mode that it was given for good: a switch with a time that comes while another one's time runs
// makes it longer or shorter, and never leaves the relay for ever where it was meant to be for a while.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include <gateway/host/task.h>
#include <gateway/service/device/relay.h>

namespace tav::gateway {

class cRelaySwitch {
 public:
  // Thirty days.
  static constexpr unsigned int kMaxSeconds = 30 * 24 * 3600;
  // Between attempts to go back when the hardware does not obey.
  static constexpr unsigned int kRetryMs = 1000;

  // Open. onBack: it has gone back by itself.
  cRelaySwitch(cServiceHost* host, std::unique_ptr<cRelay> relay, std::function<void()> onBack);

  // seconds: until it goes back, 0: for good. Empty: done. Else why not; all is then as before.
  std::string Switch(bool closed, unsigned int seconds);

  bool IsClosed() const { return m_closed; }
  // Seconds until it goes back, begun ones counted whole; 0: it stays.
  unsigned int GetSecondsLeft() const;
  // Why the hardware did not obey last time; empty: it did.
  const std::string& GetFault() const { return m_fault; }
  std::string GetPlace() const { return m_relay->GetPlace(); }

 private:
  std::string Set(bool closed);
  void GoBack();

  cServiceHost* m_host;
  std::unique_ptr<cRelay> m_relay;
  std::function<void()> m_onBack;
  bool m_closed = false;
  bool m_forGood = false;  // the mode that it goes back to
  std::int64_t m_end = 0;  // by the host's clock, while the timer runs
  std::string m_fault;
  cTask m_timer;
};

}  // namespace tav::gateway
