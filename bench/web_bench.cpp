// SPDX-License-Identifier: Apache-2.0
// A page, a file and a download through the front end and a page process; against the HTTP library that answers the
// same by itself. Every process on loopback; sixteen connections that stay open, one request at a time on each.
#include <arpa/inet.h>
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <microhttpd.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <bench/support/child.h>
#include <bench/support/figures.h>
#include <gateway/web/front/web_front.h>
#include <tav/http/http_io.h>
#include <tav/http/http_protocol.h>
#include <tests/support/temp_folder.h>

using namespace tav::bench;

namespace {

constexpr std::size_t kConnections = 16;
constexpr std::size_t kPageBytes = 2'000;
constexpr std::size_t kFileBytes = 50'000;
constexpr std::size_t kPieceBytes = std::size_t{64} << 10;
constexpr std::size_t kDownloadBytes = std::size_t{10} << 20;
constexpr unsigned int kAhead = 8;  // pieces of a download on their way

// ---- the page process

// Small pages at once; a download piece by piece, as the front end acknowledges them.
class cBenchPages : public tav::cHttpIO {
 public:
  cBenchPages(vorn::cScmService* service, vorn::cMsg* registration, std::function<void()> onRegistered)
      : cHttpIO(service, "web", registration), m_onRegistered(std::move(onRegistered)) {}

  bool DispatchMessage(const vorn::cMsg& msg) override {
    if (msg.GetType() == tav::http::eRegistered) m_onRegistered();
    if (msg.GetType() == tav::http::eOutputPassed) SendPiece(msg.GetId());
    if (msg.GetType() == tav::http::eRequest) Serve(msg);
    return true;
  }

 private:
  void Serve(const vorn::cMsg& request) {
    Answer(request.GetId(), tav::http::eRequestTaken, {});
    const bool isDownload = request.Record().GetTextPar(tav::http::kPathInfo) == "/download";
    Output(request.GetId(), "Status: 200\r\nContent-Type: application/x-bench\r\n\r\n");
    if (!isDownload) {
      Output(request.GetId(), std::string(kPageBytes, 'x'));
      return Finish(request.GetId());
    }
    m_left = kDownloadBytes;
    for (unsigned int i = 1; i < kAhead; ++i) SendPiece(request.GetId());
  }
  void SendPiece(const vorn::cUuid& id) {
    if (m_left == 0) return;
    Output(id, std::string(std::min(kPieceBytes, m_left), 'x'));
    m_left -= std::min(kPieceBytes, m_left);
    if (m_left == 0) Finish(id);
  }
  void Output(const vorn::cUuid& id, const std::string& content) {
    vorn::cRecord record;
    record.AppendBoolPar(tav::http::kFinish, false);
    record.AppendTextPar(tav::http::kContent, content);
    Answer(id, tav::http::eOutput, record);
  }
  void Finish(const vorn::cUuid& id) {
    vorn::cRecord record;
    record.AppendBoolPar(tav::http::kFinish, true);
    record.AppendBoolPar(tav::http::kSuccess, true);
    Answer(id, tav::http::eOutput, record);
  }
  void Answer(const vorn::cUuid& id, unsigned int type, const vorn::cRecord& record) {
    vorn::cMsg msg(type);
    msg.SetId(id);
    msg.Record() = record;
    Send(msg);
  }

  std::function<void()> m_onRegistered;
  std::size_t m_left = 0;
};

void RunPages(const std::string& folder, const cChild::Ready& ready) {
  vorn::cScmService service("bench-pages", folder);
  vorn::cMsg registration(tav::http::eRegister);
  registration.Record().AppendBoolPar(tav::http::kFlow, true);
  cBenchPages pages(&service, &registration, ready);
  service.Run();
}

void RunFront(const cTempFolder& folder, const cChild::Ready& ready) {
  tav::gateway::cServiceHost host("bench-front", folder.GetPath());
  tav::gateway::web::cWebOptions options;
  options.listen = "127.0.0.1:0";
  options.staticDirectory = folder.GetPath();
  options.tempDirectory = folder.File("web-tmp");
  tav::gateway::web::cWebFront front(&host, options);
  std::string error;
  if (front.Start(error) != tav::gateway::web::cWebFront::eOutcome::Serving) return;
  std::ofstream(folder.File("front-port")) << front.GetUrl().substr(front.GetUrl().rfind(':') + 1);
  ready();
  host.Run();
}

// ---- the HTTP library alone

ssize_t ReadDownload(void*, std::uint64_t at, char* to, std::size_t most) {
  if (at >= kDownloadBytes) return MHD_CONTENT_READER_END_OF_STREAM;
  const std::size_t size = std::min<std::size_t>(most, kDownloadBytes - at);
  std::memset(to, 'x', size);
  return static_cast<ssize_t>(size);
}

MHD_Result AnswerBare(void* file, MHD_Connection* connection, const char* path, const char*, const char*, const char*,
                      std::size_t*, void** context) {
  static int seen = 0;
  if (*context == nullptr) {
    *context = &seen;
    return MHD_YES;
  }
  static const std::string page(kPageBytes, 'x');
  MHD_Response* response = nullptr;
  if (std::strcmp(path, "/download") == 0)
    response = MHD_create_response_from_callback(MHD_SIZE_UNKNOWN, 32768, ReadDownload, nullptr, nullptr);
  else if (std::strcmp(path, "/static/file.bin") == 0)
    response = MHD_create_response_from_fd(kFileBytes, open(static_cast<const char*>(file), O_RDONLY | O_CLOEXEC));
  else
    response = MHD_create_response_from_buffer(page.size(), const_cast<char*>(page.data()), MHD_RESPMEM_PERSISTENT);
  const MHD_Result result = MHD_queue_response(connection, 200, response);
  MHD_destroy_response(response);
  return result;
}

void RunBare(const cTempFolder& folder, const cChild::Ready& ready) {
  std::string file = folder.File("file.bin");
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  MHD_Daemon* const daemon =
      MHD_start_daemon(MHD_USE_EPOLL_INTERNAL_THREAD, 0, nullptr, nullptr, AnswerBare, file.data(),
                       MHD_OPTION_SOCK_ADDR, reinterpret_cast<sockaddr*>(&address), MHD_OPTION_END);
  if (daemon == nullptr) return;
  std::ofstream(folder.File("bare-port")) << MHD_get_daemon_info(daemon, MHD_DAEMON_INFO_BIND_PORT)->port;
  ready();
  pause();
}

// ---- the clients

class cBenchClient {
 public:
  explicit cBenchClient(int port) : m_socket(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(static_cast<std::uint16_t>(port));
    m_isSound = connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  }
  ~cBenchClient() { close(m_socket); }
  cBenchClient(const cBenchClient&) = delete;
  cBenchClient& operator=(const cBenchClient&) = delete;

