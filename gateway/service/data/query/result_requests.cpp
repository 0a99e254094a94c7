// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/query/result_requests.h>

#include <algorithm>

#include <gateway/service/data/profile/profile_choice.h>
#include <gateway/service/data/profile/profile_rows.h>
#include <gateway/service/data/query/last_values.h>
#include <gateway/service/data/query/meter_status_query.h>
#include <gateway/service/data/query/reading_rows.h>
#include <gateway/service/data/query/stored_values.h>
#include <tav/service/db_ctrl_protocol.h>
#include <tav/service/db_ctrl_request.h>

namespace tav::data {

namespace {

using vorn::cMsg;
using vorn::cRecord;

constexpr const char* kValues = "values";
constexpr const char* kReadings = "readings";
constexpr const char* kStatus = "status";
constexpr const char* kReading = "reading";

std::string Quoted(const std::string& text) { return "'" + text + "'"; }

cMeterFilter FilterOf(const cDbCtrlRequest& asked) {
  return {asked.m_meterID, asked.m_addr, asked.m_mfct, asked.m_medium, asked.m_vendor};
}

cStoredSelection SelectionOf(const cDbCtrlRequest& asked, std::vector<std::string> meters) {
  return {std::move(meters),
          {asked.m_obisIds.begin(), asked.m_obisIds.end()},
          asked.m_fromUTC,
          asked.m_toUTC,
          asked.m_rawFormat};
}

std::string UnknownMode(const cDbCtrlRequest& asked, const std::string& possible) {
  return "unknown mode " + Quoted(asked.m_mode) + ": possible are " + possible;
}

// Only readings have a telegram.
bool RefusesRaw(const cDbCtrlRequest& asked, const char* mode, std::string& reason) {
  if (asked.m_rawFormat.empty()) return false;
  reason = "raw-format " + Quoted(asked.m_rawFormat) + ": raw telegrams come in mode " + Quoted(mode) + " only";
  return true;
}

bool RefusesProfile(const cDbCtrlRequest& asked, const char* what, std::string& reason) {
  if (asked.m_profile.empty()) return false;
  reason = "profile " + Quoted(asked.m_profile) + ": " + what + " have none";
  return true;
}

std::string UnknownHandle(const vorn::cUuid& handle) {
  return "handle " + handle.ToString() +
         " is unknown to this client: never given, released, delivered to its end, or " + "not asked for in " +
         std::to_string(cResultTable::kIdle / 1000) + " seconds";
}

}  // namespace

cResultRequests::cResultRequests(gateway::cProtocolServer* server, cResultTable* results, Read read)
    : m_server(server), m_results(results), m_read(std::move(read)) {}

cResultRequests::Handlers cResultRequests::GetHandlers() {
  return {
      {db_ctrl::eGetStoredValues, [this](const cMsg& request) { GetStoredValues(request); }},
      {db_ctrl::eGetLastValues,
       [this](const cMsg& request) { GetAtOnce(request, &cResultRequests::MakeLast, db_ctrl::kRow); }},
      {db_ctrl::eGetMeterStatus,
       [this](const cMsg& request) { GetAtOnce(request, &cResultRequests::MakeStatus, db_ctrl::kMeterStatus); }},
      {db_ctrl::eFetchStoredValues, [this](const cMsg& request) { Fetch(request, cResultTable::eKind::Stored); }},
      {db_ctrl::eSqlFetch, [this](const cMsg& request) { Fetch(request, cResultTable::eKind::Sql); }},
      {db_ctrl::eCloseResult, [this](const cMsg& request) { Close(request); }},
  };
}

void cResultRequests::GetStoredValues(const cMsg& request) {
  cResultTable::cHeld held;
  if (!Select(request, &cResultRequests::MakeStored, held)) return;
  std::string reason;
  const auto handle = m_results->Add(request.GetReplyChannel().get(), std::move(held), reason);
  if (!handle) return m_server->Refuse(request, reason);
  cRecord answer;
  answer.AppendUuidPar(db_ctrl::kHandle, *handle);
  m_server->Answer(request, answer);
}

// The first rows in the answer itself, and a handle only when there are more.
void cResultRequests::GetAtOnce(const cMsg& request, Make make, std::string_view name) {
  cResultTable::cHeld held;
  if (!Select(request, make, held)) return;
  cRecord answer;
  bool end = false;
  if (const cFault fault = TakePage(held, name, cResultPage::kMaxRows, answer, end))
    return m_server->Refuse(request, fault.text);
  if (!end) {
    std::string reason;
    const auto handle = m_results->Add(request.GetReplyChannel().get(), std::move(held), reason);
    if (!handle) return m_server->Refuse(request, reason);
    answer.AppendUuidPar(db_ctrl::kHandle, *handle);
  }
  m_server->Answer(request, answer);
}

void cResultRequests::Fetch(const cMsg& request, cResultTable::eKind kind) {
  const vorn::cScmChannel* const owner = request.GetReplyChannel().get();
  const vorn::cUuid handle = request.Record().GetUuidPar(db_ctrl::kHandle);
  cResultTable::cHeld* const held = m_results->Find(owner, handle);
  if (held == nullptr) return m_server->Refuse(request, UnknownHandle(handle));
  if (held->kind != kind)
    return m_server->Refuse(request, "handle " + handle.ToString() + " is fetched with " +
                                         (kind == cResultTable::eKind::Sql ? "fetch-stored-values" : "sql-fetch"));
  const unsigned int count = request.Record().GetUIntPar(db_ctrl::kCount);
  cRecord answer;
  bool end = false;
  const cFault fault = TakePage(*held, db_ctrl::kRow, count == 0 ? cResultPage::kDefaultRows : count, answer, end);
  if (fault || end) m_results->Release(owner, handle);
  if (fault) return m_server->Refuse(request, fault.text + ": the result is released");
  answer.AppendBoolPar(db_ctrl::kEnd, end);
  m_server->Answer(request, answer);
}

void cResultRequests::Close(const cMsg& request) {
  const vorn::cUuid handle = request.Record().GetUuidPar(db_ctrl::kHandle);
  if (m_results->Release(request.GetReplyChannel().get(), handle))
    m_server->Answer(request);
  else
    m_server->Refuse(request, UnknownHandle(handle));
}

// Reads the request and makes its result; false when it was refused.
bool cResultRequests::Select(const cMsg& request, Make make, cResultTable::cHeld& held) {
  cDbCtrlRequest asked;
  std::string reason;
  if (!asked.FromRecord(request.Record().GetRecordPar(db_ctrl::kMeterRequest)))
    reason = "meter-request: " + asked.m_error;
  else if (asked.m_fromUTC > asked.m_toUTC)
    reason = "meter-request: fromUTC " + std::to_string(asked.m_fromUTC) + " is behind toUTC " +
             std::to_string(asked.m_toUTC);
  cFault fault;
  if (reason.empty())
    fault = m_read([&](cTables& tables) {
      held.result = (this->*make)(tables, asked, SelectionOf(asked, tables.meters.Find(FilterOf(asked))), reason);
    });
  held.left = asked.m_maxLen == 0 ? kMaxResultRows : std::min(asked.m_maxLen, kMaxResultRows);
  if (!fault && reason.empty()) return true;
  m_server->Refuse(request, fault ? fault.text : reason);
  return false;
}

std::unique_ptr<cResult> cResultRequests::MakeStored(cTables& tables, const cDbCtrlRequest& asked,
                                                     cStoredSelection selection,  // NOLINT: as all of them take it
                                                     std::string& reason) {
  if (asked.m_mode == kReadings) {
    if (RefusesProfile(asked, "readings", reason)) return nullptr;
    return std::make_unique<cReadingRows>(selection);
  }
  if (!asked.m_mode.empty() && asked.m_mode != kValues)
    reason = UnknownMode(asked, "'values' (also meant by an empty one) and 'readings'");
  if (!reason.empty() || RefusesRaw(asked, kReadings, reason)) return nullptr;
  if (!asked.m_profile.empty()) return MakeProfile(tables, asked, selection, reason);
  return std::make_unique<cStoredValues>(selection);
}

std::unique_ptr<cResult> cResultRequests::MakeProfile(cTables& tables, const cDbCtrlRequest& asked,
                                                      const cStoredSelection& selection, std::string& reason) {
  cProfileChoice choice(asked.m_profile);
  for (const std::string& meter : selection.meters) choice.Offer(meter, tables.profileQuery.List(meter));
  // One that was configured and not read yet has a profile without rows.
  const std::string& meterId = asked.m_meterID;
  if (!meterId.empty() && !tables.query.FindMeter(meterId)) choice.Offer(meterId, tables.profileQuery.List(meterId));
  reason = choice.GetReason();
  std::vector<cProfileSelection> profiles;
  for (const auto& [meter, profile] : choice.GetChosen())
    profiles.push_back({profile, meter, selection.obis, selection.from, selection.to, std::nullopt});
  return std::make_unique<cProfileRows>(std::move(profiles));
}

std::unique_ptr<cResult> cResultRequests::MakeLast(cTables&, const cDbCtrlRequest& asked, cStoredSelection selection,
                                                   std::string& reason) {
  if (!asked.m_mode.empty() && asked.m_mode != kValues)
    reason = UnknownMode(asked, "'values', also meant by an empty one");
  if (!reason.empty() || RefusesProfile(asked, "last values", reason) || RefusesRaw(asked, kReadings, reason))
    return nullptr;
  return std::make_unique<cLastValues>(std::move(selection));
}

std::unique_ptr<cResult> cResultRequests::MakeStatus(cTables&, const cDbCtrlRequest& asked, cStoredSelection selection,
                                                     std::string& reason) {
  const bool withReading = asked.m_mode == kReading;
  if (!withReading && !asked.m_mode.empty() && asked.m_mode != kStatus)
    reason = UnknownMode(asked, "'status' (also meant by an empty one) and 'reading'");
  if (!reason.empty() || RefusesProfile(asked, "meter statuses", reason)) return nullptr;
  if (!withReading && RefusesRaw(asked, kReading, reason)) return nullptr;
  return std::make_unique<cMeterStatusQuery>(std::move(selection), withReading);
}

cFault cResultRequests::TakePage(cResultTable::cHeld& held, std::string_view name, unsigned int rows, cRecord& answer,
                                 bool& end) {
  cResultPage page(answer, name, std::min({rows, held.left, cResultPage::kMaxRows}));
  cFault fault = m_read([&](cTables& tables) { end = held.result->Fetch(tables, page); });
  held.left -= page.GetCount();
  end = end || held.left == 0;
  return fault;
}

}  // namespace tav::data
