// SPDX-License-Identifier: Apache-2.0
// cTimer: posts one message to its service when a time is over. One shot; it runs on the service's clock.
#pragma once

#include <memory>

#include <tav/framework/export.h>
#include <tav/framework/msg.h>
#include <tav/framework/service.h>

namespace vorn {

namespace detail {
struct cTimerState;
}

class VORN_API cTimer {
 public:
  // The service must outlive the timer.
  explicit cTimer(cService* service);
  // Also withdraws a message that was posted and not yet dispatched, as Stop does.
  ~cTimer();
  cTimer(const cTimer&) = delete;
  cTimer& operator=(const cTimer&) = delete;

  void SetId(const cUuid& id);
  // The message it will post, as it is at expiry; fill its record here.
  cMsg& GetMsg();
  // Restarts a running timer; keeps record and id. slackMs: how much later it may come, so that wake-ups can be joined.
  void Start(unsigned int milliseconds, unsigned int type, unsigned int slackMs = 0);
  void Stop();
  bool IsRunning() const;

 private:
  std::shared_ptr<detail::cTimerState> m_state;
};

}  // namespace vorn
