// SPDX-License-Identifier: Apache-2.0
#include <tav/service/status_proxy.h>

#include <utility>

#include <tav/framework/helper.h>
#include <tav/framework/trace.h>
#include <tav/identified_msg.h>
#include <tav/service/status_protocol.h>
#include <tav/unit_tav.h>

namespace tav {

namespace {

constexpr int kProgress = 16;

}  // namespace

cStatusProxy::cStatusProxy(vorn::cScmService* service)
    : cScmServiceIO(service, std::string(status::kProtocol.GetService())) {}

cStatusProxy::~cStatusProxy() = default;

// ---- the channel

void cStatusProxy::OnConnect() {
  vorn::Trace(UnitTAV(), kProgress, "StatusProxy connection established");
  Send(MakeFullSet(status::eFullSet));
}

void cStatusProxy::OnClose() {
  m_synced = false;
  vorn::Trace(UnitTAV(), kProgress, "StatusProxy connection shutdown");
}

bool cStatusProxy::DispatchMessage(const vorn::cMsg& msg) {
  switch (msg.GetType()) {
    case status::eValues:
      Merge(msg.Record());
      m_synced = true;
      return true;
    case status::eReplace:
      m_values.clear();
      Merge(msg.Record());
      if (const auto& channel = msg.GetReplyChannel()) channel->Send(IdentifiedMsg(status::eReplaced));
      return true;
    case status::eAsk:
      // A question has a channel to answer on; without one there is nobody to answer, and no reason to fall over.
      if (const auto& channel = msg.GetReplyChannel()) channel->Send(MakeFullSet(status::eAllValues));
      return true;
    case status::eAccepted:
    case status::eNoted:
      return true;
    default:
      return false;
  }
}

void cStatusProxy::Merge(const vorn::cRecord& values) {
  for (vorn::cRecordPar par = values.First(); par.IsValid(); par = par.Next())
    m_values.Set(par.GetName(), par.GetText());
}

vorn::cMsg cStatusProxy::MakeFullSet(unsigned int type) const {
  vorn::cMsg msg = IdentifiedMsg(type);
  for (const auto& [name, value] : m_values) msg.Record().AppendTextPar(name, value);
  return msg;
}

void cStatusProxy::SendChange(const vorn::cRecord& change) {
  vorn::cMsg msg = IdentifiedMsg(status::eChange);
  msg.Record() = change;
  Send(msg);
}

// ---- values

void cStatusProxy::SingleSet(const std::string& name, const std::string& value) {
  vorn::Trace(UnitTAV(), kProgress, "SingleSet: name:", name, " value:", value);
  const auto known = m_values.find(name);
  if (known != m_values.end() && known->second == value) return;
  m_values.Set(name, value);
  vorn::cRecord change;
  change.AppendTextPar(name, value);
  SendChange(change);
}

void cStatusProxy::MultiSet(vorn::cMap<std::string, std::string> values) {
  if (values.empty()) return;
  vorn::cRecord change;
  for (auto& entry : values) {
    change.AppendTextPar(entry.first, entry.second);
    m_values.insert_or_assign(entry.first, std::move(entry.second));
  }
  SendChange(change);
}

void cStatusProxy::SingleRemove(const std::string& name) {
  vorn::cRecord change;
  change.AppendTextPar(name, nullptr);  // first: the name may be the removed one's own
  if (name == status::kAll)
    m_values.clear();
  else
    m_values.Remove(name);
  SendChange(change);
}

void cStatusProxy::MultiRemove(std::list<std::string>& names) {
  if (names.empty()) return;
  vorn::cRecord change;
  for (const std::string& name : names) {
    m_values.Remove(name);
    change.AppendTextPar(name, nullptr);
  }
  SendChange(change);
}

void cStatusProxy::MultiRemove(const std::string& names) {
  const auto tokens = vorn::cHelper::GetStringTokens(names, ",");
  std::list<std::string> list(tokens.begin(), tokens.end());
  MultiRemove(list);
}

void cStatusProxy::Clear() { SingleRemove(status::kAll); }

bool cStatusProxy::Get(const std::string& name, std::string& value) const { return m_values.Get(name, value); }

unsigned int cStatusProxy::GetValues(const std::string& prefix, vorn::cMap<std::string, std::string>& out,
                                     const std::string& separator) {
  vorn::cMap<std::string, std::string> found;
  for (const auto& [name, value] : m_values) {
    if (!prefix.empty()) {
      const auto tokens = vorn::cHelper::GetStringTokens(name, separator);
      if (tokens.size() < 2 || tokens.front() != prefix) continue;
    }
    found.Set(name, value);
  }
  out.swap(found);
  return static_cast<unsigned int>(out.size());
}

std::string cStatusProxy::ToString() const {
  std::string text;
  for (const auto& [name, value] : m_values) {
    if (!text.empty()) text += '\n';
    text.append(name).append("=").append(value);
  }
  return text;
}

}  // namespace tav
