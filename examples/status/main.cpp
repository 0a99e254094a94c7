// SPDX-License-Identifier: Apache-2.0
// The smallest status publisher: publishes one value through the status service, and prints those of others as they
// change.
//
//   tav-gateway status --dir /tmp/gateway &
//   example-status /tmp/gateway pump.state running
#include <csignal>
#include <iostream>
#include <string>

#include <tav/framework/map.h>
#include <tav/framework/scm_service.h>
#include <tav/framework/watch.h>
#include <tav/service/status_proxy.h>

class cExampleStatus : public tav::cStatusProxy {
 public:
  using cStatusProxy::cStatusProxy;

  // What the service sends is in the proxy's copy when the base has taken it; what is new there has changed.
  bool DispatchMessage(const vorn::cMsg& msg) override {
    const vorn::cMap<std::string, std::string> before = GetAllValues();
    const bool taken = cStatusProxy::DispatchMessage(msg);
    for (const auto& [name, value] : GetAllValues()) {
      std::string known;
      if (!before.Get(name, known) || known != value) std::cout << name << "=" << value << std::endl;
    }
    for (const auto& [name, value] : before)
      if (!GetAllValues().Contains(name)) std::cout << name << " is gone" << std::endl;
    return taken;
  }
};

int main(int argc, char** argv) {
  vorn::cScmService process("example-status", argc > 1 ? argv[1] : "");
  cExampleStatus status(&process);
  status.SingleSet(argc > 2 ? argv[2] : "example.state", argc > 3 ? argv[3] : "running");
  const vorn::cSignalWatch end(&process, {SIGTERM, SIGINT}, [&process](int) { process.Stop(); });
  process.Run();
}
