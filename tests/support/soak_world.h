// SPDX-License-Identifier: Apache-2.0
// cSoakWorld: very many clients of the status and OBIS services that change, remove, break and come back without a
// pause, and the question whether all know the same in the end.
#pragma once

#include <algorithm>
#include <chrono>
#include <list>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include <tav/obis/obis_proxy.h>
#include <tav/service/status_proxy.h>

class cSoakWorld {
 public:
  struct cCounts {
    unsigned long long changes = 0;  // asked for: of values and rules
    unsigned long long breaks = 0;   // of connections
  };

  // The services listen in the directory.
  cSoakWorld(const std::string& directory, unsigned int clients, unsigned int seed)
      : m_service("soak", directory), m_random(seed) {
    for (unsigned int i = 0; i < clients; ++i) m_clients.push_back(std::make_unique<cClient>(&m_service));
  }

  bool Connect() {
    return Await([this] { return AreSynced(); });
  }
  // Changes as fast as the loop takes them, but not more than so many a second.
  void Churn(std::chrono::milliseconds duration, unsigned int perSecond) {
    using namespace std::chrono;
    const auto begin = steady_clock::now();
    unsigned long long done = 0;
    for (auto now = begin; now < begin + duration; now = steady_clock::now()) {
      const auto due =
          static_cast<unsigned long long>(duration_cast<milliseconds>(now - begin).count()) * perSecond / 1000;
      for (; done < due; ++done) Act();
      m_service.Poll(1);
    }
  }
  // More at once than the churn ever has, for everybody: afterwards the channels' buffers are as large as they get.
  bool WarmUp() {
    cClient& first = *m_clients.front();
    vorn::cMap<std::string, std::string> burst;
    for (unsigned int i = 0; i < kBurst; ++i) burst.Set("burst." + std::to_string(i), std::string(100, 'v'));
    first.status.MultiSet(burst);
    for (unsigned int i = 0; i < kBurst; ++i) SetRule(first, i);
    if (!Converge() || CountValues() < kBurst) return false;
    for (const auto& client : m_clients) Break(*client);
    m_service.Poll(0);
    if (!Converge()) return false;
    std::list<std::string> names;  // one by one: in one process anybody may be taken for the writer
    for (const auto& [name, value] : burst) names.push_back(name);
    first.status.MultiRemove(names);
    return Await([this] { return AreEqual() && CountValues() < kBurst && CountValues() != 0; });
  }
  // Whether all copies become equal; within that time.
  bool Converge(std::chrono::milliseconds patience = std::chrono::seconds(30)) {
    return Await([this] { return AreSynced() && AreEqual(); }, patience);
  }

  const cCounts& GetCounts() const { return m_counts; }
  std::size_t CountValues() const { return m_clients.front()->status.m_values.size(); }
  std::size_t CountRules() const { return m_clients.front()->obis.map.GetEntries().size(); }

 private:
  static constexpr unsigned int kOwn = 3;
  static constexpr unsigned int kShared = 5;
  static constexpr unsigned int kRules = 50;
  static constexpr unsigned int kBurst = 500;

  struct cClient {
    explicit cClient(vorn::cScmService* service) : status(service), obis(service) {}

    tav::cStatusProxy status;
    tav::cObisProxy obis;
  };

  unsigned int Pick(unsigned int count) { return static_cast<unsigned int>(m_random() % count); }

  void Act() {
    const unsigned int number = Pick(static_cast<unsigned int>(m_clients.size()));
    cClient& client = *m_clients[number];
    const std::string own = "client-" + std::to_string(number) + "." + std::to_string(Pick(kOwn));
    const std::string shared = "shared." + std::to_string(Pick(kShared));
    ++m_counts.changes;
    const unsigned int what = Pick(100);
    if (what < 60)
      client.status.SingleSet(own, std::to_string(m_counts.changes));
    else if (what < 72)
      client.status.SingleSet(shared, std::to_string(Pick(1000)));
    else if (what < 82)
      client.status.SingleRemove(own);
    else if (what < 84)
      client.status.Clear();
    else if (what < 92)
      SetRule(client, Pick(kRules));
    else if (what < 95)
      RemoveRule(client, Pick(kRules));
    else
      Break(client);
  }
  // What is sent while a connection is broken is lost; that is no news here.
  void SetRule(cClient& client, unsigned int number) {
    tav::cObisMapEntry rule = Rule(number);
    if (client.obis.IsConnected()) client.obis.SetEntry(rule);
  }
  void RemoveRule(cClient& client, unsigned int number) {
    tav::cObisMapEntry rule = Rule(number);
    if (client.obis.IsConnected()) client.obis.RemoveEntry(rule);
  }
  tav::cObisMapEntry Rule(unsigned int number) const {
    return tav::cObisMapEntry(1'000'000 + number, "rule " + std::to_string(m_counts.changes), "1-0:1.8.0",
                              "protocol=dlms");
  }
  void Break(cClient& client) {
    ++m_counts.breaks;
    if (const auto channel = client.status.GetChannel()) channel->Close();
    if (const auto channel = client.obis.GetChannel()) channel->Close();
  }

  bool AreSynced() const {
    for (const auto& client : m_clients)
      if (!client->status.m_synced || !client->obis.loaded) return false;
    return true;
  }
  bool AreEqual() const {
    const cClient& first = *m_clients.front();
    for (const auto& client : m_clients)
      if (client->status.m_values != first.status.m_values || !IsSame(client->obis.map, first.obis.map)) return false;
    return true;
  }
  // Without making texts of hundreds of rules, two hundred times.
  static bool IsSame(const tav::cObisMap& a, const tav::cObisMap& b) {
    return std::equal(a.GetEntries().begin(), a.GetEntries().end(), b.GetEntries().begin(), b.GetEntries().end(),
                      [](const auto& one, const auto& other) {
                        return one.first == other.first && one.second.GetName() == other.second.GetName() &&
                               one.second.GetObisID() == other.second.GetObisID() &&
                               one.second.GetMap() == other.second.GetMap();
                      });
  }
  template <typename Holds>
  bool Await(const Holds& holds, std::chrono::milliseconds patience = std::chrono::seconds(30)) {
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!holds()) {
      if (std::chrono::steady_clock::now() > end) return false;
      while (m_service.Poll(5)) {
      }
    }
    return true;
  }

  vorn::cScmService m_service;
  std::vector<std::unique_ptr<cClient>> m_clients;
  std::mt19937 m_random;
  cCounts m_counts;
};
