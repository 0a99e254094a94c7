// SPDX-License-Identifier: Apache-2.0
// cServiceHost: the loop that the services of one process live on. It hands posted and timer messages to the task they
// belong to; everything that comes from outside is the servers'.
#pragma once

#include <map>

#include <tav/framework/scm_service.h>

namespace tav::gateway {

class cTask;

class cServiceHost : public vorn::cScmService {
 public:
  using cScmService::cScmService;

  bool DispatchMessage(const vorn::cMsg& msg) override;

 private:
  friend class cTask;

  // Numbers far above every protocol's, each used once.
  static constexpr unsigned int kFirstType = 0xF0000000;

  unsigned int Add(cTask* task);
  void Remove(unsigned int type) { m_tasks.erase(type); }

  std::map<unsigned int, cTask*> m_tasks;
  unsigned int m_nextType = kFirstType;
};

}  // namespace tav::gateway
