// SPDX-License-Identifier: Apache-2.0
// cStatusSet: the status values of all clients merged into one set, and what has to be told to whom so that every
// client's copy becomes equal to it. Knows nothing of channels and files.
//
// Whoever sets a value last is its writer, and its client's copy is right: it is not told its own values, since what it
// has set meanwhile would be overwritten by what it had set before. Only a value that a client has set after it was
// told another one's is told to all from then on, in the order in which the service took the changes.
//
// A client that comes (back) brings its whole copy along, those of others included. What it says about a value counts,
// unless its copy is old: another client that is connected is the writer, or the value was changed or removed while it
// was away. But a value that belongs to a process which is still to come back stays that process's: others may know it
// better than a service that was started anew, the writer knows it best.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <tav/framework/record.h>
#include <tav/service/status_protocol.h>

namespace tav::gateway {

struct cStatusValue {
  std::string value;
  std::string process;         // of its writer
  unsigned int pid = 0;        // likewise
  std::uint64_t client = 0;    // the writer while it is connected, else 0
  std::uint64_t version = 0;   // of the last change
  unsigned int changed = 0;    // when that was, seconds UTC
  std::int64_t goneSince = 0;  // milliseconds of the loop's clock, while the writer is not connected
  bool contested = false;      // its writers may not know of each other: it is told to all
};

// The moment that something happens at, by both clocks.
struct cStatusMoment {
  unsigned int utc = 0;     // seconds
  std::int64_t loopMs = 0;  // never goes back
};

class cStatusSet {
 public:
  static constexpr std::size_t kMaxValues = 10'000;
  static constexpr std::size_t kMaxNameBytes = status::kMaxNameBytes;
  static constexpr std::size_t kMaxValueBytes = status::kMaxValueBytes;
  // Of all names and values: the set has to travel in one message.
  static constexpr std::size_t kMaxBytes = std::size_t{1} << 20;
  // How long the values of a client that is gone are kept.
  static constexpr std::int64_t kKeepGoneMs = std::int64_t{24} * 3600 * 1000;
  // Most removals, and clients that are gone, that are remembered to judge copies that come back.
  static constexpr std::size_t kMaxRemembered = 4'096;

  using Values = std::map<std::string, cStatusValue>;

  // What one client is to be told: the values in the record, beside its own or in place of all of its own.
  struct cTelling {
    bool replace = false;
    vorn::cRecord values;
  };

  // Whether a process is there, connected or not; by default none that is not connected is.
  void SetIsRunning(std::function<bool(unsigned int pid)> isRunning) { m_isRunning = std::move(isRunning); }

  // ---- the start: what was known when the service ended
  void Restore(const std::string& name, const cStatusValue& value, std::int64_t loopMs);

  // ---- clients, by numbers that are never used twice
  std::uint64_t Join(const std::string& process, unsigned int pid);
  void Leave(std::uint64_t client, const cStatusMoment& now);

  // ---- what clients say; a text says why nothing of it was taken
  std::string Change(std::uint64_t client, const vorn::cRecord& change, const cStatusMoment& now);
  // The whole copy of a client, which is told of changes from now on. What of the set it does not know goes to missing.
  std::string Take(std::uint64_t client, const vorn::cRecord& copy, const cStatusMoment& now, vorn::cRecord& missing);
  // The client has replaced its values.
  void Replaced(std::uint64_t client);

  // ---- what is to be done
  // What the client has to be told of what happened since it was asked last; none when nothing.
  std::optional<cTelling> Tell(std::uint64_t client);
  // Call when all clients were asked.
  void Told();
  bool HasNews() const { return !m_news.empty() || m_removed || !m_restless.empty(); }
  // Names were added since it was asked last: whose they are should be known to a service that is started anew.
  bool TakeAdded() { return std::exchange(m_added, false); }
  // Removes the values of clients that are gone for too long.
  void Expire(std::int64_t loopMs);
  // Clients of which a change was refused for want of room, when something was removed since; each is named once.
  std::vector<std::uint64_t> TakeRefused();

  const Values& GetValues() const { return m_values; }
  std::size_t CountGone() const;

 private:
  struct cClient {
    std::string process;
    unsigned int pid = 0;
    bool follows = false;         // it is told of changes
    unsigned int replacing = 0;   // replacements that it has not confirmed
    bool spokeMeanwhile = false;  // what it said before it confirmed may be lost in its copy
    bool refused = false;         // for want of room
  };
  using Identity = std::pair<std::string, unsigned int>;

  // A change as it is read: nothing is taken before all of it was found good.
  using Items = std::vector<std::pair<std::string, std::optional<std::string>>>;
  // What a client's copy holds.
  using Copy = std::map<std::string, std::string>;
  std::string Read(const vorn::cRecord& record, Items& items) const;
  std::string CheckRoom(const Items& items) const;
  void Set(std::uint64_t client, const std::string& name, const std::string& value, const cStatusMoment& now);
  void Remove(std::uint64_t by, const std::string& name);
  // Those of which a function of name and value says so.
  template <typename Which>
  void RemoveAll(std::uint64_t by, const Which& which);
  void RemoveAllOf(std::uint64_t client);
  bool WasRemoved(const std::string& name, std::optional<std::uint64_t> leftAt) const;
  bool IsOld(const cStatusValue& known, const cClient& client, std::optional<std::uint64_t> leftAt) const;
  bool IsHeirOf(const cStatusValue& known, const cClient& client) const;
  void Believe(std::uint64_t client, const std::string& name, const std::string& value,
               std::optional<std::uint64_t> leftAt, const cStatusMoment& now);
  void Update(cStatusValue& known, const std::string& name, const std::string& value, std::uint64_t by,
              const cStatusMoment& now);
  void DropUnnamed(const cClient& client, const Copy& copy);
  std::optional<std::uint64_t> ComeBack(const cClient& client);
  void News(const std::string& name, std::uint64_t except);
  vorn::cRecord All() const;

  std::function<bool(unsigned int)> m_isRunning = [](unsigned int) { return false; };
  Values m_values;
  bool m_added = false;
  std::size_t m_bytes = 0;
  bool m_roomAgain = false;
  std::uint64_t m_version = 0;
  std::map<std::uint64_t, cClient> m_clients;
  std::uint64_t m_lastClient = 0;
  std::multimap<Identity, std::uint64_t> m_gone;    // clients that are, with the version when they left
  std::map<std::string, std::uint64_t> m_removals;  // names that are no more, with the version of the removal
  // What is to be told: names, each with the one client that knows it already, or 0.
  std::map<std::string, std::uint64_t> m_news;
  bool m_removed = false;                  // something was, so that copies have to be replaced
  std::optional<std::uint64_t> m_remover;  // by this one client only
  std::set<std::uint64_t> m_restless;      // clients whose copy is to be replaced on their own account
};

}  // namespace tav::gateway
