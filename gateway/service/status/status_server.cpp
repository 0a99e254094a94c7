// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/status/status_server.h>

#include <signal.h>

#include <algorithm>
#include <cerrno>

#include <tav/framework/time.h>
#include <tav/service/status_protocol.h>

namespace tav::gateway {

namespace {

vorn::cRecord Row(const std::string& name, const cStatusValue& value) {
  vorn::cRecord row;
  row.AppendTextPar(status::kName, name);
  row.AppendTextPar(status::kValue, value.value);
  row.AppendTextPar(status::kProcess, value.process);
  row.AppendUIntPar(status::kPid, value.pid);
  row.AppendBoolPar(status::kConnected, value.client != 0);
  row.AppendUIntPar(status::kChanged, value.changed);
  return row;
}

}  // namespace

cStatusServer::cStatusServer(cServiceHost* host, cStatusStore* store)
    : cProtocolServer(host, status::kProtocol),
      m_host(host),
      m_keeper(host, store, &m_set),
      m_tell(host, [this] { TellAll(); }),
      m_expiry(host, [this] { Expire(); }) {
  m_set.SetIsRunning([](unsigned int pid) { return kill(static_cast<pid_t>(pid), 0) == 0 || errno == EPERM; });
  // A value may be named like the key that stands for all names, and be of any type.
  On(
      status::eChange, [this](const vorn::cMsg& request) { Change(request); }, eCheck::Own);
  On(
      status::eFullSet, [this](const vorn::cMsg& request) { TakeFullSet(request); }, eCheck::Own);
  On(
      status::eAllValues, [this](const vorn::cMsg& answer) { TakeAnswer(answer); }, eCheck::Own);
  On(status::eReplaced, [this](const vorn::cMsg& answer) {
    m_set.Replaced(ClientOf(answer.GetReplyChannel().get()));
    Wake();
  });
  On(status::eList, [this](const vorn::cMsg& request) { List(request); });
  m_expiry.Start(kExpiryMs, kExpiryMs);
}

cStatusServer::~cStatusServer() = default;

// ---- clients

void cStatusServer::OnConnect(vorn::cScmChannel& channel) {
  m_clients[&channel] = m_set.Join(channel.GetPeer().processName, static_cast<unsigned int>(channel.GetPeer().pid));
}

void cStatusServer::OnClose(vorn::cScmChannel& channel) {
  const auto client = m_clients.find(&channel);
  if (client == m_clients.end()) return;
  m_set.Leave(client->second, Now());
  m_clients.erase(client);
}

std::uint64_t cStatusServer::ClientOf(const vorn::cScmChannel* channel) const {
  const auto client = m_clients.find(channel);
  return client != m_clients.end() ? client->second : 0;
}

cStatusMoment cStatusServer::Now() const { return {vorn::cTime::Now().GetSeconds(), m_host->GetClock().Now()}; }

// ---- what clients say

void cStatusServer::Change(const vorn::cMsg& request) {
  ++m_counters.changes;
  const std::string fault = m_set.Change(ClientOf(request.GetReplyChannel().get()), request.Record(), Now());
  if (!fault.empty()) return Refuse(request, fault);
  Answer(request);
  Wake();
}

void cStatusServer::TakeFullSet(const vorn::cMsg& request) {
  vorn::cRecord missing;
  const std::string fault = m_set.Take(ClientOf(request.GetReplyChannel().get()), request.Record(), Now(), missing);
  if (!fault.empty()) return Refuse(request, fault);
  Answer(request, missing);
  Wake();
}

// To the question that follows a refusal.
void cStatusServer::TakeAnswer(const vorn::cMsg& answer) {
  vorn::cRecord missing;
  const std::string fault = m_set.Take(ClientOf(answer.GetReplyChannel().get()), answer.Record(), Now(), missing);
  if (fault.empty() && !missing.IsEmpty()) Tell(*answer.GetReplyChannel(), status::eValues, missing);
  Wake();
}

void cStatusServer::List(const vorn::cMsg& request) {
  const std::string prefix = request.Record().GetTextPar(status::kPrefix);
  vorn::cRecord answer;
  const auto& values = m_set.GetValues();
  for (auto at = values.lower_bound(prefix); at != values.end() && at->first.starts_with(prefix); ++at)
    answer.AppendRecordPar(status::kRow, Row(at->first, at->second));
  Answer(request, answer);
}

void cStatusServer::Refuse(const vorn::cMsg& request, const std::string& reason) {
  ++m_counters.refused;
  cProtocolServer::Refuse(request, reason);
}

// ---- what clients are told

void cStatusServer::Wake() {
  if (m_set.HasNews()) m_tell.Post();
}

void cStatusServer::TellAll() {
  AskRefused();
  for (const auto& channel : GetChannels()) {
    const auto telling = m_set.Tell(ClientOf(channel.get()));
    if (!telling) continue;
    ++m_counters.told;
    Tell(*channel, telling->replace ? status::eReplace : status::eValues, telling->values);
  }
  m_set.Told();
  m_keeper.Wake(m_set.TakeAdded());
}

// Their copies hold what the set does not, and there may be room now. Before they are replaced.
void cStatusServer::AskRefused() {
  const std::vector<std::uint64_t> refused = m_set.TakeRefused();
  for (const auto& channel : GetChannels())
    if (std::find(refused.begin(), refused.end(), ClientOf(channel.get())) != refused.end())
      Tell(*channel, status::eAsk, {});
}

void cStatusServer::Expire() {
  m_set.Expire(m_host->GetClock().Now());
  Wake();
  m_expiry.Start(kExpiryMs, kExpiryMs);
}

}  // namespace tav::gateway
