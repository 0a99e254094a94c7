// SPDX-License-Identifier: Apache-2.0
// Any bytes sent by a client, and any bytes answered by a page process: whatever they are, the front end lives on and
// keeps nothing of them. What is behind the first line "--" is the page's output.
#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

#include <gateway/web/front/http_server.h>
#include <gateway/web/front/page_server.h>
#include <tav/framework/trace.h>
#include <tav/http/http_io.h>
#include <tav/http/http_protocol.h>

using namespace tav::gateway;
using namespace tav::gateway::web;

namespace {

// Answers each request with the same output.
class cFuzzPages : public tav::cHttpIO {
 public:
  cFuzzPages(vorn::cScmService* service, vorn::cMsg* registration) : cHttpIO(service, "web", registration) {}
  bool DispatchMessage(const vorn::cMsg& msg) override {
    isRegistered |= msg.GetType() == tav::http::eRegistered;
    if (msg.GetType() != tav::http::eRequest) return true;
    vorn::cMsg answer(tav::http::eOutput);
    answer.SetId(msg.GetId());
    answer.Record().AppendTextPar(tav::http::kContent, output);
    answer.Record().AppendBoolPar(tav::http::kFinish, true);
    answer.Record().AppendBoolPar(tav::http::kSuccess, true);
    Send(answer);
    return true;
  }
  bool isRegistered = false;
  std::string output;
};

struct cWorld {
  cWorld()
      : folder(MakeFolder()),
        host("tav-gateway", folder),
        service("pages", folder),
        tempFiles(folder + "/web-tmp", kMaxStoredBytes),
        files(folder, ""),
        pageServer(&host),
        server(&host, {&pageServer, &files, &tempFiles, &counters, kMaxBodyBytes, "80", false, {}}) {
    vorn::cUnit::Find("UnitWeb")->SetLevel(0);
    vorn::cUnit::Find("UnitGateway")->SetLevel(0);
    if (!tempFiles.Prepare().empty() || !server.Start(cDescriptor(), "", "").empty()) std::abort();
    vorn::cMsg registration(tav::http::eRegister);
    registration.Record().AppendBoolPar(tav::http::kFlow, true);
    pages = std::make_unique<cFuzzPages>(&service, &registration);
    while (!pages->isRegistered) Turn();
  }
  static std::string MakeFolder() {
    char name[] = "/tmp/web-front-fuzz-XXXXXX";
    if (mkdtemp(name) == nullptr) std::abort();
    return name;
  }
  void Turn() {
    while (host.Poll(0) || service.Poll(0)) {
    }
  }

  std::string folder;
  cServiceHost host;
  vorn::cScmService service;
  cTempFiles tempFiles;
  cStaticFiles files;
  cWebCounters counters;
  cPageServer pageServer;
  cHttpServer server;
  std::unique_ptr<cFuzzPages> pages;
};

void Write(int socket, std::string_view bytes, cWorld& world) {
  char drop[4096];
  while (!bytes.empty()) {
    const ssize_t size = send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (size <= 0 && errno != EAGAIN) return;
    if (size > 0) bytes.remove_prefix(static_cast<std::size_t>(size));
    world.Turn();
    while (recv(socket, drop, sizeof drop, 0) > 0) world.Turn();
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static cWorld& world = *new cWorld;
  const std::string_view all(reinterpret_cast<const char*>(data), size);
  const std::size_t cut = all.find("\n--\n");
  world.pages->output = cut != std::string_view::npos ? all.substr(cut + 4) : "Status: 200\r\n\r\nbody";
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends) != 0) std::abort();
  world.server.Add(cDescriptor(ends[1]));
  Write(ends[0], all.substr(0, cut), world);
  shutdown(ends[0], SHUT_WR);
  world.Turn();
  close(ends[0]);
  for (int i = 0; i < 3; ++i) world.Turn();
  if (world.server.GetConnections().Count() != 0 || world.tempFiles.GetStored() != 0 ||
      world.pageServer.GetWaiting() != 0)
    std::abort();
  return 0;
}
