// SPDX-License-Identifier: Apache-2.0
// cHttpPage: one page at work on one request. Derive from it, one class a page.
//
// Process starts the work; what it cannot answer at once goes on in OnMessage, with timers and answers of services. The
// answer is a header, then the body in as many pieces as there are, then CloseSuccess or CloseError. Nothing of this
// waits. Where the front end is gone, what is sent reaches nobody and does no harm.
#pragma once

#include <string>

#include <tav/export.h>
#include <tav/framework/msg.h>
#include <tav/framework/scm_service.h>
#include <tav/framework/timer.h>
#include <tav/http/http_request.h>

namespace tav {

class cHttpSession;

class TAV_API cHttpPage {
 public:
  // The service outlives the page.
  explicit cHttpPage(vorn::cScmService* service);
  virtual ~cHttpPage();
  // Starts the work on a request; what it returns is not looked at.
  virtual bool Process(cHttpRequest& request) = 0;
  // A message for the page; true while it wants further ones, false when it has finished.
  virtual bool OnMessage(vorn::cMsg& msg) = 0;

  cHttpPage(const cHttpPage&) = delete;
  cHttpPage& operator=(const cHttpPage&) = delete;

  void SetRequest(cHttpRequest& request) { m_request = request; }

  // ---- the answer
  // idx: the page's own number of the output. False when the channel did not take it: the front end is gone, or so slow
  // that its buffer is full. A null text is sent as an output without content.
  bool HttpOutput(unsigned int idx, const char* text);
  bool HttpOutput(unsigned int idx, const std::string& text);
  // The header of an answer with status 200 that is not to be cached. Always true, as the next two.
  bool HttpSuccessHeader(unsigned int idx, const std::string& contentType);
  // The header of an HTML answer. The line of the content type has no break of its own: what follows runs straight on,
  // and front ends know it so.
  bool HttpSuccess(unsigned int idx, unsigned int status);
  // The header of an answer without content type, such as an error's.
  bool HttpErrorHeader(unsigned int idx, unsigned int status);
  // The end: the answer is whole, or it is broken off.
  void CloseSuccess();
  void CloseError();

  // ---- time
  // Posts http::ePageTimeout under the session's identifier after sec seconds; httpDisptachBySID brings it to the page.
  void StartTimeout(unsigned int sec);
  void StopTimeout() { m_timer.Stop(); }

  cHttpSession* GetSession() const { return m_session; }  // null when it does not run
  vorn::cScmService* GetService() const { return m_service; }
  const cHttpRequest& GetRequest() const { return m_request; }

 private:
  friend class cHttpSession;

  vorn::cMsg MakeOutput() const;
  bool Answer(const vorn::cMsg& msg);
  void Close(bool success);

  cHttpSession* m_session = nullptr;
  vorn::cScmService* m_service;
  cHttpRequest m_request;
  vorn::cTimer m_timer;
};

}  // namespace tav
