// SPDX-License-Identifier: Apache-2.0
// cObisServer: the OBIS map service, channel "obis". It keeps the mapping rules in the database, hands out the whole
// map, takes changes, and tells every client of each one.
//
// A change is stored before it is answered, and answered before the clients are told. A client that does not read what
// it is told is disconnected: when it comes back it asks for the whole map.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include <gateway/host/protocol_server.h>
#include <gateway/rules/rule_difference.h>
#include <gateway/service/obis/obis_rule_table.h>
#include <tav/obis/obis_map.h>

namespace tav::gateway {

struct cObisCounters {
  std::uint64_t sets = 0;        // rules stored since the start
  std::uint64_t removes = 0;     // rules deleted
  std::uint64_t refused = 0;     // requests that were
  std::uint64_t told = 0;        // changes sent to clients
  std::uint64_t applied = 0;     // of them, those that a client has taken
  std::uint64_t notApplied = 0;  // and could not take
};

class cObisServer final : public cProtocolServer {
 public:
  // Of the whole map: it has to travel in one message.
  static constexpr std::size_t kMaxRules = 10'000;
  static constexpr std::size_t kMaxMapBytes = std::size_t{2} << 20;
  // Of a rule's name, identifier, or mapping text.
  static constexpr std::size_t kMaxTextBytes = 1'000;

  // The store is open and outlives the server. shipped: the rules that a gateway starts with, put in once.
  cObisServer(cServiceHost* host, cObisStore* store, const cObisMap& shipped);
  ~cObisServer() override;

  // Why the rules could not be read; the service then starts without them.
  const std::string& GetFault() const { return m_fault; }
  const cObisMap& GetMap() const { return m_map; }
  const cObisCounters& GetCounters() const { return m_counters; }
  // Changes that were sent and not answered yet, of all clients.
  std::size_t CountUnanswered() const;

  void OnClose(vorn::cScmChannel& channel) override;

 private:
  using Changes = std::vector<rules::cRuleChange>;

  void Load(const cObisMap& shipped);
  data::cFault Write(const std::function<void(cObisRuleTable&)>& change);
  void GetMap(const vorn::cMsg& request);
  void SetRule(const vorn::cMsg& request);
  void RemoveRule(const vorn::cMsg& request);
  void ApplyMap(const vorn::cMsg& request);
  void CountAnswer(const vorn::cMsg& answer);

  void RefuseChange(const vorn::cMsg& request, const std::string& reason);
  // Stores the changes and takes them over; empty when that went well.
  std::string Store(const Changes& changes);
  void TellAll(const Changes& changes);
  void TellAll(const rules::cRuleChange& change);

  cObisStore* m_store;
  cObisMap m_map;
  std::string m_fault;
  cObisCounters m_counters;
  std::map<const vorn::cScmChannel*, std::size_t> m_unanswered;
};

}  // namespace tav::gateway
