// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/front/web_front.h>

#include <sys/resource.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <optional>
#include <sstream>

#include <gateway/web/front/http_server.h>
#include <gateway/web/front/listen_socket.h>
#include <gateway/web/front/page_server.h>
#include <gateway/web/front/temp_files.h>

namespace tav::gateway::web {

namespace {

// A connection has its socket, and a file while one is sent or stored; the rest is for everything else.
constexpr rlim_t kFilesNeeded = 2 * kMaxConnections + 256;

void RaiseFileLimit() {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur >= kFilesNeeded) return;
  limit.rlim_cur = std::min(kFilesNeeded, limit.rlim_max);
  setrlimit(RLIMIT_NOFILE, &limit);
}

bool ReadFile(const std::string& file, std::string& text, std::string& error) {
  if (file.empty()) return true;
  std::ifstream stream(file);
  std::stringstream read;
  if (stream && (read << stream.rdbuf())) {
    text = read.str();
    return true;
  }
  error = "file '" + file + "' cannot be read: " + std::strerror(errno);
  return false;
}

}  // namespace

struct cWebFront::cState {
  cState(cServiceHost* serviceHost, const cWebOptions& webOptions)
      : host(serviceHost),
        options(webOptions),
        tempFiles(options.tempDirectory, kMaxStoredBytes),
        files(options.staticDirectory, options.chart) {}

  cServiceHost* host;
  cWebOptions options;
  std::string url;
  cWebCounters counters;
  cTempFiles tempFiles;
  cStaticFiles files;
  std::optional<cPageServer> pages;
  std::optional<cHttpServer> server;
};

cWebFront::cWebFront(cServiceHost* host, const cWebOptions& options)
    : m_state(std::make_unique<cState>(host, options)) {}

cWebFront::~cWebFront() = default;

cWebFront::eOutcome cWebFront::Start(std::string& error) {
  cState& state = *m_state;
  cListenAddress address;
  std::string certificate, key;
  error = state.options.Check();
  if (!error.empty() || !ReadListenAddress(state.options.listen, address, error) ||
      !ReadFile(state.options.certificate, certificate, error) || !ReadFile(state.options.key, key, error))
    return eOutcome::BadOption;
  const bool isTls = !certificate.empty();
  RaiseFileLimit();
  state.pages.emplace(state.host);
  error = state.pages->GetError();
  if (!state.pages->IsListening()) return eOutcome::NoSocket;
  error = state.tempFiles.Prepare();
  if (!error.empty()) return eOutcome::NoStorage;
  cDescriptor socket = Listen(address, error);
  if (!socket.IsOpen()) return eOutcome::NoSocket;
  address.port = PortOf(socket.Get());
  state.url = MakeUrl(address, isTls);
  state.server.emplace(state.host, cWebParts{&*state.pages,
                                             &state.files,
                                             &state.tempFiles,
                                             &state.counters,
                                             state.options.maxBodyBytes,
                                             std::to_string(address.port),
                                             isTls,
                                             {}});
  error = state.server->Start(std::move(socket), certificate, key);
  if (error.empty()) return eOutcome::Serving;
  if (isTls) error = "certificate '" + state.options.certificate + "', key '" + state.options.key + "': " + error;
  return isTls ? eOutcome::BadOption : eOutcome::NoSocket;
}

const std::string& cWebFront::GetUrl() const { return m_state->url; }

void cWebFront::Collect(cStatusValues& values) const {
  const cState& state = *m_state;
  const auto set = [&](const char* name, std::uint64_t count) { values.Set(name, std::to_string(count)); };
  values.Set("address", state.url);
  set("connections", state.server->GetConnections().Count());
  set("connections-evicted", state.counters.evicted);
  set("connections-timed-out", state.counters.timeouts);
  set("page-processes", state.pages->CountProcesses());
  set("requests", state.counters.requests);
  set("refused", state.counters.refused);
  set("failures", state.pages->CountFailures());
  set("bytes-received", state.counters.bytesReceived);
  set("bytes-sent", state.counters.bytesSent);
  set("bytes-stored", state.tempFiles.GetStored());
  set("bytes-waiting", state.pages->GetWaiting());
}

}  // namespace tav::gateway::web
