// SPDX-License-Identifier: Apache-2.0
// mbussim: meters on an M-Bus to try the driver with, where there are none.
#include <csignal>
#include <cstdio>

#include <gateway/driver/mbus/reader/mbus_text.h>
#include <gateway/driver/mbus/simulator/mbussim_options.h>
#include <gateway/driver/unit_driver.h>

int main(int argc, char** argv) {
  using namespace tav::mbus;
  cMBusSimOptions options;
  int exitCode = 0;
  if (!cMBusSimOptions::Parse(argc, argv, options, exitCode)) return exitCode;
  tav::DriverUnit()->SetLevel(options.traceLevel);
  tav::gateway::cServiceHost host("mbussim");
  cMBusBus bus = MakeBus(options);
  cSimulatedBus line(&host, bus, options.bus);
  if (!line.GetError().empty()) {
    std::fprintf(stderr, "mbussim: %s\n", line.GetError().c_str());
    return 1;
  }
  line.onRequest = [](cBytes request, const std::string& answer) {
    vorn::Trace(tav::DriverUnit(), 16, [&] { return HexText(request, " ") + " -> " + HexText(BytesOf(answer), " "); });
  };
  const vorn::cSignalWatch end(&host, {SIGTERM, SIGINT}, [&host](int) { host.Stop(); });
  const std::string& device = options.bus.link.empty() ? line.GetDevice() : options.bus.link;
  std::printf("%s (%u 8E1)\n%s", device.c_str(), options.baud, ListMeters(bus).c_str());
  std::fflush(stdout);
  host.Run();
  return 0;
}
