// SPDX-License-Identifier: Apache-2.0
// Clients with copies of the status values and the set that merges them, whose messages cross in any order: whatever is
// set, removed, broken and connected again, in the end every copy is equal to the set.
//
// The input is a script; each two bytes are one step: who does what, and with which name and value.
#include <cstdlib>
#include <deque>
#include <map>
#include <string>

#include <gateway/service/status/status_set.h>
#include <tav/service/status_protocol.h>

namespace {

using tav::gateway::cStatusSet;
using Values = std::map<std::string, std::string>;

constexpr unsigned int kClients = 4;
constexpr int kMostRounds = 200;  // until everything is at rest
constexpr const char* kNames[] = {"a", "b", "c", "d", "*", "shared"};

void Check(bool holds) {
  if (!holds) std::abort();
}

// As the library's client behaves, with the messages that are under way both ways.
struct cClient {
  struct cSaid {
    unsigned int type;
    vorn::cRecord record;
  };

  void Say(unsigned int type, const vorn::cRecord& record = {}) {
    if (number != 0) said.push_back({type, record});
  }
  void Set(const std::string& name, const std::string& value) {
    if (const auto known = copy.find(name); known != copy.end() && known->second == value) return;
    copy[name] = value;
    vorn::cRecord change;
    change.AppendTextPar(name, value);
    Say(tav::status::eChange, change);
  }
  void Remove(const std::string& name) {
    if (name == tav::status::kAll)
      copy.clear();
    else
      copy.erase(name);
    vorn::cRecord change;
    change.AppendTextPar(name, nullptr);
    Say(tav::status::eChange, change);
  }
  void Hear() {
    if (told.empty()) return;
    const cStatusSet::cTelling telling = told.front();
    told.pop_front();
    if (telling.replace) copy.clear();
    for (vorn::cRecordPar par = telling.values.First(); par.IsValid(); par = par.Next())
      copy[par.GetName()] = par.GetText();
    if (telling.replace) Say(tav::status::eReplaced);
  }

  Values copy;
  std::uint64_t number = 0;  // 0: not connected
  std::deque<cSaid> said;
  std::deque<cStatusSet::cTelling> told;
};

class cWorld {
 public:
  void Step(unsigned char what, unsigned char with) {
    cClient& client = m_clients[what % kClients];
    const std::string name = kNames[with % std::size(kNames)];
    switch (what / kClients % 8) {
      case 0:
      case 1:
        return client.Set(name, std::to_string(with / 64));
      case 2:
        return client.Remove(name);
      case 3:
        return client.number == 0 ? Connect(what % kClients) : with % 8 == 0 ? Break(client) : client.Hear();
      case 4:
      case 5:
        return Listen(client);
      case 6:
        return client.Hear();
      default:
        return Tell();
    }
  }
  void Finish() {
    for (unsigned int i = 0; i < kClients; ++i)
      if (m_clients[i].number == 0) Connect(i);
    int rounds = 0;
    for (bool busy = true; busy; ++rounds) {
      Check(rounds < kMostRounds);
      busy = m_set.HasNews();
      for (cClient& client : m_clients) {
        busy |= !client.said.empty() || !client.told.empty();
        while (!client.said.empty()) Listen(client);
      }
      Tell();
      for (cClient& client : m_clients)
        while (!client.told.empty()) client.Hear();
    }
    Values known;
    for (const auto& [name, value] : m_set.GetValues()) known[name] = value.value;
    for (const cClient& client : m_clients) Check(client.copy == known);
  }

 private:
  // The last two cannot be told apart.
  void Connect(unsigned int which) {
    cClient& client = m_clients[which];
    client.number = m_set.Join("process", std::min(which, kClients - 2));
    vorn::cRecord copy;
    for (const auto& [name, value] : client.copy) copy.AppendTextPar(name, value);
    client.Say(tav::status::eFullSet, copy);
  }
  void Break(cClient& client) {
    m_set.Leave(client.number, m_now);
    client.number = 0;
    client.said.clear();
    client.told.clear();
  }
  void Listen(cClient& client) {
    if (client.said.empty()) return;
    const cClient::cSaid said = client.said.front();
    client.said.pop_front();
    ++m_now.utc;
    if (said.type == tav::status::eReplaced) return m_set.Replaced(client.number);
    if (said.type == tav::status::eChange) return Check(m_set.Change(client.number, said.record, m_now).empty());
    cStatusSet::cTelling missing;
    Check(m_set.Take(client.number, said.record, m_now, missing.values).empty());
    client.told.push_back(missing);
  }
  void Tell() {
    for (cClient& client : m_clients)
      if (client.number != 0)
        if (auto telling = m_set.Tell(client.number)) client.told.push_back(*telling);
    m_set.Told();
  }

  cStatusSet m_set;
  cClient m_clients[kClients];
  tav::gateway::cStatusMoment m_now;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* bytes, std::size_t size) {
  cWorld world;
  for (std::size_t at = 0; at + 1 < size && at < 2000; at += 2) world.Step(bytes[at], bytes[at + 1]);
  world.Finish();
  return 0;
}
