// SPDX-License-Identifier: Apache-2.0
// A status service and any number of processes with status values, each on a loop of its own, so that a test decides
// who gets a turn: what is under way stays under way until then.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include <gateway/service/status/status_server.h>
#include <tav/framework/clock.h>
#include <tav/service/status_proxy.h>
#include <tests/support/temp_folder.h>

namespace tav::gateway {

struct cTestProcess {
  cTestProcess(const std::string& name, const std::string& directory)
      : clock(std::make_shared<vorn::cManualClock>()), service(name, directory, clock), proxy(&service) {}

  std::shared_ptr<vorn::cManualClock> clock;  // stands still: it does not connect again by itself
  vorn::cScmService service;
  cStatusProxy proxy;
};

class StatusWorld : public testing::Test {
 protected:
  using Values = vorn::cMap<std::string, std::string>;

  StatusWorld() { Serve(); }
  ~StatusWorld() override { End(); }

  // ---- the service
  void Serve() {
    data::cDataOptions options;
    options.file = m_folder.File("tav.db");
    options.durability = data::eDurability::Normal;
    m_store = std::make_unique<cStatusStore>(options);
    const data::cFault fault = m_store->Open();
    ASSERT_FALSE(fault) << fault.text;
    m_host = std::make_unique<cServiceHost>("tav-gateway", m_folder.GetPath(), m_clock);
    m_server = std::make_unique<cStatusServer>(m_host.get(), m_store.get());
    ASSERT_TRUE(m_server->IsListening()) << m_server->GetError();
  }
  void End() {
    m_server.reset();
    m_host.reset();
    m_store.reset();
  }
  void Restart() {
    End();
    Settle();
    Serve();
    Settle();
  }

  // ---- the processes
  cStatusProxy& Add(const std::string& name) {
    m_processes.push_back(std::make_unique<cTestProcess>(name, m_folder.GetPath()));
    return m_processes.back()->proxy;
  }
  cStatusProxy& AddConnected(const std::string& name) {
    cStatusProxy& proxy = Add(name);
    Settle();
    EXPECT_TRUE(proxy.m_synced) << name;
    return proxy;
  }
  void Cut(cStatusProxy& proxy) {
    proxy.GetChannel()->Close();
    Turn();
    ASSERT_FALSE(proxy.IsConnected());
  }
  void Remove(const cStatusProxy& proxy) {
    std::erase_if(m_processes, [&](const auto& process) { return &process->proxy == &proxy; });
  }

  // ---- turns
  // One turn of every loop.
  bool Turn() {
    bool busy = m_host && m_host->Poll(0);
    for (const auto& process : m_processes) busy |= process->service.Poll(0);
    return busy;
  }
  // Until nothing is under way any more. Those that are not connected try to be, while there is a service.
  void Settle() {
    using namespace std::chrono;
    const auto end = steady_clock::now() + seconds(20);
    for (unsigned int quiet = 0; quiet < 3;) {
      if (m_host)
        for (const auto& process : m_processes)
          if (!process->proxy.IsConnected()) process->proxy.HealthRequest();
      quiet = Turn() || !AreSynced() ? 0 : quiet + 1;
      ASSERT_LT(steady_clock::now(), end) << "it does not come to rest";
    }
  }
  bool AreSynced() const {
    return !m_host || std::all_of(m_processes.begin(), m_processes.end(),
                                  [](const auto& process) { return process->proxy.m_synced; });
  }

  // ---- looks
  Values Known() const {
    Values values;
    for (const auto& [name, value] : m_server->GetSet().GetValues()) values.Set(name, value.value);
    return values;
  }
  void ExpectAllEqual() const {
    for (const auto& process : m_processes)
      EXPECT_EQ(process->proxy.m_values, Known()) << process->service.GetProcessName();
  }

  cTempFolder m_folder;
  std::shared_ptr<vorn::cManualClock> m_clock = std::make_shared<vorn::cManualClock>();
  std::unique_ptr<cStatusStore> m_store;
  std::unique_ptr<cServiceHost> m_host;
  std::unique_ptr<cStatusServer> m_server;
  std::vector<std::unique_ptr<cTestProcess>> m_processes;
};

}  // namespace tav::gateway
