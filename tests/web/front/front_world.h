// SPDX-License-Identifier: Apache-2.0
// A web front end, page processes and clients on loops of their own in one thread, over real sockets.
#pragma once

#include <arpa/inet.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <vector>

#include <gateway/web/front/web_front.h>
#include <tav/framework/clock.h>
#include <tav/framework/scm_service.h>
#include <tav/http/http_io.h>
#include <tav/http/http_protocol.h>
#include <tav/http/http_request.h>
#include <tests/support/temp_folder.h>

namespace tav::gateway::web {

// A client of its own, byte by byte.
class cWebClient {
 public:
  explicit cWebClient(int port, int receiveBuffer = 0) {
    m_socket = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (receiveBuffer != 0) setsockopt(m_socket, SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof receiveBuffer);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    m_isConnected = connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    fcntl(m_socket, F_SETFL, O_NONBLOCK);
  }
  ~cWebClient() { Close(); }
  cWebClient(const cWebClient&) = delete;
  cWebClient& operator=(const cWebClient&) = delete;

  bool IsConnected() const { return m_isConnected; }
  void Close() {
    if (m_socket >= 0) close(m_socket);
    m_socket = -1;
  }
  void EndOutput() { shutdown(m_socket, SHUT_WR); }
  void Send(const std::string& text) { m_output += text; }

  // Moves what can be moved; true when something was.
  bool Turn(std::size_t most = 1 << 20) {
    bool busy = false;
    if (!m_output.empty()) {
      const ssize_t size = send(m_socket, m_output.data(), m_output.size(), MSG_NOSIGNAL);
      if (size > 0) {
        m_output.erase(0, static_cast<std::size_t>(size));
        busy = true;
      } else if (errno != EAGAIN) {
        m_output.clear();
      }
    }
    // One for all: a thousand clients that have nothing to read are to cost next to nothing.
    static std::array<char, 1 << 16> part;
    const ssize_t size = m_socket >= 0 && most != 0 ? recv(m_socket, part.data(), std::min(most, part.size()), 0) : -1;
    if (size > 0) {
      m_input.append(part.data(), static_cast<std::size_t>(size));
      busy = true;
    } else if (most != 0 && (size == 0 || (errno != EAGAIN && errno != EWOULDBLOCK))) {
      m_wasReset |= size < 0;
      m_isClosed = true;
    }
    return busy;
  }

  std::string& Input() { return m_input; }
  std::size_t GetUnsent() const { return m_output.size(); }
  bool IsClosed() const { return m_isClosed; }  // by the other end
  bool WasReset() const { return m_wasReset; }

 private:
  int m_socket = -1;
  bool m_isConnected = false;
  bool m_isClosed = false;
  bool m_wasReset = false;
  std::string m_output;
  std::string m_input;
};

// One answer as it came.
struct cReply {
  unsigned int status = 0;
  std::string header;  // with the status line
  std::string body;    // decoded of chunks
  bool isWhole = false;

  // Of the first field of that name; "(none)" when there is none.
  std::string Field(const std::string& name) const {
    const std::string find = "\r\n" + name + ": ";
    const std::size_t at = header.find(find);
    if (at == std::string::npos) return "(none)";
    return header.substr(at + find.size(), header.find("\r\n", at + 2) - at - find.size());
  }
  bool HasField(const std::string& name) const { return Field(name) != "(none)"; }
};

// Takes one answer off the front of what came. isHead: it has no body.
inline cReply TakeReply(std::string& input, bool isClosed, bool isHead = false) {
  cReply reply;
  const std::size_t end = input.find("\r\n\r\n");
  if (end == std::string::npos) return reply;
  reply.header = input.substr(0, end + 2);
  reply.status = static_cast<unsigned int>(std::strtoul(reply.header.c_str() + 9, nullptr, 10));
  std::string rest = input.substr(end + 4);
  if (isHead || reply.status == 304 || reply.status == 204) {
    reply.isWhole = true;
  } else if (reply.HasField("Content-Length")) {
    const std::size_t size = std::stoul(reply.Field("Content-Length"));
    reply.isWhole = rest.size() >= size;
    reply.body = rest.substr(0, size);
    rest.erase(0, size);
  } else if (reply.Field("Transfer-Encoding") == "chunked") {
    while (!reply.isWhole) {
      const std::size_t line = rest.find("\r\n");
      if (line == std::string::npos) break;
      const std::size_t size = std::stoul(rest, nullptr, 16);
      if (rest.size() < line + 2 + size + 2) break;
      reply.body += rest.substr(line + 2, size);
      rest.erase(0, line + 2 + size + 2);
      reply.isWhole = size == 0;
    }
  } else {
    reply.isWhole = isClosed;
    reply.body = rest;
    rest.clear();
  }
  if (reply.isWhole) input = rest;
  return reply;
}

// A page process that a test plays: it writes down what comes, and answers by hand.
class cTestPages : public cHttpIO {
 public:
  cTestPages(vorn::cScmService* service, vorn::cMsg* registration) : cHttpIO(service, "web", registration) {}

