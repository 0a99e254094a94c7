// SPDX-License-Identifier: Apache-2.0
#include <tav/http/http_page.h>

#include <tav/framework/helper.h>
#include <tav/http/http_protocol.h>
#include <tav/http/http_session.h>
#include <tav/http/http_timeout.h>

namespace tav {

namespace {

constexpr const char* kStatusLine = "Status: %u\r\n";
// Of the exchange between page and front end; how long the client's connection lasts is the front end's to say.
constexpr const char* kEndOfHeader = "Connection: close\r\n\r\n";

}  // namespace

cHttpPage::cHttpPage(vorn::cScmService* service) : m_service(service), m_timer(service) {}

cHttpPage::~cHttpPage() {
  if (m_session != nullptr) m_session->m_page = nullptr;
}

// ---- the answer

vorn::cMsg cHttpPage::MakeOutput() const {
  vorn::cMsg msg(http::eOutput);
  msg.SetId(m_request.GetRequestId());
  msg.Record().AppendTextPar(http::kTechnologyName, m_request.GetTechnologyName());
  return msg;
}

bool cHttpPage::Answer(const vorn::cMsg& msg) {
  const auto& channel = m_request.GetReplyChannel();
  return channel != nullptr && channel->Send(msg) == 1;
}

bool cHttpPage::HttpOutput(unsigned int idx, const char* text) {
  if (text != nullptr) return HttpOutput(idx, std::string(text));
  vorn::cMsg msg = MakeOutput();
  msg.Record().AppendUIntPar(http::kIdx, idx);
  msg.Record().AppendBoolPar(http::kFinish, false);
  return Answer(msg);
}

bool cHttpPage::HttpOutput(unsigned int idx, const std::string& text) {
  vorn::cMsg msg = MakeOutput();
  msg.Record().AppendUIntPar(http::kIdx, idx);
  msg.Record().AppendBoolPar(http::kFinish, false);
  msg.Record().AppendTextPar(http::kContent, text);
  return Answer(msg);
}

bool cHttpPage::HttpSuccessHeader(unsigned int idx, const std::string& contentType) {
  HttpOutput(idx, vorn::FormatString(kStatusLine, 200u) + m_request.GetCacheControlOFF() +
                      "Content-Type: " + contentType + "\r\n" + kEndOfHeader);
  return true;
}

bool cHttpPage::HttpSuccess(unsigned int idx, unsigned int status) {
  HttpOutput(idx, vorn::FormatString(kStatusLine, status) + "Content-Type: text/html" + m_request.GetCacheControlOFF() +
                      kEndOfHeader);
  return true;
}

bool cHttpPage::HttpErrorHeader(unsigned int idx, unsigned int status) {
  HttpOutput(idx, vorn::FormatString(kStatusLine, status) + kEndOfHeader);
  return true;
}

void cHttpPage::Close(bool success) {
  vorn::cMsg msg = MakeOutput();
  msg.Record().AppendBoolPar(http::kFinish, true);
  msg.Record().AppendBoolPar(http::kSuccess, success);
  Answer(msg);
}

void cHttpPage::CloseSuccess() { Close(true); }

void cHttpPage::CloseError() { Close(false); }

// ---- time

void cHttpPage::StartTimeout(unsigned int sec) {
  m_timer.SetId(m_session != nullptr ? m_session->GetSid() : vorn::cUuid());
  m_timer.Start(TimeoutMs(sec), http::ePageTimeout);
}

}  // namespace tav
