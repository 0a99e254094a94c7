// SPDX-License-Identifier: Apache-2.0
// cWebPage: what all pages of the gateway share. Start begins; where a service has to be asked first, Await names what
// goes on with its answer. A page ends with one of the Show functions, or by Close behind what it has put out itself.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include <gateway/web/pages/core/html.h>
#include <gateway/web/pages/core/visitor.h>
#include <tav/framework/scm_service_io.h>
#include <tav/http/http_page.h>
#include <tav/protocol.h>

namespace tav::pages {

class cAccess;
class cLive;
struct cGatewayClients;
struct cRoute;

// What a page works with; everything outlives it.
struct cPageContext {
  vorn::cScmService* service;
  cGatewayClients& gateway;
  cAccess& access;
  cLive& live;
  const cRoute& route;
  cVisitor visitor;
};

class cWebPage : public cHttpPage {
 public:
  // Seconds that a service has for its answer.
  static constexpr unsigned int kPatience = 10;

  explicit cWebPage(const cPageContext& context);

  bool Process(cHttpRequest& request) final;
  bool OnMessage(vorn::cMsg& msg) final;
  // Nothing more comes of it.
  bool IsFinished() const { return m_finished; }
  const cVisitor& GetVisitor() const { return m_context.visitor; }
  // The visitor's login has ended, or nobody is there any more: what is still to come is for nobody.
  void Abandon();

 protected:
  using Next = std::function<void(const vorn::cRecord& answer)>;
  using Refused = std::function<void(const std::string& reason)>;

  virtual void Start() = 0;
  // An output has been handed on to the client, and room for one more is there.
  virtual void OnPassed() {}
  // The client is gone, or the page's login has ended: nothing that is put out reaches anybody.
  virtual void OnGone() {}
  // What is put out has no end of its own, so that no place is one where it is broken off.
  virtual bool IsWholeAtAnyTime() const { return false; }
  // The service that was asked is away (503) or silent (504): what the page would answer, and why.
  virtual void OnUnanswered(unsigned int status, const std::string& text) { ShowError(status, text); }

  // ---- asking services
  // Under this identifier: the request's own.
  vorn::cUuid& Id() { return m_id; }
  cGatewayClients& Gateway() { return m_context.gateway; }
  cAccess& Access() { return m_context.access; }
  cLive& Live() { return m_context.live; }
  // Waits for the answer to a request of the protocol. sent: what sending it gave. Without refused a refusal ends the
  // page with an error that says so; with or without it a service that is away or silent is told to OnUnanswered.
  void Await(const cProtocol& protocol, unsigned int request, bool sent, Next next, Refused refused = {});
  // Sends a request that no client has a call for, and waits likewise.
  void Ask(vorn::cScmServiceIO& client, const cProtocol& protocol, unsigned int request, const vorn::cRecord& record,
           Next next, Refused refused = {});

  // ---- what the visitor sent
  std::string Query(const char* name) const { return GetRequest().GetFromQueryString(name); }
  std::string Posted(const char* name) const { return GetRequest().GetFromPostData(name); }
  bool IsPost() const;
  std::string RemoteAddress() const;

  // ---- ending with a whole answer
  void ShowPage(const std::string& title, const cHtml& body, unsigned int status = 200);
  void ShowError(unsigned int status, const std::string& text);
  // See other: what follows a change.
  void Redirect(const std::string& url);
  void ShowText(const std::string& contentType, const std::string& text);
  // Sent beside the header of whatever answer comes: "Set-Cookie: ...". Never of what somebody else wrote.
  void AddHeader(const std::string& line) { m_headers += line + "\r\n"; }

  // ---- ending piece by piece
  // headers: further lines, each with its line break.
  void BeginAnswer(const std::string& contentType, unsigned int status = 200);
  // False: it did not reach the front end.
  bool Put(const std::string& text);
  void Close();
  void Break();

  // The field that every form of a change carries.
  cHtml CsrfField() const;

 private:
  void TakeAnswer(const vorn::cMsg& msg);
  void OnTimeout();
  void PutAndClose(const std::string& text);

  cPageContext m_context;
  vorn::cUuid m_id;
  const cProtocolMessage* m_awaited = nullptr;
  std::string m_service;  // that is awaited
  Next m_next;
  Refused m_refused;
  std::string m_headers;
  unsigned int m_outputs = 0;
  bool m_finished = false;
};

}  // namespace tav::pages
