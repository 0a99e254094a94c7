// SPDX-License-Identifier: Apache-2.0
#include <tav/obis/obis_proxy.h>

#include <tav/framework/trace.h>
#include <tav/identified_msg.h>
#include <tav/obis/obis_protocol.h>
#include <tav/record/record_fields.h>
#include <tav/unit_tav.h>

namespace tav {

namespace {

constexpr int kKeepAlive = 2;
constexpr int kFailure = 2;
constexpr int kProgress = 16;

}  // namespace

cObisProxy::cObisProxy(vorn::cScmService* service)
    : cScmServiceIO(service, std::string(obis::kProtocol.GetService()), kKeepAlive) {}

cObisProxy::~cObisProxy() = default;

// ---- the channel

void cObisProxy::OnConnect() {
  vorn::Trace(UnitTAV(), kProgress, "ObisProxy connection established");
  Send(IdentifiedMsg(obis::eGetMap));
}

void cObisProxy::OnClose() {
  loaded = false;
  vorn::Trace(UnitTAV(), kProgress, "ObisProxy connection shutdown");
}

bool cObisProxy::DispatchMessage(const vorn::cMsg& msg) {
  if (msg.GetType() == obis::eMap) {
    map.Clear();
    map.FromRecord(msg.Record());
    loaded = true;
    return true;
  }
  if (msg.GetType() != obis::eChanged) return false;
  const vorn::cMsg answer = IdentifiedMsg(TakeChange(msg.Record()) ? obis::eChangeApplied : obis::eChangeNotApplied);
  if (const auto& channel = msg.GetReplyChannel()) channel->Send(answer);
  return true;
}

bool cObisProxy::TakeChange(const vorn::cRecord& change) {
  const vorn::cRecordPar command = change.GetPar(obis::kCommand);
  const vorn::cRecordPar par = change.GetPar(obis::kEntry);
  vorn::cRecord form;
  if (!IsFilled(command, vorn::eParText) || !IsFilled(par, vorn::eParRecord) || !par.GetRecord(form)) return false;
  cObisMapEntry entry;
  if (command.GetBytesView() == "set" && entry.FromRecord(form)) return map.Set(entry);
  if (command.GetBytesView() == "remove") {
    map.Remove(form.GetPar("ID").GetUInt64());  // of any integer type, as for "set"
    return true;
  }
  // A "set" whose rule is refused is told here as well.
  vorn::Trace(UnitTAV(), kFailure, "dbctrl[ObisNotify] unknown command ", command.GetBytesView());
  return false;
}

// ---- rules

bool cObisProxy::SetEntry(vorn::cUuid& id, cObisMapEntry& entry) { return SendEntry(obis::eSetRule, id, entry); }

bool cObisProxy::SetEntry(cObisMapEntry& entry) {
  vorn::cUuid id;
  return SetEntry(id, entry);
}

bool cObisProxy::RemoveEntry(vorn::cUuid& id, cObisMapEntry& entry) { return SendEntry(obis::eRemoveRule, id, entry); }

bool cObisProxy::RemoveEntry(cObisMapEntry& entry) {
  vorn::cUuid id;
  return RemoveEntry(id, entry);
}

void cObisProxy::Clear() { map.Clear(); }

bool cObisProxy::SendEntry(unsigned int type, vorn::cUuid& id, const cObisMapEntry& entry) {
  vorn::cMsg msg = IdentifiedMsg(type, id);
  msg.Record().AppendRecordPar(obis::kEntry, entry.ToRecord());
  if (Send(msg) > 0) return true;
  // One text for storing and deleting.
  vorn::Trace(UnitTAV(), kFailure, "dbctrl[GetObisEntry] send failed, msg=", [&] { return msg.ToString(); });
  return false;
}

}  // namespace tav
