// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/store_group.h>

#include <algorithm>

#include <tav/framework/time.h>
#include <tav/framework/trace.h>
#include <tav/service/db_ctrl_protocol.h>

namespace tav::data {

namespace {

// Without a store for so long the service counts as idle, in milliseconds.
constexpr unsigned int kIdle = 250;

constexpr std::size_t kMaxStoreName = 255;

vorn::cUnit* Unit() {
  static vorn::cUnit* const unit = vorn::cUnit::Find("UnitData");
  return unit;
}

std::string Quoted(std::string_view text) { return "'" + std::string(text) + "'"; }

// Meters that a refusal names; a message mostly has readings of one.
constexpr std::size_t kMaxNamed = 4;

std::string MetersOf(const vorn::cRecord& request) {
  std::vector<std::string> meters;
  vorn::cRecord record;
  for (vorn::cRecordPar at = request.GetPar(db_ctrl::kMeterRecord); at.IsValid(); at = at.NextSame()) {
    const std::string meter = at.GetRecord(record) ? record.GetPar(db_ctrl::kMeterId).GetText() : "";
    if (std::find(meters.begin(), meters.end(), meter) == meters.end()) meters.push_back(meter);
    if (meters.size() > kMaxNamed) break;
  }
  std::string text;
  for (std::size_t i = 0; i < meters.size() && i < kMaxNamed; ++i) text += (i == 0 ? "" : ", ") + Quoted(meters[i]);
  return meters.size() > kMaxNamed ? text + ", ..." : text;
}

// What a request is about, for the reason of its refusal.
std::string SubjectOf(const vorn::cMsg& request) {
  const vorn::cRecord& record = request.Record();
  if (request.GetType() == db_ctrl::eStoreMeterRec) return "meter " + MetersOf(record);
  if (request.GetType() == db_ctrl::eStoreEvent) return "event";
  return "store " + Quoted(record.GetTextPar(db_ctrl::kStore)) + ", key " + Quoted(record.GetTextPar(db_ctrl::kKey));
}

}  // namespace

cStoreGroup::cStoreGroup(gateway::cServiceHost* host, gateway::cProtocolServer* server, cDataStore* store)
    : m_server(server), m_store(store), m_host(host), m_commit(host, [this] { Commit(); }), m_checkpoint(host, [this] {
        TraceFault(m_store->Checkpoint());
      }) {}

void cStoreGroup::Add(const vorn::cMsg& request) {
  if (m_waiting.size() >= kMaxWaiting) Commit();
  if (m_waiting.size() >= kMaxWaiting) {
    ++m_counters.refused;
    m_server->Refuse(request, SubjectOf(request) + ": too many stores wait for a locked database");
    return;
  }
  m_waiting.emplace_back().request = request;
  if (m_lockedSince < 0) m_commit.Post();
}

void cStoreGroup::Commit() {
  if (m_waiting.empty()) return;
  const cFault fault = m_store->Write([this](cTables& tables) {
    for (cWaiting& waiting : m_waiting) Apply(waiting, tables);
  });
  if (WaitsForLock(fault)) return;
  m_lockedSince = -1;
  TraceFault(fault);
  if (fault)
    RefuseAll(fault);
  else
    AnswerAll();
  m_waiting.clear();
  if (m_store->NeedsCheckpoint()) m_checkpoint.Start(kIdle, kIdle);
}

void cStoreGroup::Finish() {
  m_patient = false;
  Commit();
}

void cStoreGroup::Apply(cWaiting& waiting, cTables& tables) {
  waiting.stored = waiting.duplicates = waiting.rejected = 0;
  waiting.reason.clear();
  switch (waiting.request.GetType()) {
    case db_ctrl::eStoreMeterRec:
      return ApplyReadings(waiting, tables);
    case db_ctrl::eStoreEvent:
      return ApplyEvent(waiting, tables);
    default:
      return ApplyValue(waiting, tables);
  }
}

void cStoreGroup::ApplyReadings(cWaiting& waiting, cTables& tables) {
  unsigned int number = 0;
  for (vorn::cRecordPar at = waiting.request.Record().GetPar(db_ctrl::kMeterRecord); at.IsValid(); at = at.NextSame())
    ApplyReading(waiting, tables, at, ++number);
}

void cStoreGroup::ApplyReading(cWaiting& waiting, cTables& tables, const vorn::cRecordPar& parameter,
                               unsigned int number) {
  const auto reject = [&](std::string_view meter, const std::string& fault) {
    const std::string whose = meter.empty() ? "" : " of meter " + Quoted(meter);
    waiting.Reject("meter-record " + std::to_string(number) + whose + ": " + fault);
  };
  vorn::cRecord record;
  if (!parameter.GetRecord(record))
    reject("", "expected type record, found " + std::string(ParTypeName(parameter.GetType())));
  else if (!m_view.Read(record))
    reject(record.GetPar(db_ctrl::kMeterId).GetText(), m_view.GetError());
  else if (const auto outcome = tables.readings.Add(m_view); outcome == cReadingStore::eOutcome::Refused)
    reject(m_view.meterId, "too many different readings of second " + std::to_string(m_view.timestamp));
  else
    ++(outcome == cReadingStore::eOutcome::Stored ? waiting.stored : waiting.duplicates);
}

void cStoreGroup::ApplyEvent(cWaiting& waiting, cTables& tables) {
  if (waiting.request.Record().IsEmpty()) return waiting.Reject("the event is empty");
  tables.events.Add(waiting.request.Record(), vorn::cTime::Now().GetSeconds());
  ++waiting.stored;
}

void cStoreGroup::ApplyValue(cWaiting& waiting, cTables& tables) {
  const vorn::cRecord& record = waiting.request.Record();
  const std::string store = record.GetTextPar(db_ctrl::kStore);
  const std::string key = record.GetTextPar(db_ctrl::kKey);
  if (store.empty() || store.size() > kMaxStoreName)
    waiting.Reject("the name of a store has 1 to " + std::to_string(kMaxStoreName) + " bytes, this one " +
                   std::to_string(store.size()));
  else if (key.empty())
    waiting.Reject(SubjectOf(waiting.request) + ": the key is empty");
  else if (!tables.values.Set(store, key, record.GetTextPar(db_ctrl::kValue)))
    waiting.Reject(SubjectOf(waiting.request) + ": the store would have more than " +
                   std::to_string(cValueStore::kMaxStoreSize) + " bytes");
  else
    ++waiting.stored;
}

void cStoreGroup::cWaiting::Reject(const std::string& fault) {
  if (++rejected <= kMaxReasons) reason += (reason.empty() ? "" : "; ") + fault;
}

// The lock of another process is waited for in the loop, not in the database, so that everything else goes on.
bool cStoreGroup::WaitsForLock(const cFault& fault) {
  if (fault.kind != eFault::Busy || !m_patient) return false;
  const std::int64_t now = m_host->GetClock().Now();
  if (m_lockedSince < 0) m_lockedSince = now;
  if (now - m_lockedSince >= kPatience) return false;
  m_commit.Start(kRetry, kRetry);
  return true;
}

void cStoreGroup::AnswerAll() {
  ++m_counters.commits;
  for (const cWaiting& waiting : m_waiting) AnswerOne(waiting);
}

void cStoreGroup::RefuseAll(const cFault& fault) {
  m_counters.refused += m_waiting.size();
  for (const cWaiting& waiting : m_waiting)
    m_server->Refuse(waiting.request, SubjectOf(waiting.request) + ": " + fault.text);
}

void cStoreGroup::AnswerOne(const cWaiting& waiting) {
  const bool readings = waiting.request.GetType() == db_ctrl::eStoreMeterRec;
  const bool event = waiting.request.GetType() == db_ctrl::eStoreEvent;
  if (readings) m_counters.readings += waiting.stored;
  if (event) m_counters.events += waiting.stored;
  m_counters.duplicates += waiting.duplicates;
  m_counters.rejected += waiting.rejected;
  std::string reason = waiting.reason;
  if (waiting.rejected > kMaxReasons) reason += "; and " + std::to_string(waiting.rejected - kMaxReasons) + " more";
  if (waiting.rejected != 0) vorn::Trace(Unit(), 4, "rejected: ", reason);
  if (waiting.rejected != 0 && waiting.stored + waiting.duplicates == 0)
    return m_server->Refuse(waiting.request, reason);
  vorn::cRecord answer;
  if (waiting.duplicates != 0) answer.AppendUIntPar(db_ctrl::kDuplicates, waiting.duplicates);
  if (waiting.rejected != 0) {
    answer.AppendUIntPar(db_ctrl::kRejected, waiting.rejected);
    answer.AppendTextPar(db_ctrl::kReason, reason);
  }
  m_server->Answer(waiting.request, answer);
}

// Once for each change: a full disk would otherwise fill the journal too.
void cStoreGroup::TraceFault(const cFault& fault) {
  if (fault.kind == m_lastFault) return;
  if (fault)
    vorn::Trace(Unit(), 2, fault.text, ": stores are refused");
  else
    vorn::Trace(Unit(), 4, "database '", m_store->GetOptions().file, "' takes stores again");
  m_lastFault = fault.kind;
}

}  // namespace tav::data
