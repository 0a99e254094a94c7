// SPDX-License-Identifier: Apache-2.0
#include <tav/http/http_dispatch.h>

#include <tav/http/http_page.h>
#include <tav/http/http_session.h>

namespace tav {

bool httpDisptachBySID(vorn::cMsg& msg) {
  cHttpSession* session = nullptr;
  return HttpSessions.Get(msg.GetId(), session) && session != nullptr && session->DispatchMessage(msg);
}

bool httpDisptachByMsgID(vorn::cMsg& msg) {
  for (const auto& [sid, session] : HttpSessions) {
    if (session == nullptr || session->GetPage() == nullptr) continue;
    if (session->GetPage()->GetRequest().GetRequestId() == msg.GetId()) return session->DispatchMessage(msg);
  }
  return false;
}

}  // namespace tav