  bool DispatchMessage(const vorn::cMsg& msg) override {
    if (msg.GetType() == http::eRegistered) isRegistered = true;
    if (msg.GetType() == http::eRegisterFailed) refusal = msg.Record().GetTextPar(http::kReason);
    if (msg.GetType() == http::eRequest) {
      requests.push_back(msg);
      if (onRequest) onRequest(msg);
    }
    if (msg.GetType() == http::eOutputPassed) ++passed;
    if (msg.GetType() == http::eOutputLost) lost.push_back(msg.Record().GetTextPar(http::kReason));
    return cHttpIO::DispatchMessage(msg) || msg.GetType() != 0;
  }

  // ---- answers
  int Reply(const vorn::cMsg& request, unsigned int type, const vorn::cRecord& record = {}) {
    vorn::cMsg msg(type);
    msg.SetId(request.GetId());
    msg.Record() = record;
    return Send(msg);
  }
  void Accept(const vorn::cMsg& request) { Reply(request, http::eRequestTaken); }
  void Refuse(const vorn::cMsg& request, const std::string& reason) {
    vorn::cRecord record;
    record.AppendTextPar(http::kReason, reason);
    Reply(request, http::eRequestRefused, record);
  }
  bool Output(const vorn::cMsg& request, const std::string& content) {
    vorn::cRecord record;
    record.AppendBoolPar(http::kFinish, false);
    record.AppendTextPar(http::kContent, content);
    return Reply(request, http::eOutput, record) == 1;
  }
  void Finish(const vorn::cMsg& request, bool success = true) {
    vorn::cRecord record;
    record.AppendBoolPar(http::kFinish, true);
    record.AppendBoolPar(http::kSuccess, success);
    Reply(request, http::eOutput, record);
  }
  // All of a page.
  void Serve(const vorn::cMsg& request, const std::string& header, const std::string& body) {
    Accept(request);
    Output(request, header);
    if (!body.empty()) Output(request, body);
    Finish(request);
  }

  bool isRegistered = false;
  std::string refusal;
  std::vector<vorn::cMsg> requests;
  unsigned int passed = 0;
  std::vector<std::string> lost;
  std::function<void(const vorn::cMsg&)> onRequest;
};

struct cTestPageProcess {
  cTestPageProcess(const std::string& name, const std::string& directory, vorn::cMsg registration)
      : service(name, directory), pages(&service, &registration) {}
  vorn::cScmService service;
  cTestPages pages;
};

class FrontWorld : public testing::Test {
 protected:
  static constexpr const char* kHtml = "Status: 200\r\nContent-Type: text/html\r\n\r\n";

  FrontWorld() {
    m_options.listen = "127.0.0.1:0";
    m_options.tempDirectory = m_folder.File("web-tmp");
    m_options.staticDirectory = m_folder.File("static");
    std::filesystem::create_directory(m_options.staticDirectory);
  }
  ~FrontWorld() override {
    m_clients.clear();
    m_front.reset();
    m_processes.clear();
  }

  void Start() {
    m_host = std::make_unique<cServiceHost>("tav-gateway", m_folder.GetPath(), m_clock);
    m_front = std::make_unique<cWebFront>(m_host.get(), m_options);
    std::string error;
    ASSERT_EQ(m_front->Start(error), cWebFront::eOutcome::Serving) << error;
    const std::string& url = m_front->GetUrl();
    m_port = std::stoi(url.substr(url.rfind(':') + 1));
  }
  void Stop() {
    m_front.reset();
    m_host.reset();
  }

