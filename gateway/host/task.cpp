// SPDX-License-Identifier: Apache-2.0
#include <gateway/host/task.h>

#include <utility>

namespace tav::gateway {

cTask::cTask(cServiceHost* host, std::function<void()> run)
    : m_host(host), m_run(std::move(run)), m_type(host->Add(this)), m_timer(host) {}

cTask::~cTask() { m_host->Remove(m_type); }

void cTask::Post() {
  if (m_posted) return;
  m_posted = true;
  m_host->Post(vorn::cMsg(m_type));
}

void cTask::Start(unsigned int milliseconds, unsigned int slackMs) { m_timer.Start(milliseconds, m_type, slackMs); }

void cTask::Run() {
  m_posted = false;
  m_run();
}

}  // namespace tav::gateway
