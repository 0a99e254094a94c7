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

bool IsSame(const cObisMapEntry& a, const cObisMapEntry& b) {
  return a.GetName() == b.GetName() && a.GetObisID() == b.GetObisID() && a.GetMap() == b.GetMap();
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
  const std::vector<cChange> changes{{rule.GetID(), rule}};
  if (const std::string fault = Store(changes); !fault.empty()) return RefuseChange(request, fault);
  Answer(request);
  Tell(changes);
}

void cObisServer::RemoveRule(const vorn::cMsg& request) {
  const vorn::cRecordPar id = request.Record().GetRecordPar(obis::kEntry).GetPar("ID");
  if (!id.IsUInt64()) return RefuseChange(request, "rule: \"ID\" is missing or no uint64");
  if (!m_map.GetEntries().Contains(id.GetUInt64())) return RefuseChange(request, NoSuchRule(id.GetUInt64()));
  const std::vector<cChange> changes{{id.GetUInt64(), {}}};
  if (const std::string fault = Store(changes); !fault.empty()) return RefuseChange(request, fault);
  Answer(request);
  Tell(changes);
}

void cObisServer::ApplyMap(const vorn::cMsg& request) {
  cObisMap wanted;
  if (const std::string fault = ReadRules(request.Record().GetRecordPar(obis::kObisMap), kMaxTextBytes, wanted);
      !fault.empty())
    return RefuseChange(request, fault);
  const std::vector<cChange> changes = Difference(wanted, request.Record().GetBoolPar(obis::kReplace));
  if (const std::string fault = Store(changes); !fault.empty()) return RefuseChange(request, fault);
  vorn::cRecord answer;
  answer.AppendUIntPar(obis::kChanged, static_cast<unsigned int>(changes.size()));
  Answer(request, answer);
  Tell(changes);
}

void cObisServer::RefuseChange(const vorn::cMsg& request, const std::string& reason) {
  ++m_counters.refused;
  Refuse(request, reason);
}

// ---- changes

std::vector<cObisServer::cChange> cObisServer::Difference(const cObisMap& wanted, bool replace) const {
  std::vector<cChange> changes;
  const auto& present = m_map.GetEntries();
  if (replace)
    for (const auto& [id, rule] : present)
      if (!wanted.GetEntries().Contains(id)) changes.push_back({id, {}});
  for (const auto& [id, rule] : wanted.GetEntries()) {
    const auto known = present.find(id);
    if (known == present.end() || !IsSame(known->second, rule)) changes.push_back({id, rule});
  }
  return changes;
}

std::string cObisServer::CheckRoom(const std::vector<cChange>& changes) const {
  cObisMap after = m_map;
  for (const cChange& change : changes)
    if (change.rule)
      after.Set(*change.rule);
    else
      after.Remove(change.id);
  if (after.GetEntries().size() > kMaxRules) return "there would be more than " + std::to_string(kMaxRules) + " rules";
  if (after.ToRecord().GetBytes().size() > kMaxMapBytes)
    return "the map would be larger than " + std::to_string(kMaxMapBytes) + " bytes";
  return {};
}

std::string cObisServer::Store(const std::vector<cChange>& changes) {
  if (std::string full = CheckRoom(changes); !full.empty()) return full;
  const data::cFault fault = Write([&](cObisRuleTable& table) {
    for (const cChange& change : changes)
      if (change.rule)
        table.Set(*change.rule);
      else
        table.Remove(change.id);
  });
  if (fault) return fault.text;
  for (const cChange& change : changes) {
    if (change.rule)
      m_map.Set(*change.rule);
    else
      m_map.Remove(change.id);
    ++(change.rule ? m_counters.sets : m_counters.removes);
  }
  return {};
}

// ---- telling the clients

void cObisServer::Tell(const std::vector<cChange>& changes) {
  for (const cChange& change : changes) Tell(change);
}

void cObisServer::Tell(const cChange& change) {
  vorn::cMsg msg(obis::eChanged);
  vorn::cUuid id;
  id.Create();
  msg.SetId(id);
  vorn::cRecord entry;
  if (change.rule)
    entry = change.rule->ToRecord();
  else
    entry.AppendUInt64Par("ID", change.id);
  msg.Record().AppendTextPar(obis::kCommand, change.rule ? "set" : "remove");
  msg.Record().AppendRecordPar(obis::kEntry, entry);
  for (const auto& channel : GetChannels()) {
    if (channel->Send(msg) == 1) {
      ++m_counters.told;
      ++m_unanswered[channel.get()];
    } else if (channel->IsOpen()) {
      vorn::Trace(Unit(), 4, channel->GetPeer().ToString(), " does not read the changes of rules, it is disconnected");
      channel->Close();
    }
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