  cTestPages& AddPages(const std::vector<std::string>& prefixes = {}, bool flow = false) {
    vorn::cMsg registration(http::eRegister);
    for (const std::string& prefix : prefixes) registration.Record().AppendTextPar(http::kPrefix, prefix);
    if (flow) registration.Record().AppendBoolPar(http::kFlow, true);
    m_processes.push_back(std::make_unique<cTestPageProcess>("test-pages", m_folder.GetPath(), registration));
    cTestPages& pages = m_processes.back()->pages;
    EXPECT_TRUE(Await([&] { return pages.isRegistered || !pages.refusal.empty(); }));
    return pages;
  }
  void Kill(cTestPages& pages) {
    std::erase_if(m_processes, [&](const auto& process) { return &process->pages == &pages; });
  }
  cWebClient& Connect(int receiveBuffer = 0) {
    m_clients.push_back(std::make_unique<cWebClient>(m_port, receiveBuffer));
    EXPECT_TRUE(m_clients.back()->IsConnected());
    return *m_clients.back();
  }

  // ---- turns
  bool Turn(bool clientsRead = true) {
    bool busy = m_host && m_host->Poll(0);
    for (const auto& process : m_processes) busy |= process->service.Poll(0);
    for (const auto& client : m_clients) busy |= client->Turn(clientsRead ? 1 << 20 : 0);
    return busy;
  }
  bool Await(const std::function<bool()>& holds, bool clientsRead = true) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!holds()) {
      if (std::chrono::steady_clock::now() > end) return false;
      if (!Turn(clientsRead)) poll(nullptr, 0, 1);
    }
    return true;
  }
  // Until nothing has moved for a few turns.
  void Settle(bool clientsRead = true) {
    for (int quiet = 0; quiet < 5;) {
      quiet = Turn(clientsRead) ? 0 : quiet + 1;
      if (quiet != 0) poll(nullptr, 0, 2);
    }
  }

  // ---- requests and answers
  static std::string Get(const std::string& target, const std::string& fields = "", const std::string& method = "GET",
                         const std::string& version = "HTTP/1.1") {
    return method + " " + target + " " + version + "\r\nHost: gateway\r\n" + fields + "\r\n";
  }
  static std::string Post(const std::string& target, const std::string& type, const std::string& body,
                          const std::string& method = "POST") {
    return Get(target, "Content-Type: " + type + "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n",
               method) +
           body;
  }
  cReply AwaitReply(cWebClient& client, bool isHead = false) {
    cReply reply;
    Await([&] {
      if (client.Input().starts_with("HTTP/1.1 100 ")) client.Input().erase(0, client.Input().find("\r\n\r\n") + 4);
      reply = TakeReply(client.Input(), client.IsClosed(), isHead);
      return reply.isWhole || client.IsClosed();
    });
    return reply;
  }
  cReply Ask(const std::string& request, bool isHead = false) {
    cWebClient& client = Connect();
    client.Send(request);
    return AwaitReply(client, isHead);
  }
  // The next request that reaches the pages.
  vorn::cMsg AwaitRequest(cTestPages& pages, std::size_t number = 1) {
    EXPECT_TRUE(Await([&] { return pages.requests.size() >= number; }));
    return pages.requests.size() >= number ? pages.requests[number - 1] : vorn::cMsg();
  }
  std::string Value(const std::string& name) const {
    cStatusValues values;
    m_front->Collect(values);
    std::string value;
    return values.Get(name, value) ? value : "(none)";
  }
  void Advance(std::int64_t milliseconds) {
    m_clock->Advance(milliseconds);
    Settle();
  }
  // Passes time in steps that the front end looks at.
  void Pass(std::int64_t milliseconds) {
    for (std::int64_t passed = 0; passed < milliseconds; passed += 1000) Advance(1000);
  }

  cTempFolder m_folder;
  std::shared_ptr<vorn::cManualClock> m_clock = std::make_shared<vorn::cManualClock>();
  cWebOptions m_options;
  std::unique_ptr<cServiceHost> m_host;
  std::unique_ptr<cWebFront> m_front;
  std::vector<std::unique_ptr<cTestPageProcess>> m_processes;
  std::list<std::unique_ptr<cWebClient>> m_clients;
  int m_port = 0;
};

}  // namespace tav::gateway::web
