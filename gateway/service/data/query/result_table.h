// SPDX-License-Identifier: Apache-2.0
// cResultTable: the results that clients fetch from, by handle. A handle belongs to the channel that asked; to every
// other one it is unknown.
//
// A result is released by its owner, behind its last row, when the channel closes, and when nobody has asked for it for
// a while.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include <gateway/host/task.h>
#include <gateway/service/data/query/result.h>
#include <tav/framework/uuid.h>

namespace tav::data {

class cResultTable {
 public:
  // Handles of one channel, and of all together; bytes of rows that all results hold in memory.
  static constexpr std::size_t kMaxOfChannel = 16;
  static constexpr std::size_t kMaxOfAll = 1024;
  static constexpr std::size_t kMaxBytes = std::size_t{64} << 20;
  // How long a result stays that nobody asks for, in milliseconds of the host's clock.
  static constexpr unsigned int kIdle = 300'000;

  enum class eKind { Stored, Sql };

  struct cHeld {
    eKind kind = eKind::Stored;
    std::unique_ptr<cResult> result;
    unsigned int left = 0;  // rows it may still deliver
  };

  explicit cResultTable(gateway::cServiceHost* host);

  // A fresh handle; nothing, and why in reason, when there are too many.
  std::optional<vorn::cUuid> Add(const vorn::cScmChannel* owner, cHeld held, std::string& reason);
  // Null for a handle that is not this channel's. Asking keeps it for another while.
  cHeld* Find(const vorn::cScmChannel* owner, const vorn::cUuid& handle);
  // False for a handle that is not this channel's.
  bool Release(const vorn::cScmChannel* owner, const vorn::cUuid& handle);
  void ReleaseAll(const vorn::cScmChannel* owner);
  std::size_t GetCount() const { return m_results.size(); }

 private:
  struct cEntry {
    const vorn::cScmChannel* owner;
    cHeld held;
    std::int64_t until;
  };

  std::string Refusal(const vorn::cScmChannel* owner, std::size_t bytes) const;
  void EndIdle();
  void Watch();

  gateway::cServiceHost* m_host;
  gateway::cTask m_idle;
  std::map<vorn::cUuid, cEntry> m_results;
};

}  // namespace tav::data
