// SPDX-License-Identifier: Apache-2.0
// cTask: a function that the loop calls later: behind everything that is ready now, or when a time is over. It is not
// called any more once the object is gone.
#pragma once

#include <functional>

#include <gateway/host/service_host.h>
#include <tav/framework/timer.h>

namespace tav::gateway {

class cTask {
 public:
  cTask(cServiceHost* host, std::function<void()> run);
  ~cTask();
  cTask(const cTask&) = delete;
  cTask& operator=(const cTask&) = delete;

  // Once behind everything that is ready now, however often it is asked for meanwhile.
  void Post();
  // Once after that time; starts it anew when it runs. slackMs: how much later it may come.
  void Start(unsigned int milliseconds, unsigned int slackMs = 0);
  // Takes back what Start asked for.
  void Stop() { m_timer.Stop(); }
  bool IsStarted() const { return m_timer.IsRunning(); }
  // Of its messages, for a timer that somebody else starts for it.
  unsigned int GetType() const { return m_type; }

 private:
  friend class cServiceHost;
  void Run();

  cServiceHost* m_host;
  std::function<void()> m_run;
  unsigned int m_type;
  vorn::cTimer m_timer;
  bool m_posted = false;
};

}  // namespace tav::gateway
