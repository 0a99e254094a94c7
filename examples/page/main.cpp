// SPDX-License-Identifier: Apache-2.0
// The smallest page process: serves one page of the gateway's web front end, which greets by name, tells the time and
// counts the visits of each session.
//
//   tav-gateway run --dir /tmp/gateway &
//   example-page /tmp/gateway
//
// Then look at /hello?name=Anna in a browser.
#include <csignal>
#include <iostream>
#include <map>
#include <memory>
#include <string>

#include <tav/framework/scm_service.h>
#include <tav/framework/time.h>
#include <tav/framework/watch.h>
#include <tav/http/http_io.h>
#include <tav/http/http_page.h>
#include <tav/http/http_protocol.h>
#include <tav/http/http_session.h>

namespace {

constexpr const char* kPath = "/hello";
constexpr const char* kCookie = "hello-sid";
constexpr const char* kContentType = "text/html; charset=utf-8";

// What a client sent may be anything; in a page it must be nothing but text.
std::string Escaped(const std::string& text) {
  std::string escaped;
  for (const char c : text) switch (c) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      case '\'':
        escaped += "&#39;";
        break;
      default:
        escaped += c;
        break;
    }
  return escaped;
}

}  // namespace

// The page of one session. It answers at once, so it never waits for a message.
class cHelloPage : public tav::cHttpPage {
 public:
  using cHttpPage::cHttpPage;

  bool Process(tav::cHttpRequest& request) override {
    if (request.GetRecord().GetTextPar(tav::http::kPathInfo) != kPath) return Refuse(404);
    ++m_visits;
    SendHeader(request);
    const std::string name = request.GetFromQueryString("name");
    HttpOutput(0, "<!DOCTYPE html>\n<html lang=\"en\"><head><title>Hello</title></head><body>\n");
    HttpOutput(0, "<h1>Hello, " + Escaped(name.empty() ? "world" : name) + "!</h1>\n");
    HttpOutput(0, "<p>It is " + vorn::cTime::Now().ToISO8601String() + ".</p>\n");
    HttpOutput(0, "<p>Visits of this session: " + std::to_string(m_visits) + "</p>\n</body></html>\n");
    CloseSuccess();
    return true;
  }
  bool OnMessage(vorn::cMsg&) override { return false; }

 private:
  // A client that is new is told the name of its session; HttpSuccessHeader has no room for that.
  void SendHeader(const tav::cHttpRequest& request) {
    if (m_visits > 1) {
      HttpSuccessHeader(0, kContentType);
      return;
    }
    const bool secure = request.GetRecord().GetTextPar(tav::http::kRequestScheme) == "https";
    HttpOutput(0, "Status: 200\r\n" + request.GetCacheControlOFF() + "Content-Type: " + kContentType +
                      "\r\nSet-Cookie: " + kCookie + "=" + GetSession()->GetSid().ToString() +
                      "; HttpOnly; Path=" + kPath + "; SameSite=Strict" + (secure ? "; Secure" : "") + "\r\n\r\n");
  }
  bool Refuse(unsigned int status) {
    HttpErrorHeader(0, status);
    CloseSuccess();
    return true;
  }

  unsigned int m_visits = 0;
};

// Registers with every connection, so that a front end that was restarted finds this process again.
class cHelloIO : public tav::cHttpIO {
 public:
  explicit cHelloIO(vorn::cScmService* service) : cHttpIO(service, "web", nullptr) {}

  void OnConnect() override {
    cHttpIO::OnConnect();
    vorn::cMsg registration(tav::http::eRegister);
    registration.Record().AppendTextPar(tav::http::kPrefix, kPath);
    Send(registration);
  }
};

// A client, and the page that it looks at.
class cVisitor {
 public:
  static constexpr unsigned int kSeconds = 600;  // without a visit

  cVisitor(vorn::cUuid& sid, vorn::cScmService* service) : m_session(sid, service, kSeconds), m_page(service) {
    tav::HttpSessions.Set(sid, &m_session);
  }
  ~cVisitor() { tav::HttpSessions.Remove(m_session.GetSid()); }
  cVisitor(const cVisitor&) = delete;
  cVisitor& operator=(const cVisitor&) = delete;

  void Visit(tav::cHttpRequest& request) {
    m_session.SetTimeout(kSeconds);
    m_session.Run(request, &m_page);
  }

 private:
  tav::cHttpSession m_session;
  cHelloPage m_page;
};

class cExamplePage : public vorn::cScmService {
 public:
  explicit cExamplePage(const std::string& directory) : cScmService("example-page", directory), m_web(this) {}

  // Requests come here, timer messages too, and whatever else the channel does not take.
  bool DispatchMessage(const vorn::cMsg& msg) override {
    switch (msg.GetType()) {
      case tav::http::eRequest:
        Serve(msg);
        return true;
      case tav::http::eSessionTimeout:
        m_visitors.erase(msg.Record().GetUuidPar(tav::http::kSid));
        return true;
      case tav::http::eRegisterFailed:
        std::cerr << "not registered: " << msg.Record().GetTextPar(tav::http::kReason) << std::endl;
        return true;
      default:
        return false;
    }
  }

 private:
  // Clients that keep no cookie are new with every visit; they must not fill the memory.
  static constexpr std::size_t kMaxVisitors = 1000;

  void Serve(vorn::cMsg msg) {
    tav::cHttpRequest request(msg);
    if (cVisitor* const visitor = VisitorOf(request)) return visitor->Visit(request);
    vorn::cMsg refused(tav::http::eRequestRefused);
    refused.SetId(request.GetRequestId());
    refused.Record().AppendTextPar(tav::http::kReason, "there are too many visitors");
    if (request.GetReplyChannel()) request.GetReplyChannel()->Send(refused);
  }
  // The one whose cookie it is, else a new one; null when there are too many.
  cVisitor* VisitorOf(const tav::cHttpRequest& request) {
    tav::cHttpCookie cookie;
    vorn::cUuid sid;
    if (request.GetCookie(kCookie, cookie) && sid.FromString(cookie.value)) {
      const auto known = m_visitors.find(sid);
      if (known != m_visitors.end()) return known->second.get();
    }
    if (m_visitors.size() >= kMaxVisitors) return nullptr;
    sid.Create();
    return (m_visitors[sid] = std::make_unique<cVisitor>(sid, this)).get();
  }

  cHelloIO m_web;
  std::map<vorn::cUuid, std::unique_ptr<cVisitor>> m_visitors;
};

int main(int argc, char** argv) {
  cExamplePage process(argc > 1 ? argv[1] : "");
  const vorn::cSignalWatch end(&process, {SIGTERM, SIGINT}, [&process](int) { process.Stop(); });
  process.Run();
}
