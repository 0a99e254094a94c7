// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/access/gate.h>

#include <gateway/web/pages/access/access.h>
#include <gateway/web/pages/access/password_hash.h>
#include <gateway/web/pages/core/plain_pages.h>
#include <gateway/web/pages/core/request_header.h>
#include <gateway/web/pages/core/routes.h>
#include <tav/http/http_protocol.h>

namespace tav::pages {

namespace {

enum class eMethod { Get, Post, Other };

eMethod MethodOf(const cHttpRequest& request) {
  const std::string method = request.GetRecord().GetTextPar(http::kRequestMethod);
  if (method == "GET" || method == "HEAD") return eMethod::Get;
  return method == "POST" ? eMethod::Post : eMethod::Other;
}

// Whether the form came from a page of this gateway, as far as the browser tells: they all do with a change.
bool IsOwnOrigin(const cHttpRequest& request) {
  const std::string site = HeaderOf(request, "sec-fetch-site");
  if (!site.empty() && site != "same-origin" && site != "none") return false;
  const std::string origin = HeaderOf(request, "origin");
  if (origin.empty()) return true;
  return origin == request.GetRecord().GetTextPar(http::kRequestScheme) + "://" + HeaderOf(request, "host");
}

// Why a form is not taken; empty when it is.
std::string FormFault(const cHttpRequest& request, const cPageContext& context) {
  if (!IsOwnOrigin(request)) return "The form came from another site.";
  if (context.route.sender == eSender::Anyone) return {};
  if (context.route.sender == eSender::Admin && !context.visitor.MayChange()) return "Your account may only look.";
  const std::string token = request.GetFromPostData("csrf");
  if (token.empty() || !AreSame(token, context.visitor.csrfToken))
    return "The form is too old, or it is not one of this gateway. Open the page again.";
  return {};
}

std::unique_ptr<cWebPage> Refuse(const cPageContext& context, unsigned int status, const std::string& text) {
  return std::make_unique<cErrorPage>(context, status, text);
}

std::unique_ptr<cWebPage> AskForLogin(const cPageContext& context, const cHttpRequest& request, bool needsSetup) {
  if (context.route.isForPrograms)
    return std::make_unique<cErrorPage>(context, 401, "Log in, or show a token.",
                                        "WWW-Authenticate: Bearer realm=\"tav gateway\"");
  if (needsSetup) return std::make_unique<cRedirectPage>(context, "/setup");
  // Back to where he wanted to go; the query is left out, it may be long.
  const std::string path = request.GetRecord().GetTextPar(http::kPathInfo);
  return std::make_unique<cRedirectPage>(context, path == "/" ? "/login" : MakeUrl("/login", {{"to", path}}));
}

}  // namespace

std::unique_ptr<cWebPage> cGate::Admit(const cHttpRequest& request) {
  const cRoute* const found = FindRoute(request.GetRecord().GetTextPar(http::kPathInfo));
  const cRoute& route = found != nullptr ? *found : GetNoRoute();
  const cPageContext context{m_service, m_gateway,
                             m_access,  m_live,
                             route,     m_access.Identify(request, route.isForPrograms, !route.isForPrograms)};
  if (found == nullptr) return Refuse(context, 404, "There is no such page.");
  const eMethod method = MethodOf(request);
  if (method == eMethod::Other || (method == eMethod::Post && route.sender == eSender::None))
    return std::make_unique<cErrorPage>(context, 405, "The page does not take that.",
                                        route.sender == eSender::None ? "Allow: GET, HEAD" : "Allow: GET, HEAD, POST");
  if (context.visitor.role < route.least) {
    if (context.visitor.role == eRole::Nobody) return AskForLogin(context, request, m_access.NeedsSetup());
    return Refuse(context, 403, "Your account may not see this page.");
  }
  if (method == eMethod::Post)
    if (const std::string fault = FormFault(request, context); !fault.empty()) return Refuse(context, 403, fault);
  return route.make(context);
}

}  // namespace tav::pages
