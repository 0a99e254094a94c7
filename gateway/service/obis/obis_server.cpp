// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/obis/obis_server.h>

#include <gateway/service/obis/rule_form.h>
#include <tav/framework/trace.h>
#include <tav/obis/obis_protocol.h>

namespace tav::gateway {

namespace {

vorn::cUnit* Unit() {
  static vorn::cUnit* const unit = vorn::cUnit::Find("UnitObis");
  return unit;
}

// Empty when a map of that size can be kept.
std::string FaultOfSize(const cObisMap& map) {
  if (map.GetEntries().size() > cObisServer::kMaxRules)
    return "there would be more than " + std::to_string(cObisServer::kMaxRules) + " rules";
  if (map.ToRecord().GetBytes().size() > cObisServer::kMaxMapBytes)
    return "the map would be larger than " + std::to_string(cObisServer::kMaxMapBytes) + " bytes";
  return {};
}

std::string NoSuchRule(unsigned long long id) { return "there is no rule with the ID " + std::to_string(id); }

}  // namespace

cObisServer::cObisServer(cServiceHost* host, cObisStore* store, const cObisMap& shipped)
    : cProtocolServer(host, obis::kProtocol), m_store(store) {
  On(obis::eGetMap, [this](const vorn::cMsg& request) { GetMap(request); });
  On(obis::eSetRule, [this](const vorn::cMsg& request) { SetRule(request); });
  On(obis::eRemoveRule, [this](const vorn::cMsg& request) { RemoveRule(request); });
  On(obis::eApplyMap, [this](const vorn::cMsg& request) { ApplyMap(request); });
  for (const unsigned int type : {obis::eChangeApplied, obis::eChangeNotApplied})
    On(type, [this](const vorn::cMsg& answer) { CountAnswer(answer); });
  Load(shipped);
}

cObisServer::~cObisServer() = default;

std::size_t cObisServer::CountUnanswered() const {
  std::size_t count = 0;
  for (const auto& [channel, unanswered] : m_unanswered) count += unanswered;
  return count;
}

void cObisServer::OnClose(vorn::cScmChannel& channel) { m_unanswered.erase(&channel); }

// ---- the rules at the start

void cObisServer::Load(const cObisMap& shipped) {
  cObisMap stored;
  const data::cFault fault = Write([&](cObisRuleTable& table) {
    stored.Clear();
    if (!table.IsFurnished())
      for (const auto& [id, rule] : shipped.GetEntries()) table.Set(rule);
    table.MarkFurnished();
    table.List([&](const cObisMapEntry& rule) { stored.Add(rule); });
  });
  m_fault = fault.text;
  if (fault)
    vorn::Trace(Unit(), 2, "the rules cannot be read: ", fault.text);
  else
    m_map = stored;
}

// Rules change seldom, and readings are stored all the time.
data::cFault cObisServer::Write(const std::function<void(cObisRuleTable&)>& change) {
  return data::cDatabase::Patiently([&] {
    return m_store->Change([&](cObisRuleTable& table) {
      change(table);
      return true;
    });
  });
}

// ---- requests

void cObisServer::GetMap(const vorn::cMsg& request) {
  vorn::cRecord answer;
  answer.AppendRecordPar(obis::kObisMap, m_map.ToRecord());
  Answer(request, answer);
}

void cObisServer::SetRule(const vorn::cMsg& request) {
  cObisMapEntry rule;
  if (const std::string fault = ReadRule(request.Record().GetRecordPar(obis::kEntry), kMaxTextBytes, rule);
      !fault.empty())
    return RefuseChange(request, fault);
  const Changes changes{{rule.GetID(), rule}};
  if (const std::string fault = Store(changes); !fault.empty()) return RefuseChange(request, fault);
  Answer(request);
  TellAll(changes);
}

void cObisServer::RemoveRule(const vorn::cMsg& request) {
  const vorn::cRecordPar id = request.Record().GetRecordPar(obis::kEntry).GetPar("ID");
  if (!id.IsUInt64()) return RefuseChange(request, "rule: \"ID\" is missing or no uint64");
  if (!m_map.GetEntries().Contains(id.GetUInt64())) return RefuseChange(request, NoSuchRule(id.GetUInt64()));
  const Changes changes{{id.GetUInt64(), {}}};
  if (const std::string fault = Store(changes); !fault.empty()) return RefuseChange(request, fault);
  Answer(request);
  TellAll(changes);
}

void cObisServer::ApplyMap(const vorn::cMsg& request) {
  cObisMap wanted;
  if (const std::string fault = ReadRules(request.Record().GetRecordPar(obis::kObisMap), kMaxTextBytes, wanted);
      !fault.empty())
    return RefuseChange(request, fault);
  const Changes changes = rules::Difference(m_map, wanted, request.Record().GetBoolPar(obis::kReplace));
  if (const std::string fault = Store(changes); !fault.empty()) return RefuseChange(request, fault);
  vorn::cRecord answer;
  answer.AppendUIntPar(obis::kChanged, static_cast<unsigned int>(changes.size()));
  Answer(request, answer);
  TellAll(changes);
}

void cObisServer::RefuseChange(const vorn::cMsg& request, const std::string& reason) {
  ++m_counters.refused;
  Refuse(request, reason);
}

// ---- changes

std::string cObisServer::Store(const Changes& changes) {
  cObisMap after = m_map;
  rules::Apply(changes, after);
  if (const std::string full = FaultOfSize(after); !full.empty()) return full;
  const data::cFault fault = Write([&](cObisRuleTable& table) {
    for (const rules::cRuleChange& change : changes)
      if (change.rule)
        table.Set(*change.rule);
      else
        table.Remove(change.id);
  });
  if (fault) return fault.text;
  m_map = after;
  for (const rules::cRuleChange& change : changes) ++(change.rule ? m_counters.sets : m_counters.removes);
  return {};
}

// ---- telling the clients

void cObisServer::TellAll(const Changes& changes) {
  for (const rules::cRuleChange& change : changes) TellAll(change);
}

void cObisServer::TellAll(const rules::cRuleChange& change) {
  vorn::cRecord entry;
  if (change.rule)
    entry = change.rule->ToRecord();
  else
    entry.AppendUInt64Par("ID", change.id);
  vorn::cRecord told;
  told.AppendTextPar(obis::kCommand, change.rule ? "set" : "remove");
  told.AppendRecordPar(obis::kEntry, entry);
  for (const auto& channel : GetChannels()) {
    if (!Tell(*channel, obis::eChanged, told)) continue;
    ++m_counters.told;
    ++m_unanswered[channel.get()];
  }
}

void cObisServer::CountAnswer(const vorn::cMsg& answer) {
  const auto unanswered = m_unanswered.find(answer.GetReplyChannel().get());
  if (unanswered == m_unanswered.end() || unanswered->second == 0) return;
  --unanswered->second;
  if (answer.GetType() == obis::eChangeApplied) {
    ++m_counters.applied;
    return;
  }
  ++m_counters.notApplied;
  vorn::Trace(Unit(), 4, answer.GetReplyChannel()->GetPeer().ToString(), " could not take a change of the rules");
}

}  // namespace tav::gateway
