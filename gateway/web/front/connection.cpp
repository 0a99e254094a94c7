// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/front/connection.h>

#include <microhttpd.h>
#include <sys/socket.h>

#include <utility>

#include <gateway/web/front/listen_socket.h>
#include <gateway/web/front/page_server.h>
#include <gateway/web/front/response.h>
#include <gateway/web/front/socket_progress.h>
#include <gateway/web/front/unit_web.h>
#include <gateway/web/front/web_limits.h>

namespace tav::gateway::web {

namespace {

constexpr std::string_view kStatic = "/static/";

int SocketOf(MHD_Connection* handle) {
  return MHD_get_connection_info(handle, MHD_CONNECTION_INFO_CONNECTION_FD)->connect_fd;
}

std::string AddressOf(MHD_Connection* handle) {
  const auto* const info = MHD_get_connection_info(handle, MHD_CONNECTION_INFO_CLIENT_ADDRESS);
  return info != nullptr && info->client_addr != nullptr ? HostOf(info->client_addr) : std::string();
}

}  // namespace

cConnection::cConnection(const cWebParts& parts, MHD_Connection* handle)
    : m_parts(parts), m_handle(handle), m_socket(SocketOf(handle)), m_remoteAddress(AddressOf(handle)), m_since(Now()) {
  m_headerSince = m_since;  // who connects has something to say
}

std::int64_t cConnection::Now() const { return m_parts.pages->Now(); }

void cConnection::Enter(ePhase phase) {
  m_phase = phase;
  m_since = Now();
}

// ---- what the HTTP library tells

void cConnection::BeginRequest(std::string_view target) {
  m_request.emplace(m_handle, target);
  ++m_parts.counters->requests;
}

std::size_t cConnection::Decode(char* text) {
  return m_request ? m_request->Decode(text) : std::string_view(text).size();
}

bool cConnection::Handle(std::string_view path, std::string_view method, std::string_view version, const char* body,
                         std::size_t* bodySize) {
  if (!m_request || m_isAborted) return false;
  if (!m_request->HasHeader()) return TakeHeader(path, method, version);
  if (*bodySize != 0) {
    m_parts.counters->bytesReceived += *bodySize;
    m_request->TakeBody(body, std::exchange(*bodySize, 0));
    return !m_request->HasOverrun();
  }
  return m_exchange ? GoOn() : Route();
}

bool cConnection::TakeHeader(std::string_view path, std::string_view method, std::string_view version) {
  m_request->TakeHeader(path, method, version, m_parts.tempFiles, m_parts.maxBodyBytes);
  Enter(ePhase::Body);
  return !m_request->MustAnswerNow() || Refuse(m_request->GetFault());
}

void cConnection::EndRequest() {
  m_exchange.reset();
  m_request.reset();
  Enter(ePhase::Idle);
  m_headerSince.reset();
  m_received = ReadProgress(m_socket).received;
}

// ---- from request to answer

bool cConnection::Route() {
  m_request->Finish();
  const std::string& path = m_request->GetPath();
  if (m_request->GetFault()) return Refuse(m_request->GetFault());
  if (path.starts_with(kStatic) || path == "/favicon.ico" || path == "/robots.txt") return AnswerFile();
  return AskPage();
}

bool cConnection::AnswerFile() {
  if (!m_request->IsReading()) {
    cAnswer answer = MakeErrorAnswer({405, "A file can only be read"});
    answer.fields.push_back({"Allow", "GET, HEAD"});
    ++m_parts.counters->refused;
    return Answer(std::move(answer));
  }
  const std::string& path = m_request->GetPath();
  if (path == "/robots.txt")
    return Answer({200, {{"Content-Type", "text/plain"}}, "User-agent: *\nDisallow: /\n", cDescriptor(), 0, 0});
  const std::string name = path.substr(path.starts_with(kStatic) ? kStatic.size() : 1);
  return Answer(m_parts.files->Answer(name, m_request->MakeFileWish()));
}

bool cConnection::AskPage() {
  const cPageProcess* const process = m_parts.pages->Find(m_request->GetPath());
  if (process == nullptr) {
    m_parts.pages->CountFailure();
    return Answer(MakeErrorAnswer({503, "No process serves this page now"}));
  }
  vorn::cRecord message;
  const cRequestPlace place{m_parts.serverPort, m_remoteAddress, m_parts.isTls};
  if (const cHttpFault fault = m_request->MakeMessage(place, message)) return Refuse(fault);
  Enter(ePhase::Page);
  m_exchange =
      std::make_unique<cPageExchange>(m_parts.pages, *process, message,
                                      cClientTraits{m_request->IsHead(), m_request->AcceptsGzip()}, [this] { Wake(); });
  return GoOn();
}

bool cConnection::GoOn() {
  std::optional<cPageExchange::cBeginning> beginning = m_exchange->Begin();
  if (!beginning) return Rest();
  if (!beginning->isStream) return Answer(std::move(beginning->answer));
  const auto read = [](void* self, std::uint64_t, char* to, std::size_t most) {
    return static_cast<cConnection*>(self)->Read(to, most);
  };
  return Queue(beginning->answer.status,
               MakeStreamResponse(beginning->answer, m_parts.isTls, m_request->IsHead(), read, this));
}

bool cConnection::Answer(cAnswer answer) {
  const unsigned int status = answer.status;
  if (!m_request->IsHead()) m_parts.counters->bytesSent += answer.file.IsOpen() ? answer.size : answer.body.size();
  return Queue(status, MakeResponse(std::move(answer), m_parts.isTls));
}

bool cConnection::Refuse(const cHttpFault& fault) {
  ++m_parts.counters->refused;
  cAnswer answer = MakeErrorAnswer(fault);
  if (fault.status == 405) answer.fields.push_back({"Allow", "GET, HEAD, POST, PUT, PATCH, DELETE, OPTIONS"});
  answer.fields.push_back({"Connection", "close"});  // who knows where the next request begins
  return Answer(std::move(answer));
}

bool cConnection::Queue(unsigned int status, MHD_Response* response) {
  if (response == nullptr) return false;
  Enter(ePhase::Answer);
  m_takenAt = m_since;
  m_taken = ReadProgress(m_socket).acknowledged;
  const bool isQueued = MHD_queue_response(m_handle, status, response) == MHD_YES;
  MHD_destroy_response(response);
  return isQueued;
}

ssize_t cConnection::Read(char* to, std::size_t most) {
  std::size_t size = 0;
  const auto read = m_isAborted ? cPageExchange::eRead::Broken : m_exchange->Read(to, most, size);
  switch (read) {
    case cPageExchange::eRead::Bytes:
      m_parts.counters->bytesSent += size;
      return static_cast<ssize_t>(size);
    case cPageExchange::eRead::End:
      return MHD_CONTENT_READER_END_OF_STREAM;
    case cPageExchange::eRead::Nothing:
      if (Rest()) return 0;
      [[fallthrough]];
    case cPageExchange::eRead::Broken:
      Break();
      return MHD_CONTENT_READER_END_WITH_ERROR;
  }
  return MHD_CONTENT_READER_END_WITH_ERROR;
}

// Without chunks the end of the connection is the end of the answer: only a reset tells the client that it is not.
void cConnection::Break() {
  if (!m_request->IsHttp10()) return;
  const sockaddr nowhere{AF_UNSPEC, {}};
  static_cast<void>(connect(m_socket, &nowhere, sizeof nowhere));
}

bool cConnection::Rest() {
  if (m_isClientGone || m_isAborted) return false;
  MHD_suspend_connection(m_handle);
  m_isResting = true;
  return true;
}

void cConnection::Wake() {
  if (!m_isResting) return;
  if (!m_isAborted && !m_exchange->IsReady()) return;
  m_isResting = false;
  MHD_resume_connection(m_handle);
  m_parts.runLater();
}

// ---- what the table of connections tells

void cConnection::OnClientGone() {
  m_isClientGone = true;
  if (m_isResting) Abort();
}

void cConnection::Abort() {
  if (std::exchange(m_isAborted, true)) return;
  if (m_isResting)
    Wake();
  else
    shutdown(m_socket, SHUT_RDWR);  // the HTTP library sees it, and ends the connection
}

void cConnection::Check(std::int64_t now) {
  if (m_isAborted) return;
  if (m_phase == ePhase::Idle) return CheckIdle(now);
  if (m_phase == ePhase::Body) return CheckBody(now);
  if (m_phase == ePhase::Page) return m_exchange->OnTime(now);
  CheckAnswer(now);
}

void cConnection::CheckIdle(std::int64_t now) {
  const std::uint64_t received = ReadProgress(m_socket).received;
  if (!m_headerSince && received != m_received) m_headerSince = now;
  if (m_headerSince && now - *m_headerSince >= kHeaderTimeMs)
    EndFor({408, "The request takes too long"}, received != m_received);
  else if (!m_headerSince && now - m_since >= kIdleTimeMs)
    Abort();
}

void cConnection::CheckBody(std::int64_t now) {
  const std::int64_t counted = now - m_since - kBodyGraceMs;
  if (counted < 0 || m_request->GetBodySize() >= kLeastBodyRate * static_cast<std::uint64_t>(now - m_since) / 1000)
    return;
  EndFor({408, "The body comes too slowly"}, true);
}

void cConnection::CheckAnswer(std::int64_t now) {
  const std::uint64_t taken = ReadProgress(m_socket).acknowledged;
  if (m_isResting || taken != m_taken) {
    m_taken = taken;
    m_takenAt = now;
  } else if (now - m_takenAt >= kStuckTimeMs) {
    EndFor({408, "The answer is not read"}, false);
  }
}

void cConnection::EndFor(const cHttpFault& fault, bool tellClient) {
  ++m_parts.counters->timeouts;
  vorn::Trace(UnitWeb(), 8, "web: ", m_remoteAddress, ": ", fault.text);
  if (tellClient && !m_parts.isTls) {
    const std::string last = SerializeLast(MakeErrorAnswer(fault), false);
    send(m_socket, last.data(), last.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
  }
  Abort();
}

}  // namespace tav::gateway::web
