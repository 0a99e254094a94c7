// SPDX-License-Identifier: Apache-2.0
#include <gateway/host/protocol_server.h>

#include <utility>

#include <tav/framework/helper.h>
#include <tav/framework/trace.h>

namespace tav::gateway {

namespace {

vorn::cUnit* Unit() {
  static vorn::cUnit* const unit = vorn::cUnit::Find("UnitGateway");
  return unit;
}

bool Send(const vorn::cMsg& request, unsigned int type, const vorn::cRecord& record) {
  if (request.GetReplyChannel() == nullptr) return true;
  vorn::cMsg answer(type);
  answer.SetId(request.GetId());
  answer.Record() = record;
  return request.GetReplyChannel()->Send(answer) == 1;
}

bool IsAnswer(const cProtocolMessage& row) {
  return row.direction == eToService && row.answer == 0 && row.refusal == 0;
}

std::string Sender(const vorn::cMsg& msg) {
  return msg.GetReplyChannel() != nullptr ? msg.GetReplyChannel()->GetPeer().ToString() : "this process";
}

}  // namespace

cProtocolServer::cProtocolServer(cServiceHost* host, const cProtocol& protocol)
    : cScmServer(host, std::string(protocol.GetService())), m_protocol(protocol) {}

void cProtocolServer::On(unsigned int type, Handler handler, eCheck check) {
  m_handlers[type] = {std::move(handler), check};
}

bool cProtocolServer::DispatchMessage(const vorn::cMsg& msg) {
  const cProtocolMessage* row = m_protocol.Find(msg.GetType());
  const auto found = m_handlers.find(msg.GetType());
  const cEntry* entry = found != m_handlers.end() ? &found->second : nullptr;
  const std::string fault = FaultOf(row, entry, msg);
  if (fault.empty())
    entry->handler(msg);
  else if (row != nullptr && IsAnswer(*row))
    vorn::Trace(
        Unit(), 4, GetName(), ": ", [&] { return Sender(msg); }, ": ", [&] { return Describe(msg.GetType()); }, ": ",
        fault);
  else
    Refuse(msg, fault);
  return true;
}

std::string cProtocolServer::FaultOf(const cProtocolMessage* row, const cEntry* entry, const vorn::cMsg& msg) const {
  std::string fault;
  if (row == nullptr || row->direction != eToService)
    fault = "no request of service \"" + GetName() + "\": " + Describe(msg.GetType());
  else if (entry == nullptr)
    fault = "not offered by this service: " + Describe(msg.GetType());
  else if (entry->check == eCheck::Table)
    CheckParameters(*row, msg.Record(), fault);
  return fault;
}

void cProtocolServer::Answer(const vorn::cMsg& request, const vorn::cRecord& record) {
  const cProtocolMessage* row = m_protocol.Find(request.GetType());
  const unsigned int type = row != nullptr && row->answer != 0 ? row->answer : request.GetType() + 1;
  if (Send(request, type, record) || !request.GetReplyChannel()->IsOpen()) return;
  if (record.GetBytes().size() > vorn::kMaxFrameSize / 2)
    Refuse(request, "the answer does not fit one message");
  else
    vorn::Trace(Unit(), 4, GetName(), ": ", request.GetReplyChannel()->GetPeer().ToString(),
                " does not read its answers, one is lost");
}

void cProtocolServer::Refuse(const vorn::cMsg& request, const std::string& reason) {
  vorn::Trace(
      Unit(), 8, GetName(), ": refused ", [&] { return Describe(request.GetType()); }, ": ", reason);
  const cProtocolMessage* row = m_protocol.Find(request.GetType());
  vorn::cRecord record;
  record.AppendTextPar("reason", reason);
  Send(request, row != nullptr && row->refusal != 0 ? row->refusal : request.GetType() + 2, record);
}

bool cProtocolServer::Tell(vorn::cScmChannel& channel, unsigned int type, const vorn::cRecord& record,
                           const std::string& client) {
  vorn::cUuid id;
  id.Create();
  vorn::cMsg msg(type);
  msg.SetId(id);
  msg.Record() = record;
  if (channel.Send(msg) == 1) return true;
  if (!channel.IsOpen()) return false;
  vorn::Trace(
      Unit(), 4, GetName(), ": ", [&] { return client.empty() ? channel.GetPeer().ToString() : client; },
      " does not read: its connection is closed, so that it asks anew");
  channel.Close();
  return false;
}

std::string cProtocolServer::Describe(unsigned int type) const {
  const std::string name = MessageName(m_protocol, type);
  const std::string number = vorn::FormatString("0x%x", type);
  return name == number ? number : name + " (" + number + ")";
}

}  // namespace tav::gateway
