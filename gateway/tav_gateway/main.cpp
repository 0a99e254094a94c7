// SPDX-License-Identifier: Apache-2.0
// tav-gateway: the reference gateway. See README.md beside this file, and docs/operating.md.
#include <cstdio>
#include <exception>

#include <gateway/tav_gateway/gateway_process.h>

int main(int argc, char** argv) {
  using namespace tav::gateway;
  try {
    const cParsedOptions parsed = ParseOptions(argc, argv);
    if (parsed.options) return cGatewayProcess(*parsed.options).Run();
    std::fprintf(parsed.exitCode == eExitDone ? stdout : stderr, "%s\n", parsed.text.c_str());
    return parsed.exitCode;
  } catch (const std::exception& exception) {
    std::fprintf(stderr, "tav-gateway: %s\n", exception.what());
    return eExitFailed;
  }
}
