// SPDX-License-Identifier: Apache-2.0
// cStatusKeeper: keeps the status set in the database, so that a service that starts knows what was known before its
// clients are back. Counters change all the time: what has changed is written together, some seconds later and at the
// end, and what a power cut takes the clients bring again.
#pragma once

#include <gateway/host/task.h>
#include <gateway/service/status/status_set.h>
#include <gateway/service/status/status_table.h>

namespace tav::gateway {

class cStatusKeeper {
 public:
  static constexpr unsigned int kDelayMs = 10'000;
  static constexpr unsigned int kSoonMs = 200;
  static constexpr unsigned int kSlackMs = 5'000;

  // All outlive the keeper; the set is filled with what the store holds.
  cStatusKeeper(cServiceHost* host, cStatusStore* store, cStatusSet* set);
  // Writes what is not written yet.
  ~cStatusKeeper();

  // The set may have changed; soon: in a way that should not be lost.
  void Wake(bool soon = false);
  // Why the last writing or reading failed; it is tried again.
  const std::string& GetFault() const { return m_fault; }

 private:
  void Restore();
  void Write();
  void Note(const data::cFault& fault);

  cServiceHost* m_host;
  cStatusStore* m_store;
  cStatusSet* m_set;
  cTask m_task;
  bool m_soon = false;
  cStatusSet::Values m_written;
  std::string m_fault;
};

}  // namespace tav::gateway
