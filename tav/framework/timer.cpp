// SPDX-License-Identifier: Apache-2.0
#include <tav/framework/timer.h>

#include "detail/alarm.h"
#include "detail/loop.h"

namespace vorn {

namespace detail {

struct cTimerState : std::enable_shared_from_this<cTimerState> {
  explicit cTimerState(cService* owner)
      : service(owner), loop(owner->GetLoop()), alarm(loop->GetAlarms(), [this] { OnDue(); }) {}

  // The message as it is now goes behind what is ready; Stop and Start make it void by a new generation.
  void OnDue() {
    posted = true;
    loop->Post([self = shared_from_this(), generation = generation, message = msg] {
      if (self->generation != generation) return;
      self->posted = false;
      self->service->DispatchMessage(message);
    });
  }
  void Stop() {
    ++generation;
    posted = false;
    alarm.Stop();
  }

  cService* service;
  std::shared_ptr<cLoop> loop;
  cMsg msg;
  unsigned int generation = 0;
  bool posted = false;
  cAlarm alarm;
};

}  // namespace detail

cTimer::cTimer(cService* service) : m_state(std::make_shared<detail::cTimerState>(service)) {}

cTimer::~cTimer() { m_state->Stop(); }

void cTimer::SetId(const cUuid& id) { m_state->msg.SetId(id); }

cMsg& cTimer::GetMsg() { return m_state->msg; }

void cTimer::Start(unsigned int milliseconds, unsigned int type, unsigned int slackMs) {
  m_state->Stop();
  m_state->msg.SetType(type);
  m_state->alarm.Start(milliseconds, slackMs);
}

void cTimer::Stop() { m_state->Stop(); }

bool cTimer::IsRunning() const { return m_state->alarm.IsRunning() || m_state->posted; }

}  // namespace vorn