  void Ask(const std::string& path) {
    const std::string request = "GET " + path + " HTTP/1.1\r\nHost: bench\r\n\r\n";
    m_isSound &= send(m_socket, request.data(), request.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(request.size());
    m_input.clear();
  }
  // Waits for an answer with so many bytes of body; false when it is another.
  bool Await(std::size_t bodyBytes) {
    std::size_t header = 0, received = 0;
    bool isChunked = false;
    while (m_isSound) {
      if (header == 0 && (header = m_input.find("\r\n\r\n")) != std::string::npos) {
        header += 4;
        isChunked = m_input.find("chunked") < header;
        m_isSound = m_input.starts_with("HTTP/1.1 200");
      }
      if (header == std::string::npos) header = 0;
      received = m_input.size();
      if (header != 0 && !isChunked && received >= header + bodyBytes) return m_isSound;
      if (header != 0 && isChunked && m_input.ends_with("\r\n0\r\n\r\n")) return m_isSound && received > bodyBytes;
      const std::size_t room = std::size_t{256} << 10;
      m_input.resize(received + room);
      const ssize_t size = recv(m_socket, m_input.data() + received, room, 0);
      m_input.resize(received + static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
      m_isSound &= size > 0;
    }
    return false;
  }

 private:
  int m_socket;
  bool m_isSound;
  std::string m_input;
};

struct cWorld {
  cWorld()
      : files(Prepare()),
        front([this](const cChild::Ready& ready) { RunFront(folder, ready); }),
        pages([this](const cChild::Ready& ready) { RunPages(folder.GetPath(), ready); }),
        bare([this](const cChild::Ready& ready) { RunBare(folder, ready); }) {}
  bool IsReady() const { return files && front.IsReady() && pages.IsReady() && bare.IsReady(); }
  bool Prepare() const {
    std::ofstream(folder.File("file.bin")) << std::string(kFileBytes, 'f');
    return true;
  }
  int Port(const std::string& name) const {
    int port = 0;
    std::ifstream(folder.File(name)) >> port;
    return port;
  }

  cTempFolder folder;
  bool files;
  cChild front;
  cChild pages;
  cChild bare;
};

// Answers a second; 0 when one was wrong.
double Measure(int port, const std::string& path, std::size_t bodyBytes, std::size_t clients, int rounds) {
  std::vector<std::unique_ptr<cBenchClient>> all;
  for (std::size_t i = 0; i < clients; ++i) all.push_back(std::make_unique<cBenchClient>(port));
  const double begin = Now();
  for (int round = 0; round < rounds; ++round) {
    for (auto& client : all) client->Ask(path);
    for (auto& client : all)
      if (!client->Await(bodyBytes)) return 0;
  }
  return rounds * static_cast<double>(clients) / (Now() - begin);
}

struct cCase {
  const char* path;
  std::size_t bodyBytes;
  std::size_t clients;
  int rounds;
};

void Compare(benchmark::State& state, const cCase& asked) {
  const cWorld world;
  if (!world.IsReady()) return state.SkipWithError("a process did not come up");
  cRounds rounds;
  for (auto _ : state)
    for (int i = 0; i < 9; ++i) {
      const double ours = Measure(world.Port("front-port"), asked.path, asked.bodyBytes, asked.clients, asked.rounds);
      const double limit = Measure(world.Port("bare-port"), asked.path, asked.bodyBytes, asked.clients, asked.rounds);
      if (ours == 0 || limit == 0) return state.SkipWithError("an answer was wrong");
      rounds.Add(1 / ours, 1 / limit);
    }
  const double ours = 1 / Median(rounds.ours), limit = 1 / Median(rounds.limit);
  Report(state, "requests", ours, "1/s");
  Report(state, "throughput", ours * static_cast<double>(asked.bodyBytes) / 1e6, "MB/s");
  Report(state, "bare_requests", limit, "1/s");
  Report(state, "bare_throughput", limit * static_cast<double>(asked.bodyBytes) / 1e6, "MB/s");
  Report(state, "ratio", limit / ours, "1");
}

void Page(benchmark::State& state) { Compare(state, {"/page", kPageBytes, kConnections, 100}); }
void File(benchmark::State& state) { Compare(state, {"/static/file.bin", kFileBytes, kConnections, 50}); }
void Download(benchmark::State& state) { Compare(state, {"/download", kDownloadBytes, 1, 5}); }
BENCHMARK(Page)->Name("web/page")->Iterations(1)->Unit(benchmark::kSecond);
BENCHMARK(File)->Name("web/file")->Iterations(1)->Unit(benchmark::kSecond);
BENCHMARK(Download)->Name("web/download")->Iterations(1)->Unit(benchmark::kSecond);

}  // namespace
