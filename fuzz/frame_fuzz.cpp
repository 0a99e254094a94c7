// SPDX-License-Identifier: Apache-2.0
// Any bytes sent to a server by a peer, behind a good handshake or in place of one: the server reads them, answers or
// closes the connection, and serves the next peer.
#include <cstdlib>

#include <tav/framework/scm_server.h>
#include <tav/framework/scm_service.h>
#include <tav/framework/trace.h>
#include <tests/support/raw_socket.h>
#include <tests/support/temp_folder.h>

namespace {

class cEcho : public vorn::cScmServer {
 public:
  using cScmServer::cScmServer;
  bool DispatchMessage(const vorn::cMsg& msg) override {
    if (msg.ToString().empty()) std::abort();
    msg.GetReplyChannel()->Send(msg);
    return true;
  }
};

void Check(bool holds) {
  if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  vorn::SetTraceSink([](const vorn::cUnit&, int, const std::string&) {});
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* bytes, std::size_t size) {
  static const cTempFolder folder;
  static vorn::cScmService service("fuzz", folder.GetPath());
  static cEcho server(&service, "echo");
  if (size == 0) return 0;

  cRawSocket peer;
  Check(peer.Connect(service.GetSocketPath("echo")));
  const std::string input(reinterpret_cast<const char*>(bytes) + 1, size - 1);
  Check(peer.Write((bytes[0] & 1) != 0 ? cRawSocket::Hello() + input : input));
  Check(shutdown(peer.Get(), SHUT_WR) == 0);
  // The server closes when it has read the end, at the latest.
  for (int turns = 0; !peer.IsClosedByPeer(); ++turns) {
    Check(turns < 1000);
    service.Poll(10);
    peer.Read();
  }
  while (service.Poll(0)) {
  }
  Check(server.GetChannels().empty());
  return 0;
}
