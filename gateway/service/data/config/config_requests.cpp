// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/config/config_requests.h>

#include <gateway/service/data/config/config_apply.h>
#include <tav/framework/trace.h>
#include <tav/service/db_ctrl_protocol.h>

namespace tav::data {

namespace {

using vorn::cMsg;
using vorn::cRecord;

std::string Text(const cMsg& request, std::string_view name) { return request.Record().GetTextPar(name); }
std::uint64_t Idx(const cMsg& request) { return request.Record().GetUInt64Par(db_ctrl::kIdx); }

void Append(const cRemoved& removed, cRecord& answer) {
  for (const std::string& thing : removed) answer.AppendTextPar(db_ctrl::kRemoved, thing);
}

// What was asked for by name and is not there.
void Expect(bool found, const char* kind, const std::string& name, const cPlace& at) {
  if (!found && !name.empty()) at.Fault(kind + (" " + QuotedName(name)) + " is not there");
}

// Who has changed the configuration; what it is now can be asked for.
void TraceChange(const cMsg& request) {
  static vorn::cUnit* const unit = vorn::cUnit::Find("UnitData");
  vorn::Trace(
      unit, 8, "configuration changed: ", [&] { return MessageName(db_ctrl::kProtocol, request.GetType()); }, " by ",
      [&] {
        return request.GetReplyChannel() != nullptr ? request.GetReplyChannel()->GetPeer().ToString() : "itself";
      });
}

}  // namespace

cConfigRequests::cConfigRequests(gateway::cProtocolServer* server, cDataStore* store, const cDriverRegistry* drivers)
    : m_server(server), m_store(store), m_drivers(drivers) {}

cConfigRequests::Handlers cConfigRequests::GetHandlers() {
  const auto by = [this](void (cConfigRequests::*handler)(const cMsg&)) {
    return [this, handler](const cMsg& request) { (this->*handler)(request); };
  };
  return {
      {db_ctrl::eGetInterface, by(&cConfigRequests::GetInterface)},
      {db_ctrl::eSetInterface, by(&cConfigRequests::SetInterface)},
      {db_ctrl::eDeleteInterface, by(&cConfigRequests::DeleteInterface)},
      {db_ctrl::eGetMeter, by(&cConfigRequests::GetMeter)},
      {db_ctrl::eSetMeter, by(&cConfigRequests::SetMeter)},
      {db_ctrl::eDeleteMeter, by(&cConfigRequests::DeleteMeter)},
      {db_ctrl::eGetPushTarget, by(&cConfigRequests::GetPushTarget)},
      {db_ctrl::eSetPushTarget, by(&cConfigRequests::SetPushTarget)},
      {db_ctrl::eDeletePushTarget, by(&cConfigRequests::DeletePushTarget)},
      {db_ctrl::eGetMeterTemplate, by(&cConfigRequests::GetTemplate)},
      {db_ctrl::eSetMeterTemplate, by(&cConfigRequests::SetTemplate)},
      {db_ctrl::eDeleteMeterTemplate, by(&cConfigRequests::DeleteTemplate)},
      {db_ctrl::eApplyConfig, by(&cConfigRequests::Apply)},
  };
}

void cConfigRequests::Question(const cMsg& request, const Work& ask) {
  cConfigFaults faults;
  cRecord answer;
  const cFault fault = m_store->Read([&](cTables& tables) { ask(tables.config, cPlace(faults), answer); });
  if (fault)
    m_server->Refuse(request, fault.text);
  else if (!faults.IsEmpty())
    m_server->Refuse(request, faults.GetText());
  else
    m_server->Answer(request, answer);
}

void cConfigRequests::Change(const cMsg& request, const Work& change) {
  const std::set<std::string> drivers = m_drivers->GetNames();
  cConfigFaults faults;
  cRecord answer;
  cDriverViews before, after;
  const cFault fault = m_store->Change([&](cTables& tables) {
    before = ViewsOf(tables.config, drivers);
    change(tables.config, cPlace(faults), answer);
    if (faults.IsEmpty()) tables.config.CheckLimits(cPlace(faults));
    after = ViewsOf(tables.config, drivers);
    return faults.IsEmpty();
  });
  if (fault) return m_server->Refuse(request, fault.text);
  if (!faults.IsEmpty()) return m_server->Refuse(request, faults.GetText());
  TraceChange(request);
  m_server->Answer(request, answer);
  Notify(before, after);
}

void cConfigRequests::Notify(const cDriverViews& before, const cDriverViews& after) {
  for (const cDriverNotice& notice : Compare(before, after))
    for (const cDriverRegistry::Channel& channel : m_drivers->FindAll(notice.driver))
      m_server->Tell(*channel, db_ctrl::eNotifyDriver, notice.record, "driver '" + notice.driver + "'");
}

// ---- interfaces

void cConfigRequests::GetInterface(const cMsg& request) {
  const std::string name = Text(request, db_ctrl::kName);
  const bool withMeters = request.Record().GetBoolPar(db_ctrl::kWithMeters);
  const bool withLoggers = request.Record().GetBoolPar(db_ctrl::kWithLoggers);
  Question(request, [&](cConfigStore& config, const cPlace& at, cRecord& answer) {
    const auto interfaces = config.GetInterfaces(name);
    Expect(!interfaces.empty(), "interface", name, at);
    for (const cInterfaceRecord& interface : interfaces) {
      cRecord record = interface.ToRecord();
      const eCollectors collectors = withLoggers ? eCollectors::With : eCollectors::Without;
      if (withMeters)
        for (const cMeterConfig& meter : config.GetMetersOf(interface.name, collectors))
          record.AppendRecordPar(db_ctrl::kMeterConfigRecord, MeterForm(meter, collectors));
      answer.AppendRecordPar(db_ctrl::kInterfaceRecord, record);
    }
  });
}

void cConfigRequests::SetInterface(const cMsg& request) {
  Change(request, [&](cConfigStore& config, const cPlace& at, cRecord&) {
    cInterfaceRecord interface;
    if (ReadInterface(request.Record().GetRecordPar(db_ctrl::kInterfaceRecord), at, interface))
      config.SetInterface(interface);
  });
}

void cConfigRequests::DeleteInterface(const cMsg& request) {
  Change(request, [&](cConfigStore& config, const cPlace& at, cRecord& answer) {
    cRemoved removed;
    config.DeleteInterface(Text(request, db_ctrl::kName), at, removed);
    Append(removed, answer);
  });
}

// ---- meters

void cConfigRequests::GetMeter(const cMsg& request) {
  const std::string addr = Text(request, db_ctrl::kAddr);
  Question(request, [&](cConfigStore& config, const cPlace& at, cRecord& answer) {
    const auto meters = config.GetMeters(addr);
    Expect(!meters.empty(), "meter", addr, at);
    for (const cMeterConfig& meter : meters)
      answer.AppendRecordPar(db_ctrl::kMeterConfigRecord, MeterForm(meter, eCollectors::With));
  });
}

void cConfigRequests::SetMeter(const cMsg& request) {
  Change(request, [&](cConfigStore& config, const cPlace& at, cRecord&) {
    cMeterConfig meter;
    if (ReadMeter(request.Record().GetRecordPar(db_ctrl::kMeterConfigRecord), at, meter)) config.SetMeter(meter, at);
  });
}

void cConfigRequests::DeleteMeter(const cMsg& request) {
  Change(request, [&](cConfigStore& config, const cPlace& at, cRecord& answer) {
    const cMeterKey key{Text(request, db_ctrl::kMeterDashId), Text(request, db_ctrl::kMedium),
                        Text(request, db_ctrl::kManufactor)};
    cRemoved removed;
    config.DeleteMeter(key, at, removed);
    Append(removed, answer);
  });
}

// ---- push targets

void cConfigRequests::GetPushTarget(const cMsg& request) {
  const std::string name = Text(request, db_ctrl::kName);
  Question(request, [&](cConfigStore& config, const cPlace& at, cRecord& answer) {
    const auto targets = config.GetPushTargets(name);
    Expect(!targets.empty(), "push target", name, at);
    for (const cPushTarget& target : targets) answer.AppendRecordPar(db_ctrl::kPushTargetRecord, target.ToRecord());
  });
}

void cConfigRequests::SetPushTarget(const cMsg& request) {
  Change(request, [&](cConfigStore& config, const cPlace& at, cRecord& answer) {
    const vorn::cRecordPar record = request.Record().GetPar(db_ctrl::kPushTargetRecord);
    if (!record.IsValid()) return at.Fault("parameter \"pushtarget-record\" is missing: the push target is not valid");
    cPushTarget target;
    if (!ReadPushTarget(request.Record().GetRecordPar(db_ctrl::kPushTargetRecord), at, target)) return;
    answer.AppendUInt64Par(db_ctrl::kIdx, static_cast<std::uint64_t>(config.SetPushTarget(target, at)));
  });
}

void cConfigRequests::DeletePushTarget(const cMsg& request) {
  Change(request, [&](cConfigStore& config, const cPlace& at, cRecord&) {
    cRemoved removed;
    config.DeletePushTarget(Idx(request), Text(request, db_ctrl::kName), at, removed);
  });
}

// ---- templates

void cConfigRequests::GetTemplate(const cMsg& request) {
  const std::string name = Text(request, db_ctrl::kName);
  Question(request, [&](cConfigStore& config, const cPlace& at, cRecord& answer) {
    const auto templates = config.GetTemplates(name);
    Expect(!templates.empty(), "template", name, at);
    for (const cStoredTemplate& stored : templates) {
      answer.AppendUInt64Par(db_ctrl::kIdx, static_cast<std::uint64_t>(stored.idx));
      answer.AppendRecordPar(db_ctrl::kMeterTemplateRecord, stored.record);
    }
  });
}

void cConfigRequests::SetTemplate(const cMsg& request) {
  Change(request, [&](cConfigStore& config, const cPlace& at, cRecord& answer) {
    std::string name;
    cRecord form;
    if (ReadTemplate(request.Record().GetRecordPar(db_ctrl::kMeterTemplateRecord), at, name, form))
      answer.AppendUInt64Par(db_ctrl::kIdx, static_cast<std::uint64_t>(config.SetTemplate(name, form)));
  });
}

void cConfigRequests::DeleteTemplate(const cMsg& request) {
  Change(request, [&](cConfigStore& config, const cPlace& at, cRecord&) {
    cRemoved removed;
    config.DeleteTemplate(Idx(request), Text(request, db_ctrl::kName), at, removed);
  });
}

// ---- all of it

void cConfigRequests::Apply(const cMsg& request) {
  Change(request, [&](cConfigStore& config, const cPlace& at, cRecord&) {
    cConfigApply apply(config, at);
    if (apply.Read(request.Record())) apply.Set();
  });
}

}  // namespace tav::data
