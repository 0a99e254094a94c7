// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/core/web_page.h>

#include <gateway/web/pages/core/form_parts.h>
#include <gateway/web/pages/core/layout.h>
#include <gateway/web/pages/core/routes.h>
#include <tav/framework/helper.h>
#include <tav/http/http_protocol.h>

namespace tav::pages {

namespace {

constexpr const char* kReason = "reason";
constexpr std::size_t kPiece = 256 * 1024;

}  // namespace

cWebPage::cWebPage(const cPageContext& context) : cHttpPage(context.service), m_context(context) {}

bool cWebPage::Process(cHttpRequest& request) {
  m_id = request.GetRequestId();
  Start();
  return !m_finished;
}

bool cWebPage::OnMessage(vorn::cMsg& msg) {
  if (m_finished) return false;
  switch (msg.GetType()) {
    case http::eOutputPassed:
      OnPassed();
      break;
    case http::eOutputLost:
      OnGone();
      m_finished = true;
      break;
    case http::ePageTimeout:
      OnTimeout();
      break;
    default:
      TakeAnswer(msg);
  }
  return !m_finished;
}

void cWebPage::Abandon() {
  if (m_finished) return;
  OnGone();
  IsWholeAtAnyTime() ? Close() : Break();
}

// ---- asking services

void cWebPage::Await(const cProtocol& protocol, unsigned int request, bool sent, Next next, Refused refused) {
  m_service = protocol.GetService();
  if (!sent) return OnUnanswered(503, "The service \"" + m_service + "\" is away. Try again in a moment.");
  m_awaited = protocol.Find(request);
  m_next = std::move(next);
  m_refused = std::move(refused);
  StartTimeout(kPatience);
}

void cWebPage::Ask(vorn::cScmServiceIO& client, const cProtocol& protocol, unsigned int request,
                   const vorn::cRecord& record, Next next, Refused refused) {
  vorn::cMsg msg(request);
  msg.SetId(m_id);
  msg.Record() = record;
  Await(protocol, request, client.Send(msg) == 1, std::move(next), std::move(refused));
}

void cWebPage::TakeAnswer(const vorn::cMsg& msg) {
  if (m_awaited == nullptr || (msg.GetType() != m_awaited->answer && msg.GetType() != m_awaited->refusal)) return;
  StopTimeout();
  // Where answer and refusal have one number, the reason tells them apart.
  const bool isRefused = msg.GetType() == m_awaited->refusal &&
                         (m_awaited->answer != m_awaited->refusal || msg.Record().GetPar(kReason).IsValid());
  m_awaited = nullptr;
  const Next next = std::move(m_next);
  const Refused refused = std::move(m_refused);
  if (!isRefused) return next(msg.Record());
  const std::string reason = msg.Record().GetTextPar(kReason);
  if (refused) return refused(reason);
  ShowError(502, "The service \"" + m_service + "\" refused: " + reason);
}

void cWebPage::OnTimeout() {
  if (m_awaited == nullptr) return;
  m_awaited = nullptr;
  OnGone();  // what it may still hold for this page is not waited for
  OnUnanswered(504, "The service \"" + m_service + "\" does not answer.");
}

// ---- what the visitor sent

bool cWebPage::IsPost() const { return GetRequest().GetRecord().GetTextPar(http::kRequestMethod) == "POST"; }

std::string cWebPage::RemoteAddress() const { return GetRequest().GetRecord().GetTextPar(http::kRemoteAddr); }

// ---- the answer

// A long text goes in pieces, each well below what one message takes.
bool cWebPage::Put(const std::string& text) {
  for (std::size_t at = 0; at < text.size(); at += kPiece)
    if (!HttpOutput(m_outputs++, text.substr(at, kPiece))) return false;
  return true;
}

void cWebPage::BeginAnswer(const std::string& contentType, unsigned int status) {
  if (status == 200 && m_headers.empty()) {
    HttpSuccessHeader(m_outputs++, contentType);
    return;
  }
  Put(vorn::FormatString("Status: %u\r\n", status) + GetRequest().GetCacheControlOFF() +
      (contentType.empty() ? std::string() : "Content-Type: " + contentType + "\r\n") + m_headers +
      "Connection: close\r\n\r\n");
}

void cWebPage::Close() {
  CloseSuccess();
  m_finished = true;
}

void cWebPage::Break() {
  CloseError();
  m_finished = true;
}

void cWebPage::PutAndClose(const std::string& text) { Put(text) ? Close() : Break(); }

void cWebPage::ShowPage(const std::string& title, const cHtml& body, unsigned int status) {
  BeginAnswer("text/html; charset=utf-8", status);
  PutAndClose(MakeDocument(m_context, title, body).GetText());
}

void cWebPage::ShowError(unsigned int status, const std::string& text) {
  if (m_outputs != 0) return Break();  // part of an answer is out: it must not look whole
  if (m_context.route.isForPrograms) {
    BeginAnswer("text/plain; charset=utf-8", status);
    Put(text + "\n");
    return Close();
  }
  ShowPage("That did not work", ErrorNote(text), status);
}

void cWebPage::Redirect(const std::string& url) {
  AddHeader("Location: " + url);
  BeginAnswer({}, 303);
  Close();
}

void cWebPage::ShowText(const std::string& contentType, const std::string& text) {
  BeginAnswer(contentType);
  PutAndClose(text);
}

cHtml cWebPage::CsrfField() const {
  return cHtml().Put("<input type=\"hidden\" name=\"csrf\" value=\"{}\">", m_context.visitor.csrfToken);
}

}  // namespace tav::pages
