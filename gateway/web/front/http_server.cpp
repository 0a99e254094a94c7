// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/front/http_server.h>

#include <microhttpd.h>
#include <netinet/in.h>

#include <csignal>
#include <cstdarg>
#include <cstdio>

#include <gateway/web/front/unit_web.h>
#include <gateway/web/front/web_limits.h>

namespace tav::gateway::web {

namespace {

// Of a connection: its header, what the library makes of it, and room to say so when it is too large.
constexpr std::size_t kConnectionMemory = kMaxHeaderBytes + (std::size_t{32} << 10);
constexpr std::size_t kMemoryStep = std::size_t{4} << 10;
// We judge requests ourselves, where the library would close the connection without a word.
constexpr int kStrict = 0;

cConnection* ConnectionOf(MHD_Connection* handle) {
  const auto* const info = MHD_get_connection_info(handle, MHD_CONNECTION_INFO_SOCKET_CONTEXT);
  return info != nullptr ? static_cast<cConnection*>(info->socket_context) : nullptr;
}

}  // namespace

// What the library calls; none of it may throw.
struct cHttpCallbacks {
  static void Say(void* self, const char* format, va_list arguments) noexcept {
    char text[512];
    std::vsnprintf(text, sizeof text, format, arguments);
    std::string line(text);
    while (line.ends_with('\n')) line.pop_back();
    vorn::Trace(UnitWeb(), 16, "web: ", line);
    static_cast<cHttpServer*>(self)->m_said = line;
  }
  static void Notify(void* self, MHD_Connection* handle, void** context, MHD_ConnectionNotificationCode code) noexcept {
    cConnectionTable& connections = static_cast<cHttpServer*>(self)->m_connections;
    if (code == MHD_CONNECTION_NOTIFY_STARTED) {
      *context = connections.Add(handle);
    } else if (*context != nullptr) {
      connections.Remove(static_cast<cConnection*>(*context));
      *context = nullptr;
    }
  }
  static void* Begin(void*, const char* target, MHD_Connection* handle) noexcept {
    if (cConnection* connection = ConnectionOf(handle)) connection->BeginRequest(target);
    return nullptr;
  }
  static std::size_t Decode(void*, MHD_Connection* handle, char* text) noexcept {
    cConnection* const connection = ConnectionOf(handle);
    return connection != nullptr ? connection->Decode(text) : MHD_http_unescape(text);
  }
  static MHD_Result Handle(void*, MHD_Connection* handle, const char* path, const char* method, const char* version,
                           const char* body, std::size_t* bodySize, void**) noexcept {
    cConnection* const connection = ConnectionOf(handle);
    return connection != nullptr && connection->Handle(path, method, version, body, bodySize) ? MHD_YES : MHD_NO;
  }
  static void End(void* self, MHD_Connection* handle, void**, MHD_RequestTerminationCode) noexcept {
    cConnection* const connection = ConnectionOf(handle);
    if (connection == nullptr) return;
    connection->EndRequest();
    static_cast<cHttpServer*>(self)->m_connections.MoveToEnd(connection);
  }
};

cHttpServer::cHttpServer(cServiceHost* host, const cWebParts& parts)
    : m_parts(parts), m_connections(host, m_parts), m_host(host), m_again(host, [this] { Run(); }) {
  m_parts.runLater = [this] { m_again.Post(); };
}

cHttpServer::~cHttpServer() {
  m_watch.reset();
  if (m_daemon == nullptr) return;
  m_connections.AbortAll();
  MHD_run(m_daemon);
  MHD_stop_daemon(m_daemon);
}

std::string cHttpServer::Start(cDescriptor socket, const std::string& certificate, const std::string& key) {
  unsigned int flags = MHD_USE_EPOLL | MHD_ALLOW_SUSPEND_RESUME | MHD_USE_ERROR_LOG;
  const bool isTls = !certificate.empty();
  if (isTls) flags |= MHD_USE_TLS;
  if (!socket.IsOpen()) flags |= MHD_USE_NO_LISTEN_SOCKET;
  signal(SIGPIPE, SIG_IGN);  // a file that is sent to a client who has gone would end the process
  const auto pointer = [](const std::string& text) { return const_cast<char*>(text.c_str()); };
  const MHD_OptionItem tls[] = {{isTls ? MHD_OPTION_HTTPS_MEM_CERT : MHD_OPTION_END, 0, pointer(certificate)},
                                {MHD_OPTION_HTTPS_MEM_KEY, 0, pointer(key)},
                                {MHD_OPTION_END, 0, nullptr}};
  const MHD_OptionItem listening[] = {
      {socket.IsOpen() ? MHD_OPTION_LISTEN_SOCKET : MHD_OPTION_END, socket.Get(), nullptr},
      {MHD_OPTION_END, 0, nullptr}};
  m_daemon = MHD_start_daemon(flags, 0, nullptr, nullptr, &cHttpCallbacks::Handle, this,                    //
                              MHD_OPTION_EXTERNAL_LOGGER, &cHttpCallbacks::Say, this,                       //
                              MHD_OPTION_ARRAY, listening, MHD_OPTION_ARRAY, tls,                           //
                              MHD_OPTION_CONNECTION_LIMIT, static_cast<unsigned int>(kMaxConnections),      //
                              MHD_OPTION_CONNECTION_TIMEOUT, 0U,                                            //
                              MHD_OPTION_CONNECTION_MEMORY_LIMIT, kConnectionMemory,                        //
                              MHD_OPTION_CONNECTION_MEMORY_INCREMENT, kMemoryStep,                          //
                              MHD_OPTION_STRICT_FOR_CLIENT, kStrict, MHD_OPTION_SIGPIPE_HANDLED_BY_APP, 1,  //
                              MHD_OPTION_NOTIFY_CONNECTION, &cHttpCallbacks::Notify, this,                  //
                              MHD_OPTION_NOTIFY_COMPLETED, &cHttpCallbacks::End, this,                      //
                              MHD_OPTION_URI_LOG_CALLBACK, &cHttpCallbacks::Begin, this,                    //
                              MHD_OPTION_UNESCAPE_CALLBACK, &cHttpCallbacks::Decode, this,                  //
                              MHD_OPTION_END);
  if (m_daemon == nullptr) return m_said.empty() ? "the HTTP library does not start" : m_said;
  socket.Release();
  const int set = MHD_get_daemon_info(m_daemon, MHD_DAEMON_INFO_EPOLL_FD)->epoll_fd;
  m_watch.emplace(m_host, set, vorn::cWatch::eEvent::Read, [this] { Run(); });
  return {};
}

bool cHttpServer::Add(cDescriptor socket) {
  sockaddr_in nobody{};
  nobody.sin_family = AF_INET;
  const int given = socket.Release();  // closed by the library in either case
  const bool isAdded = m_daemon != nullptr && MHD_add_connection(m_daemon, given, reinterpret_cast<sockaddr*>(&nobody),
                                                                 sizeof nobody) == MHD_YES;
  Run();
  return isAdded;
}

void cHttpServer::Run() {
  MHD_run(m_daemon);
  MHD_UNSIGNED_LONG_LONG wait = 0;
  if (MHD_get_timeout(m_daemon, &wait) != MHD_YES)
    m_again.Stop();
  else if (wait == 0)
    m_again.Post();
  else
    m_again.Start(static_cast<unsigned int>(wait));
}

}  // namespace tav::gateway::web
