// SPDX-License-Identifier: Apache-2.0
// cHttpSession: one client of a page process, known by its session identifier. It runs one page at a time.
//
// The process that makes sessions enters them into HttpSessions and takes them out; the library only reads that table.
// A session does not own its page, but each forgets the other when it ends.
#pragma once

#include <tav/export.h>
#include <tav/framework/map.h>
#include <tav/framework/msg.h>
#include <tav/framework/scm_service.h>
#include <tav/framework/timer.h>
#include <tav/framework/uuid.h>

namespace tav {

class cHttpPage;
class cHttpRequest;

class TAV_API cHttpSession {
 public:
  // The service outlives it. timeoutSec: as of SetTimeout.
  cHttpSession(vorn::cUuid& sid, vorn::cScmService* service, unsigned int timeoutSec);
  virtual ~cHttpSession();
  cHttpSession(const cHttpSession&) = delete;
  cHttpSession& operator=(const cHttpSession&) = delete;

  // Starts the session's time anew: http::eSessionTimeout is posted, with the identifier as "SID", after sec seconds,
  // at most a second later. 0: there is no time-out. More than about 49 days are taken for that.
  void SetTimeout(unsigned int sec);
  // Accepts the request and starts the page on it; without a page nothing is done.
  void Run(cHttpRequest& request, cHttpPage* page);
  // Hands a message to the page; true while the page wants more. A page that has finished is forgotten. Without a page
  // false. The page must not end its session from within.
  bool DispatchMessage(vorn::cMsg& msg);

  const vorn::cUuid& GetSid() const { return m_sid; }
  cHttpPage* GetPage() const { return m_page; }  // null when idle

 private:
  friend class cHttpPage;

  cHttpPage* m_page = nullptr;
  vorn::cUuid m_sid;
  vorn::cTimer m_timer;
};

// Session identifier to session. Belongs to the thread of the service's loop.
extern TAV_API vorn::cMap<vorn::cUuid, cHttpSession*> HttpSessions;

}  // namespace tav
