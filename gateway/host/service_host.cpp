// SPDX-License-Identifier: Apache-2.0
#include <gateway/host/service_host.h>

#include <gateway/host/task.h>

namespace tav::gateway {

bool cServiceHost::DispatchMessage(const vorn::cMsg& msg) {
  const auto found = m_tasks.find(msg.GetType());
  if (msg.GetReplyChannel() != nullptr || found == m_tasks.end()) return false;
  found->second->Run();
  return true;
}

unsigned int cServiceHost::Add(cTask* task) {
  m_tasks.emplace(m_nextType, task);
  return m_nextType++;
}

}  // namespace tav::gateway
