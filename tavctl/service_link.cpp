// SPDX-License-Identifier: Apache-2.0
#include <tavctl/service_link.h>

#include <tav/framework/helper.h>
#include <tavctl/failure.h>
#include <tavctl/socket_probe.h>
#include <tavctl/terminal_text.h>

namespace tav::ctl {

namespace {

constexpr const char* kReason = "reason";

std::string Seconds(unsigned int milliseconds) {
  return vorn::FormatString("%g s", static_cast<double>(milliseconds) / 1000);
}

}  // namespace

void AwaitConnection(cContext& context, const vorn::cScmServiceIO& client) {
  const std::string service = "service '" + client.GetName() + "'";
  const cProbe probe = ProbeSocket(context.service.GetSocketPath(client.GetName()));
  if (probe.state != eSocket::Listening) throw cFailure(eExitUnreachable, service + ": " + probe.text);
  // A failure that is traced meanwhile is the connection's.
  context.trouble.clear();
  context.Await([&] { return client.IsConnected() || !context.trouble.empty(); }, context.timeoutMs);
  if (client.IsConnected() || context.interrupted) return;
  throw cFailure(eExitUnreachable,
                 service + (context.trouble.empty() ? " does not greet within " + Seconds(context.timeoutMs)
                                                    : ": " + ForTerminal(context.trouble)));
}

cServiceLink::cServiceLink(cContext& context, const cProtocol& protocol)
    : cScmServiceIO(&context.service, std::string(protocol.GetService())), m_context(context), m_protocol(protocol) {
  AwaitConnection(context, *this);
}

void cServiceLink::OnClose() { m_lost = true; }

bool cServiceLink::DispatchMessage(const vorn::cMsg& msg) {
  if (msg.GetId() == m_question)
    m_answer = msg;
  else if (m_listener)
    m_listener(msg);
  return true;
}

std::string cServiceLink::Describe(const std::string& what) const { return "service '" + GetName() + "' " + what; }

vorn::cRecord cServiceLink::Ask(unsigned int type, const vorn::cRecord& request) {
  const std::string question = MessageName(m_protocol, type);
  SendQuestion(type, request);
  AwaitAnswer(question);
  const cProtocolMessage* const asked = m_protocol.Find(type);
  const unsigned int answered = m_answer->GetType();
  const vorn::cRecord& record = m_answer->Record();
  const bool refused = answered == asked->refusal && (answered != asked->answer || record.GetPar(kReason).IsValid());
  if (answered == asked->answer && !refused) return record;
  throw cFailure(eExitRefused,
                 Describe(refused ? "refused " + question + ": " + ForTerminal(record.GetTextPar(kReason))
                                  : "answered " + question + " with " + MessageName(m_protocol, answered)));
}

void cServiceLink::SendQuestion(unsigned int type, const vorn::cRecord& request) {
  m_question.Create();
  m_answer.reset();
  m_lost = false;
  vorn::cMsg msg(type);
  msg.SetId(m_question);
  msg.Record() = request;
  if (Send(msg) < 1) throw cFailure(eExitUnreachable, Describe("is not connected"));
}

void cServiceLink::AwaitAnswer(const std::string& question) {
  m_context.Await([this] { return m_answer.has_value() || m_lost; }, m_context.timeoutMs);
  if (m_answer) return;
  if (m_lost) throw cFailure(eExitUnreachable, Describe("ended before it answered " + question));
  if (m_context.interrupted) throw cFailure(eExitDone, "");
  throw cFailure(eExitUnreachable, Describe("did not answer " + question + " within " + Seconds(m_context.timeoutMs) +
                                            "; see --timeout"));
}

}  // namespace tav::ctl
