// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/status/status_set.h>

#include <algorithm>
#include <utility>

namespace tav::gateway {

namespace {

std::size_t BytesOf(const std::string& name, const std::string& value) { return name.size() + value.size(); }

bool IsAll(const vorn::cRecord& change) {
  const vorn::cRecordPar first = change.First();
  return change.GetCount() == 1 && first.GetNameView() == status::kAll && first.IsText() && !first.HasText();
}

std::string Quoted(const std::string& name) { return "status value '" + name + "': "; }

}  // namespace

void cStatusSet::Restore(const std::string& name, const cStatusValue& value, std::int64_t loopMs) {
  cStatusValue& restored = m_values[name] = value;
  restored.client = 0;
  restored.goneSince = loopMs;
  m_bytes += BytesOf(name, value.value);
}

// ---- clients

std::uint64_t cStatusSet::Join(const std::string& process, unsigned int pid) {
  m_clients[++m_lastClient] = {process, pid};
  return m_lastClient;
}

void cStatusSet::Leave(std::uint64_t client, const cStatusMoment& now) {
  const auto known = m_clients.find(client);
  if (known == m_clients.end()) return;
  for (auto& [name, value] : m_values)
    if (value.client == client) {
      value.client = 0;
      value.goneSince = now.loopMs;
    }
  if (m_gone.size() == kMaxRemembered) m_gone.erase(m_gone.begin());
  if (known->second.follows) m_gone.emplace(Identity(known->second.process, known->second.pid), m_version);
  m_restless.erase(client);
  m_clients.erase(known);
}

// The version up to which its copy is current; none for a client that was not here before. Of several that cannot be
// told apart the oldest.
std::optional<std::uint64_t> cStatusSet::ComeBack(const cClient& client) {
  const auto [begin, end] = m_gone.equal_range({client.process, client.pid});
  const auto oldest = std::min_element(begin, end, [](const auto& a, const auto& b) { return a.second < b.second; });
  if (oldest == end) return std::nullopt;
  const std::uint64_t version = oldest->second;
  m_gone.erase(oldest);
  return version;
}

// ---- what clients say

std::string cStatusSet::Read(const vorn::cRecord& record, Items& items) const {
  for (vorn::cRecordPar par = record.First(); par.IsValid(); par = par.Next()) {
    const std::string name = par.GetName();
    const bool isRemoval = par.IsText() && !par.HasText();
    if (name.empty()) return "a status value without a name";
    if (name.size() > kMaxNameBytes)
      return "the name of a status value has " + std::to_string(name.size()) + " bytes, at most " +
             std::to_string(kMaxNameBytes);
    items.emplace_back(name, isRemoval ? std::nullopt : std::optional(par.GetText()));
    const std::size_t size = isRemoval ? 0 : items.back().second->size();
    if (size > kMaxValueBytes)
      return Quoted(name) + std::to_string(size) + " bytes, at most " + std::to_string(kMaxValueBytes);
  }
  return {};
}

std::string cStatusSet::CheckRoom(const Items& items) const {
  std::size_t bytes = m_bytes;
  std::set<std::string> fresh;
  for (const auto& [name, value] : items) {
    if (!value) continue;
    const auto known = m_values.find(name);
    if (known == m_values.end()) fresh.insert(name);
    bytes += BytesOf(name, *value);
    if (known != m_values.end()) bytes -= std::min(bytes, BytesOf(name, known->second.value));
  }
  if (m_values.size() + fresh.size() > kMaxValues)
    return "there would be more than " + std::to_string(kMaxValues) + " status values";
  if (bytes > kMaxBytes) return "the status values would have more than " + std::to_string(kMaxBytes) + " bytes";
  return {};
}

std::string cStatusSet::Change(std::uint64_t client, const vorn::cRecord& change, const cStatusMoment& now) {
  cClient& speaker = m_clients[client];
  if (speaker.replacing != 0) speaker.spokeMeanwhile = true;
  if (IsAll(change)) {
    RemoveAllOf(client);
    return {};
  }
  Items items;
  if (std::string fault = Read(change, items); !fault.empty()) return fault;
  if (std::string full = CheckRoom(items); !full.empty()) {
    speaker.refused = true;
    return full;
  }
  for (const auto& [name, value] : items)
    if (value)
      Set(client, name, *value, now);
    else
      Remove(client, name);
  return {};
}

std::string cStatusSet::Take(std::uint64_t client, const vorn::cRecord& copy, const cStatusMoment& now,
                             vorn::cRecord& missing) {
  Items items;
  if (std::string fault = Read(copy, items); !fault.empty()) return fault;
  cClient& speaker = m_clients[client];
  if (speaker.replacing != 0) speaker.spokeMeanwhile = true;
  // Of one that is here what was removed is old whenever that was: what it sets anew it says in a change.
  const auto leftAt = speaker.follows ? std::optional<std::uint64_t>(0) : ComeBack(speaker);
  if (std::erase_if(items, [&](const auto& item) { return WasRemoved(item.first, leftAt); }) != 0)
    m_restless.insert(client);
  if (std::string full = CheckRoom(items); !full.empty()) {
    speaker.refused = true;
    return full;
  }
  Copy says;
  for (const auto& [name, value] : items)
    if (value) says[name] = *value;
  DropUnnamed(speaker, says);
  for (const auto& [name, value] : says) Believe(client, name, value, leftAt, now);
  speaker.follows = true;
  for (const auto& [name, value] : m_values)
    if (const auto said = says.find(name); said == says.end() || said->second != value.value)
      missing.AppendTextPar(name, value.value);
  return {};
}

// What a client says about one value in its copy.
void cStatusSet::Believe(std::uint64_t client, const std::string& name, const std::string& value,
                         std::optional<std::uint64_t> leftAt, const cStatusMoment& now) {
  const cClient& speaker = m_clients[client];
  const auto known = m_values.find(name);
  if (known == m_values.end()) return Set(client, name, value, now);
  const bool isSame = known->second.value == value;
  const bool inherits = known->second.client == 0 && !speaker.follows && IsHeirOf(known->second, speaker);
  if (inherits || (known->second.client == client && !isSame))
    Set(client, name, value, now);
  else if (!isSame && !IsOld(known->second, speaker, leftAt))
    Update(known->second, name, value, client, now);
}

// Of a value whose writer is gone: the writer itself, or its successor.
bool cStatusSet::IsHeirOf(const cStatusValue& known, const cClient& client) const {
  return known.process == client.process && (known.pid == client.pid || !m_isRunning(known.pid));
}

bool cStatusSet::WasRemoved(const std::string& name, std::optional<std::uint64_t> leftAt) const {
  const auto removal = m_removals.find(name);
  return leftAt && removal != m_removals.end() && removal->second > *leftAt;
}

bool cStatusSet::IsOld(const cStatusValue& known, const cClient& client, std::optional<std::uint64_t> leftAt) const {
  return known.client != 0 || client.follows || (leftAt && known.version > *leftAt);
}

// What the client had published and has removed while it was away. One that brings nothing of what it had published
// along starts anew, or is another one of its process.
void cStatusSet::DropUnnamed(const cClient& client, const Copy& copy) {
  const auto wasIts = [&](const cStatusValue& value) {
    return value.client == 0 && value.process == client.process && value.pid == client.pid;
  };
  const bool knows = std::any_of(m_values.begin(), m_values.end(), [&](const auto& value) {
    return wasIts(value.second) && copy.count(value.first) != 0;
  });
  if (!knows) return;
  RemoveAll(0,
            [&](const std::string& name, const cStatusValue& value) { return wasIts(value) && copy.count(name) == 0; });
}

void cStatusSet::Replaced(std::uint64_t client) {
  const auto known = m_clients.find(client);
  if (known == m_clients.end() || known->second.replacing == 0) return;
  if (--known->second.replacing != 0 || !known->second.spokeMeanwhile) return;
  known->second.spokeMeanwhile = false;
  m_restless.insert(client);
}

// ---- values

void cStatusSet::Set(std::uint64_t client, const std::string& name, const std::string& value,
                     const cStatusMoment& now) {
  const auto [place, fresh] = m_values.try_emplace(name);
  cStatusValue& known = place->second;
  const bool changes = fresh || known.value != value;
  const cClient& speaker = m_clients[client];
  if (!fresh && known.client != client && (known.client != 0 || speaker.follows)) known.contested = true;
  known.client = client;
  known.process = speaker.process;
  known.pid = speaker.pid;
  m_bytes += fresh ? name.size() : 0;
  m_added |= fresh;
  if (changes || known.contested) Update(known, name, value, client, now);
}

void cStatusSet::Update(cStatusValue& known, const std::string& name, const std::string& value, std::uint64_t by,
                        const cStatusMoment& now) {
  m_bytes += value.size();
  m_bytes -= known.value.size();
  if (known.version == 0 || known.value != value) known.changed = now.utc;
  known.value = value;
  known.version = ++m_version;
  m_removals.erase(name);
  News(name, known.contested ? 0 : by);
}

void cStatusSet::Remove(std::uint64_t by, const std::string& name) {
  const auto known = m_values.find(name);
  if (known == m_values.end()) return;
  // Only the writer's own copy cannot be about to take what somebody else has set.
  const bool byItself = by != 0 && known->second.client == by && !known->second.contested;
  m_bytes -= BytesOf(name, known->second.value);
  m_values.erase(known);
  m_news.erase(name);
  if (m_removals.size() == kMaxRemembered) m_removals.erase(m_removals.begin());
  m_removals[name] = ++m_version;
  if (!m_removed)
    m_remover = byItself ? std::optional(by) : std::nullopt;
  else if (m_remover != by || !byItself)
    m_remover.reset();
  m_removed = m_roomAgain = true;
}

template <typename Which>
void cStatusSet::RemoveAll(std::uint64_t by, const Which& which) {
  std::vector<std::string> names;
  for (const auto& [name, value] : m_values)
    if (which(name, value)) names.push_back(name);
  for (const std::string& name : names) Remove(by, name);
}

// Its copy is empty now, and is to hold the values of the others.
void cStatusSet::RemoveAllOf(std::uint64_t client) {
  RemoveAll(client, [&](const std::string&, const cStatusValue& value) { return value.client == client; });
  m_restless.insert(client);
}

void cStatusSet::Expire(std::int64_t loopMs) {
  RemoveAll(0, [&](const std::string&, const cStatusValue& value) {
    return value.client == 0 && loopMs - value.goneSince >= kKeepGoneMs;
  });
}

std::vector<std::uint64_t> cStatusSet::TakeRefused() {
  std::vector<std::uint64_t> refused;
  if (!std::exchange(m_roomAgain, false)) return refused;
  for (auto& [client, state] : m_clients)
    if (std::exchange(state.refused, false)) refused.push_back(client);
  return refused;
}

std::size_t cStatusSet::CountGone() const {
  return static_cast<std::size_t>(
      std::count_if(m_values.begin(), m_values.end(), [](const auto& value) { return value.second.client == 0; }));
}

// ---- what is to be told

void cStatusSet::News(const std::string& name, std::uint64_t except) {
  const auto [place, fresh] = m_news.try_emplace(name, except);
  if (!fresh && place->second != except) place->second = 0;
}

std::optional<cStatusSet::cTelling> cStatusSet::Tell(std::uint64_t client) {
  const auto known = m_clients.find(client);
  if (known == m_clients.end() || !known->second.follows) return std::nullopt;
  if (m_restless.count(client) != 0 || (m_removed && m_remover != client)) {
    ++known->second.replacing;
    return cTelling{true, All()};
  }
  cTelling telling;
  for (const auto& [name, except] : m_news)
    if (except != client) telling.values.AppendTextPar(name, m_values.at(name).value);
  if (telling.values.IsEmpty()) return std::nullopt;
  return telling;
}

void cStatusSet::Told() {
  m_news.clear();
  m_removed = false;
  m_remover.reset();
  m_restless.clear();
}

vorn::cRecord cStatusSet::All() const {
  vorn::cRecord all;
  for (const auto& [name, value] : m_values) all.AppendTextPar(name, value.value);
  return all;
}

}  // namespace tav::gateway
