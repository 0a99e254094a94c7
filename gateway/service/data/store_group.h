// SPDX-License-Identifier: Apache-2.0
// cStoreGroup: the stores that wait for their commit. All that one turn of the loop has read is one transaction; each
// is answered when that is committed, and none when it is not.
//
// A bad record in a message is left out and named in the answer, the good ones are kept. While another process holds
// the database locked the group waits and tries again, for a while; every other fault refuses it at once.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <gateway/host/protocol_server.h>
#include <gateway/host/task.h>
#include <gateway/service/data/data_store.h>

namespace tav::data {

class cStoreGroup {
 public:
  // More of them are committed without waiting for the end of the turn; while the database is locked, refused.
  static constexpr std::size_t kMaxWaiting = 4096;
  // How long a locked database is waited for, and how often it is tried, in milliseconds.
  static constexpr unsigned int kPatience = 2000;
  static constexpr unsigned int kRetry = 20;
  // Rejected records that one answer names.
  static constexpr unsigned int kMaxReasons = 16;

  struct cCounters {
    std::uint64_t commits = 0;
    std::uint64_t readings = 0;  // stored
    std::uint64_t duplicates = 0;
    std::uint64_t rejected = 0;  // bad records
    std::uint64_t refused = 0;   // messages, for a fault of the database
    std::uint64_t events = 0;
  };

  cStoreGroup(gateway::cServiceHost* host, gateway::cProtocolServer* server, cDataStore* store);

  // A request that stores something: readings, an event, a value of a key/value store.
  void Add(const vorn::cMsg& request);
  // Commits and answers what waits, now, unless it waits for a lock.
  void Commit();
  // The same, without waiting for a lock any longer.
  void Finish();
  const cCounters& GetCounters() const { return m_counters; }
  std::size_t CountWaiting() const { return m_waiting.size(); }

 private:
  struct cWaiting {
    vorn::cMsg request;
    unsigned int stored = 0;
    unsigned int duplicates = 0;
    unsigned int rejected = 0;
    std::string reason;

    void Reject(const std::string& fault);
  };

  void Apply(cWaiting& waiting, cTables& tables);
  void ApplyReadings(cWaiting& waiting, cTables& tables);
  void ApplyReading(cWaiting& waiting, cTables& tables, const vorn::cRecordPar& parameter, unsigned int number);
  void ApplyEvent(cWaiting& waiting, cTables& tables);
  void ApplyValue(cWaiting& waiting, cTables& tables);
  bool WaitsForLock(const cFault& fault);
  void AnswerAll();
  void RefuseAll(const cFault& fault);
  void AnswerOne(const cWaiting& waiting);
  void TraceFault(const cFault& fault);

  gateway::cProtocolServer* m_server;
  cDataStore* m_store;
  gateway::cServiceHost* m_host;
  gateway::cTask m_commit;
  gateway::cTask m_checkpoint;
  std::vector<cWaiting> m_waiting;
  std::int64_t m_lockedSince = -1;  // of the host's clock; -1: it is not
  bool m_patient = true;
  eFault m_lastFault = eFault::None;
  cReadingView m_view;
  cCounters m_counters;
};

}  // namespace tav::data
