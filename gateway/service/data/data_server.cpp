// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/data_server.h>

#include <cstring>

#include <gateway/database/schema.h>
#include <gateway/service/data/page.h>
#include <gateway/service/data/query/value_row.h>
#include <tav/framework/trace.h>
#include <tav/service/db_ctrl_protocol.h>

namespace tav::data {

namespace {

using vorn::cMsg;
using vorn::cRecord;

std::string TextPar(const cMsg& request, std::string_view name) { return request.Record().GetTextPar(name); }

// The cursor of a request: false when there is none that is one. An absent one leaves the value alone.
template <typename Cursor>
bool ReadCursor(const cMsg& request, Cursor& cursor) {
  const vorn::cRecordPar after = request.Record().GetPar(db_ctrl::kAfter);
  if (!after.IsValid()) return true;
  const std::string_view bytes = after.GetBytesView();
  if (bytes.size() != sizeof cursor) return false;
  std::memcpy(&cursor, bytes.data(), sizeof cursor);
  return true;
}

template <typename Cursor>
std::string_view BytesOf(const Cursor& cursor) {
  return {reinterpret_cast<const char*>(&cursor), sizeof cursor};
}

constexpr const char* kNoCursor = "parameter \"after\": no cursor of this service";

unsigned int UIntPar(const cMsg& request, std::string_view name, unsigned int absent) {
  const vorn::cRecordPar parameter = request.Record().GetPar(name);
  return parameter.IsUInt() ? parameter.GetUInt() : absent;
}

void AppendContents(cTables& tables, const std::string& store, cRecord& to) {
  tables.values.Get(store, "", [&](const std::string& key, const std::string& value) {
    cRecord pair;
    pair.AppendTextPar(db_ctrl::kKey, key);
    pair.AppendTextPar(db_ctrl::kValue, value);
    to.AppendRecordPar(db_ctrl::kStoreValue, pair);
    return true;
  });
}

cRecord MeterRow(const cMeterRow& meter) {
  cRecord row;
  row.AppendTextPar(db_ctrl::kMeterId, meter.meterId);
  row.AppendTextPar(db_ctrl::kAddr, meter.addr);
  row.AppendTextPar(db_ctrl::kManufactor, meter.manufactor);
  row.AppendTextPar(db_ctrl::kMedium, meter.medium);
  row.AppendTextPar(db_ctrl::kDriver, meter.driver);
  row.AppendTextPar("interface-name", meter.interfaceName);
  row.AppendUIntPar("first-timestamp", meter.first);
  row.AppendUIntPar(db_ctrl::kTimestamp, meter.last);
  row.AppendUInt64Par("values", meter.values);
  return row;
}

cRecord CounterRow(const char* name, std::uint64_t value) {
  cRecord row;
  row.AppendTextPar(db_ctrl::kName, name);
  row.AppendUInt64Par(db_ctrl::kValue, value);
  return row;
}

cPage PageOf(const cMsg& request, cRecord& answer) {
  return {request.Record(), answer, cDataServer::kDefaultRows, cDataServer::kMaxRows, cDataServer::kMaxAnswer};
}

bool MayChangeCollectors(unsigned int request) {
  return request == db_ctrl::eSetMeter || request == db_ctrl::eDeleteMeter || request == db_ctrl::eApplyConfig;
}

}  // namespace

cDataServer::cDataServer(gateway::cServiceHost* host, cDataStore* store, cProfileLogger::WallClock wallClock)
    : cProtocolServer(host, db_ctrl::kProtocol),
      m_store(store),
      m_group(host, this, store),
      m_config(this, store, &m_drivers),
      m_commands(host, this, store, &m_drivers),
      m_results(host),
      m_queries(this, &m_results, [this](const auto& ask) { return Read(ask); }),
      m_profiles(host, store, std::move(wallClock)),
      m_sql(
          this, store, &m_results, [this] { m_group.Commit(); }, [this] { m_profiles.Wake(); }) {
  // Readings are judged one by one: a bad one must not lose the good ones.
  On(
      db_ctrl::eStoreMeterRec, [this](const cMsg& request) { m_group.Add(request); }, eCheck::Own);
  On(db_ctrl::eStoreEvent, [this](const cMsg& request) { m_group.Add(request); });
  On(db_ctrl::eSetStoreValue, [this](const cMsg& request) { m_group.Add(request); });
  On(db_ctrl::eRegisterDriver, [this](const cMsg& request) { RegisterDriver(request); });
  On(db_ctrl::eAttachStore, [this](const cMsg& request) { AttachStore(request); });
  On(db_ctrl::eListMeters, [this](const cMsg& request) { ListMeters(request); });
  On(db_ctrl::eListLastValues, [this](const cMsg& request) { ListLastValues(request); });
  On(db_ctrl::eListValues, [this](const cMsg& request) { ListValues(request); });
  On(db_ctrl::eListEvents, [this](const cMsg& request) { ListEvents(request); });
  On(db_ctrl::eListStores, [this](const cMsg& request) { ListStores(request); });
  On(db_ctrl::eGetStatistics, [this](const cMsg& request) { GetStatistics(request); });
  for (const auto& [type, handler] : m_config.GetHandlers())
    On(type, [this, handler = handler](const cMsg& request) {
      handler(request);
      if (MayChangeCollectors(request.GetType())) m_profiles.Wake();
    });
  for (const auto& [type, handler] : m_commands.GetHandlers()) On(type, handler);
  for (const auto& [type, handler] : m_queries.GetHandlers()) On(type, handler);
  for (const auto& [type, handler] : m_sql.GetHandlers()) On(type, handler);
}

cDataServer::~cDataServer() { m_group.Finish(); }

void cDataServer::OnClose(vorn::cScmChannel& channel) {
  m_drivers.Remove(channel);
  m_commands.OnClose(channel);
  m_results.ReleaseAll(&channel);
}

cFault cDataServer::Read(const std::function<void(cTables&)>& ask) {
  m_group.Commit();
  return m_store->Read(ask);
}

void cDataServer::Question(const cMsg& request, const Ask& ask) {
  cRecord answer;
  const cFault fault = Read([&](cTables& tables) { ask(tables, answer); });
  if (fault)
    Refuse(request, fault.text);
  else
    Answer(request, answer);
}

void cDataServer::RegisterDriver(const cMsg& request) {
  static vorn::cUnit* const unit = vorn::cUnit::Find("UnitData");
  const std::string driver = TextPar(request, db_ctrl::kDriver);
  if (driver.empty()) return Refuse(request, "the name of the driver is empty");
  m_drivers.Register(request.GetReplyChannel(), driver);
  vorn::Trace(unit, 16, "driver '", driver, "' registered by ", [&] {
    return request.GetReplyChannel() != nullptr ? request.GetReplyChannel()->GetPeer().ToString() : "this process";
  });
  Question(request, [&](cTables& tables, cRecord& answer) { AppendContents(tables, driver, answer); });
}

void cDataServer::AttachStore(const cMsg& request) {
  const std::string store = TextPar(request, db_ctrl::kStore);
  if (store.empty()) return Refuse(request, "the name of the store is empty");
  Question(request, [&](cTables& tables, cRecord& answer) { AppendContents(tables, store, answer); });
}

void cDataServer::ListMeters(const cMsg& request) {
  const std::string after = request.Record().GetDataPar(db_ctrl::kAfter).AsText();
  Question(request, [&](cTables& tables, cRecord& answer) {
    cPage page = PageOf(request, answer);
    tables.query.ListMeters(after, [&](const cMeterRow& meter) { return page.Add(MeterRow(meter), meter.meterId); });
  });
}

void cDataServer::ListLastValues(const cMsg& request) {
  cLastCursor after;
  if (!ReadCursor(request, after)) return Refuse(request, kNoCursor);
  Question(request, [&](cTables& tables, cRecord& answer) {
    cPage page = PageOf(request, answer);
    tables.query.ListLast(
        TextPar(request, db_ctrl::kMeterId), after,
        [&](const cValueRow& value, const cLastCursor& at) { return page.Add(ValueRow(value, true), BytesOf(at)); });
  });
}

void cDataServer::ListValues(const cMsg& request) {
  cValueSelection selection;
  selection.meterId = TextPar(request, db_ctrl::kMeterId);
  if (const std::string obis = TextPar(request, db_ctrl::kObisId); !obis.empty()) selection.obis = {obis};
  selection.from = UIntPar(request, db_ctrl::kFromUtc, selection.from);
  selection.to = UIntPar(request, db_ctrl::kToUtc, selection.to);
  if (const vorn::cRecordPar after = request.Record().GetPar(db_ctrl::kAfter); after.IsValid()) {
    selection.after = cValueCursor::FromBytes(after.GetBytesView());
    if (!selection.after) return Refuse(request, kNoCursor);
  }
  Question(request, [&](cTables& tables, cRecord& answer) {
    cPage page = PageOf(request, answer);
    const auto end = tables.query.ListValues(selection, [&](const cValueRow& value, const cValueCursor& at) {
      return page.Add(ValueRow(value, false), at.ToBytes());
    });
    if (end) page.EndAt(end->ToBytes());
  });
}

void cDataServer::ListEvents(const cMsg& request) {
  const unsigned int from = UIntPar(request, db_ctrl::kFromUtc, 0);
  cEventCursor after{from, -1};
  if (!ReadCursor(request, after)) return Refuse(request, kNoCursor);
  Question(request, [&](cTables& tables, cRecord& answer) {
    cPage page = PageOf(request, answer);
    tables.events.List(after, UIntPar(request, db_ctrl::kToUtc, 0xFFFFFFFF), [&](const cEventRow& event) {
      cRecord row;
      row.AppendUIntPar(db_ctrl::kTimestamp, static_cast<unsigned int>(event.at.time));
      row.AppendRecordPar("event", event.record);
      return page.Add(row, BytesOf(event.at));
    });
  });
}

void cDataServer::ListStores(const cMsg& request) {
  const std::string store = TextPar(request, db_ctrl::kStore);
  const std::string after = request.Record().GetDataPar(db_ctrl::kAfter).AsText();
  Question(request, [&](cTables& tables, cRecord& answer) {
    cPage page = PageOf(request, answer);
    const auto add = [&](const std::string& name, const std::string* key, const std::string* value) {
      cRecord row;
      row.AppendTextPar(db_ctrl::kStore, name);
      if (key != nullptr) row.AppendTextPar(db_ctrl::kKey, *key);
      if (value != nullptr) row.AppendTextPar(db_ctrl::kValue, *value);
      return page.Add(row, key != nullptr ? *key : name);
    };
    if (store.empty())
      tables.values.List(after, [&](const std::string& name) { return add(name, nullptr, nullptr); });
    else
      tables.values.Get(store, after,
                        [&](const std::string& key, const std::string& value) { return add(store, &key, &value); });
  });
}

void cDataServer::GetStatistics(const cMsg& request) {
  Question(request, [&](cTables& tables, cRecord& answer) {
    const cStoreGroup::cCounters& counters = m_group.GetCounters();
    const std::pair<const char*, std::uint64_t> rows[] = {
        {"meters", tables.query.CountMeters()},      {"values", tables.query.CountValues()},
        {"events", tables.events.Count()},           {"file-bytes", m_store->GetFileBytes()},
        {"wal-bytes", m_store->GetWalBytes()},       {"schema-version", static_cast<std::uint64_t>(kSchemaVersion)},
        {"drivers", m_drivers.GetCount()},           {"clients", GetChannels().size()},
        {"results", m_results.GetCount()},           {"commits-since-start", counters.commits},
        {"readings-since-start", counters.readings}, {"duplicates-since-start", counters.duplicates},
        {"rejected-since-start", counters.rejected}, {"refused-since-start", counters.refused},
        {"events-since-start", counters.events},
    };
    for (const auto& [name, value] : rows) answer.AppendRecordPar(db_ctrl::kRow, CounterRow(name, value));
  });
}

}  // namespace tav::data
