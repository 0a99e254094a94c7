// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/front/page_exchange.h>

#include <utility>

#include <gateway/web/front/media_type.h>
#include <gateway/web/front/page_server.h>
#include <gateway/web/front/unit_web.h>
#include <gateway/web/front/web_limits.h>
#include <tav/http/http_protocol.h>

namespace tav::gateway::web {

cPageExchange::cPageExchange(cPageServer* server, const cPageProcess& process, const vorn::cRecord& request,
                             const cClientTraits& client, std::function<void()> wake)
    : m_server(server),
      m_process(process),
      m_client(client),
      m_wake(std::move(wake)),
      m_deadline(server->Now() + kAcceptTimeMs) {
  m_id.Create();
  m_server->Add(this);
  vorn::cMsg msg(http::eRequest);
  msg.SetId(m_id);
  msg.Record() = request;
  if (m_process.channel->Send(msg) != 1) Fail({503, "The process that serves this page does not take requests"});
}

cPageExchange::~cPageExchange() {
  if (!m_stream.IsAtEnd() || m_state != eState::Begun) TellLost("the client is gone");
  m_stream = cBodyStream();
  SetWaiting();
  m_server->Remove(this);
}

// ---- from the page process

void cPageExchange::OnTaken() {
  if (m_state != eState::Asked) return;
  m_state = eState::Taken;
  m_deadline = m_server->Now() + kAnswerTimeMs;
}

void cPageExchange::OnRefused(const std::string& reason) {
  if (m_state == eState::Asked) Fail({503, "The page is not served now: " + reason});
}

void cPageExchange::OnOutput(const vorn::cRecord& output) {
  if (m_isLost || m_state == eState::Broken || m_stream.IsFinished()) return;
  OnTaken();
  const vorn::cRecordPar content = output.GetPar(http::kContent);
  if (content.IsValid() && content.HasText()) TakeContent(content.GetBytesView());
  if (output.GetBoolPar(http::kFinish) && m_state != eState::Broken && !m_isLost)
    TakeEnd(output.GetBoolPar(http::kSuccess));
}

void cPageExchange::OnNonsense(const std::string& fault) { Fail({502, "The page's output cannot be read: " + fault}); }

void cPageExchange::OnProcessGone() {
  if (!m_stream.IsFinished()) Fail({502, "The process that serves this page has ended"});
}

void cPageExchange::OnTime(std::int64_t now) {
  if (now < m_deadline) return;
  if (m_state == eState::Asked)
    Fail({504, "The process that serves this page does not accept the request"});
  else if (m_state == eState::Taken)
    Fail({504, "The page takes too long"});
}

void cPageExchange::Fail(const cHttpFault& fault) {
  if (m_state == eState::Broken) return;
  vorn::Trace(UnitWeb(), 4, "web: ", m_process.channel->GetPeer().ToString(), ": ", fault.text);
  TellLost(fault.text);
  m_server->CountFailure();
  m_fault = fault;
  m_state = eState::Broken;
  m_stream = cBodyStream();
  SetWaiting();
  m_server->WakeLater(this);
}

void cPageExchange::TakeContent(std::string_view content) {
  if (m_state != eState::Taken) return TakeBody(std::string(content));
  const std::size_t taken = m_block.Take(content);
  if (m_block.GetState() == cHeaderBlock::eState::Broken)
    return Fail({502, "The page's header cannot be read: " + m_block.GetError()});
  if (m_block.GetState() == cHeaderBlock::eState::Open) {
    ++m_headerOutputs;
    return;
  }
  TakeHeader();
  if (HasNoBody())
    TellLost(m_client.isHead ? "a HEAD request takes no body" : "an answer of this status has no body");
  else
    TakeBody(std::string(content.substr(taken)));
}

void cPageExchange::TakeHeader() {
  m_state = eState::Header;
  for (const std::string& name : m_block.GetDropped())
    vorn::Trace(UnitWeb(), 4, "web: ", m_process.channel->GetPeer().ToString(), ": field ", name, " is not passed on");
  if (MayCompress()) m_stream.Compress();
  m_server->WakeLater(this);
}

bool cPageExchange::MayCompress() const {
  return m_client.acceptsGzip && !HasNoBody() && m_block.Find("etag").empty() &&
         IsCompressible(m_block.Find("content-type"));
}

bool cPageExchange::HasNoBody() const {
  return m_client.isHead || m_block.GetStatus() == 204 || m_block.GetStatus() == 304;
}

void cPageExchange::TakeBody(std::string bytes) {
  const std::size_t waiting = m_stream.GetWaiting() + bytes.size();
  if (waiting > kMaxWaitingBytes || m_server->GetWaiting() + bytes.size() > kMaxWaitingTotalBytes)
    return Fail({502, "The page sends faster than the client takes, " + std::to_string(waiting) + " bytes wait"});
  m_stream.Push(std::move(bytes));
  SetWaiting();
  m_server->WakeLater(this);
}

void cPageExchange::TakeEnd(bool isWhole) {
  if (!isWhole) return Fail({502, "The page was broken off"});
  if (m_state == eState::Taken) return Fail({502, "The page ended without a header"});
  m_stream.Finish();
  m_server->WakeLater(this);
}

// ---- for the client

bool cPageExchange::IsReady() const {
  if (m_state == eState::Header || m_state == eState::Broken) return true;
  return m_state == eState::Begun && (m_stream.HasBytes() || m_stream.IsAtEnd());
}

std::optional<cPageExchange::cBeginning> cPageExchange::Begin() {
  if (m_state == eState::Broken) return cBeginning{MakeErrorAnswer(m_fault), false};
  if (m_state != eState::Header) return std::nullopt;
  m_state = eState::Begun;
  cBeginning beginning;
  beginning.answer.status = m_block.GetStatus();
  beginning.answer.fields = m_block.GetFields();
  if (MayCompress()) {
    beginning.answer.fields.push_back({"Content-Encoding", "gzip"});
    beginning.answer.fields.push_back({"Vary", "Accept-Encoding"});
  }
  beginning.isStream = m_client.isHead || (!m_stream.IsFinished() && !HasNoBody());
  if (!beginning.isStream) {
    beginning.answer.body = m_stream.TakeAll();
    SetWaiting();
  }
  TellPassed();
  return beginning;
}

cPageExchange::eRead cPageExchange::Read(char* to, std::size_t most, std::size_t& size) {
  if (m_state == eState::Broken) return eRead::Broken;
  size = m_stream.Take(to, most);
  SetWaiting();
  TellPassed();
  if (size != 0) return eRead::Bytes;
  return m_stream.IsAtEnd() ? eRead::End : eRead::Nothing;
}

// ---- what the page process is told

void cPageExchange::TellPassed() {
  const unsigned int passed = std::exchange(m_headerOutputs, 0) + m_stream.TakePassed();
  for (unsigned int i = 0; i < passed && !m_isLost; ++i) Tell(http::eOutputPassed, {});
}

void cPageExchange::TellLost(const std::string& reason) {
  if (std::exchange(m_isLost, true)) return;
  vorn::cRecord record;
  record.AppendTextPar(http::kReason, reason);
  Tell(http::eOutputLost, record);
}

void cPageExchange::Tell(unsigned int type, const vorn::cRecord& record) {
  if (!m_process.hasFlow || !m_process.channel->IsOpen()) return;
  vorn::cMsg msg(type);
  msg.SetId(m_id);
  msg.Record() = record;
  if (m_process.channel->Send(msg) == 1 || !m_process.channel->IsOpen()) return;
  vorn::Trace(UnitWeb(), 4, "web: ", m_process.channel->GetPeer().ToString(),
              " does not read: its connection is closed, so that it registers anew");
  m_process.channel->Close();
}

void cPageExchange::SetWaiting() {
  m_server->CountWaiting(m_counted, m_stream.GetWaiting());
  m_counted = m_stream.GetWaiting();
}

}  // namespace tav::gateway::web
