// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/front/page_server.h>

#include <algorithm>
#include <utility>

#include <gateway/web/front/unit_web.h>
#include <tav/http/http_protocol.h>

namespace tav::gateway::web {

cPageServer::cPageServer(cServiceHost* host)
    : cProtocolServer(host, http::kProtocol), m_host(host), m_wake(host, [this] { WakeAll(); }) {
  On(http::eRegister, [this](const vorn::cMsg& msg) { Register(msg); });
  On(http::eRequestTaken, [this](const vorn::cMsg& msg) {
    if (cPageExchange* exchange = ExchangeOf(msg)) exchange->OnTaken();
  });
  On(http::eRequestRefused, [this](const vorn::cMsg& msg) {
    if (cPageExchange* exchange = ExchangeOf(msg)) exchange->OnRefused(msg.Record().GetTextPar(http::kReason));
  });
  On(
      http::eOutput, [this](const vorn::cMsg& msg) { TakeOutput(msg); }, eCheck::Own);
}

void cPageServer::Register(const vorn::cMsg& request) {
  std::vector<std::string> prefixes;
  for (auto prefix = request.Record().GetPar(http::kPrefix); prefix.IsValid(); prefix = prefix.NextSame())
    prefixes.push_back(prefix.GetText());
  const cPageProcess process{request.GetReplyChannel(), request.Record().GetBoolPar(http::kFlow)};
  const std::string reason = m_registry.Register(process, prefixes);
  if (!reason.empty()) return Refuse(request, reason);
  vorn::Trace(UnitWeb(), 8, "web: pages are served by ", process.channel->GetPeer().ToString());
  Answer(request);
}

void cPageServer::TakeOutput(const vorn::cMsg& output) {
  cPageExchange* const exchange = ExchangeOf(output);
  if (exchange == nullptr) return;  // it was told so when its client went
  std::string fault;
  if (CheckParameters(*http::kProtocol.Find(http::eOutput), output.Record(), fault))
    exchange->OnOutput(output.Record());
  else
    exchange->OnNonsense(fault);
}

void cPageServer::OnClose(vorn::cScmChannel& channel) {
  m_registry.Forget(&channel);
  for (const auto& [id, exchange] : m_exchanges)
    if (exchange->GetChannel() == &channel) exchange->OnProcessGone();
}

cPageExchange* cPageServer::ExchangeOf(const vorn::cMsg& msg) const {
  const auto found = m_exchanges.find(msg.GetId());
  if (found == m_exchanges.end()) return nullptr;
  return found->second->GetChannel() == msg.GetReplyChannel().get() ? found->second : nullptr;
}

void cPageServer::Remove(cPageExchange* exchange) {
  m_exchanges.erase(exchange->GetId());
  std::replace(m_woken.begin(), m_woken.end(), exchange, static_cast<cPageExchange*>(nullptr));
}

void cPageServer::WakeLater(cPageExchange* exchange) {
  if (std::find(m_woken.begin(), m_woken.end(), exchange) != m_woken.end()) return;
  m_woken.push_back(exchange);
  m_wake.Post();
}

void cPageServer::WakeAll() {
  for (std::size_t i = 0; i < m_woken.size(); ++i)
    if (cPageExchange* exchange = std::exchange(m_woken[i], nullptr)) exchange->Wake();
  m_woken.clear();
}

}  // namespace tav::gateway::web
