// SPDX-License-Identifier: Apache-2.0
// cRulesService: the real OBIS service on a loop of its own, which turns only when it is told to.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include <gateway/service/obis/obis_server.h>
#include <tav/obis/obis_protocol.h>
#include <tests/support/scm_world.h>
#include <tests/support/test_client.h>

namespace tav {

class cRulesService {
 public:
  explicit cRulesService(std::string directory) : m_directory(std::move(directory)) {}
  ~cRulesService() { End(); }

  void Serve() {
    data::cDataOptions options;
    options.file = m_directory + "/rules.db";
    options.durability = data::eDurability::Normal;
    m_store = std::make_unique<gateway::cObisStore>(options);
    const data::cFault fault = m_store->Open();
    ASSERT_FALSE(fault) << fault.text;
    m_host = std::make_unique<gateway::cServiceHost>("rules", m_directory);
    m_server = std::make_unique<gateway::cObisServer>(m_host.get(), m_store.get(), cObisMap());
    ASSERT_TRUE(m_server->IsListening()) << m_server->GetError();
    m_client = std::make_unique<cTestClient>(m_host.get(), "obis");
    ASSERT_TRUE(m_client->AwaitConnection());
  }
  void End() {
    m_client.reset();
    m_server.reset();
    m_host.reset();
    m_store.reset();
  }

  void Set(unsigned long long id, const std::string& obis) { Set({id, "rule", obis, "protocol=dlms"}); }
  void Set(const cObisMapEntry& rule) { Change(obis::eSetRule, rule); }
  void Remove(unsigned long long id) {
    Change(obis::eRemoveRule, cObisMapEntry(id, "rule", "1-0:1.8.0", "protocol=dlms"));
  }

  // Whether there was something to do.
  bool Turn() { return m_host && m_host->Poll(0); }
  std::size_t CountClients() const { return m_server ? m_server->GetChannels().size() - 1 : 0; }

 private:
  void Change(unsigned int type, const cObisMapEntry& rule) {
    vorn::cRecord request;
    request.AppendRecordPar(obis::kEntry, rule.ToRecord());
    const vorn::cMsg answer = m_client->Ask(type, request);
    ASSERT_EQ(answer.GetType(), type + 1) << answer.ToString();
    ASSERT_EQ(m_client->Next().GetType(), obis::eChanged);
  }

  std::string m_directory;
  std::unique_ptr<gateway::cObisStore> m_store;
  std::unique_ptr<gateway::cServiceHost> m_host;
  std::unique_ptr<gateway::cObisServer> m_server;
  std::unique_ptr<cTestClient> m_client;
};

}  // namespace tav
