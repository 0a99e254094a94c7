// SPDX-License-Identifier: Apache-2.0
#include <tav/http/http_session.h>

#include <algorithm>

#include <tav/http/http_page.h>
#include <tav/http/http_protocol.h>
#include <tav/http/http_timeout.h>

namespace tav {

namespace {

// A session that ends a little later harms nobody, and its wake-up can be another's.
constexpr unsigned int kSlackMs = 1000;

}  // namespace

vorn::cMap<vorn::cUuid, cHttpSession*> HttpSessions;

cHttpSession::cHttpSession(vorn::cUuid& sid, vorn::cScmService* service, unsigned int timeoutSec)
    : m_sid(sid), m_timer(service) {
  SetTimeout(timeoutSec);
}

cHttpSession::~cHttpSession() {
  if (m_page != nullptr) m_page->m_session = nullptr;
}

void cHttpSession::SetTimeout(unsigned int sec) {
  m_timer.Stop();
  if (sec == 0) return;
  m_timer.GetMsg().Record().SetUuidPar(http::kSid, m_sid);
  m_timer.Start(TimeoutMs(sec), http::eSessionTimeout, kSlackMs);
}

void cHttpSession::Run(cHttpRequest& request, cHttpPage* page) {
  if (page == nullptr) return;
  if (m_page != nullptr) m_page->m_session = nullptr;
  if (page->m_session != nullptr) page->m_session->m_page = nullptr;
  page->m_session = this;
  m_page = page;
  page->SetRequest(request);
  vorn::cMsg taken(http::eRequestTaken);
  taken.SetId(request.GetRequestId());
  if (const auto& channel = request.GetReplyChannel()) channel->Send(taken);
  page->Process(request);
}

bool cHttpSession::DispatchMessage(vorn::cMsg& msg) {
  cHttpPage* const page = m_page;
  if (page == nullptr) return false;
  if (page->OnMessage(msg)) return true;
  // The page may have ended meanwhile, or another may run.
  if (m_page == page) {
    page->m_session = nullptr;
    m_page = nullptr;
  }
  return false;
}

}  // namespace tav
