// SPDX-License-Identifier: Apache-2.0
// tavctl: look at the services, meters and values of a gateway. docs/tavctl.md tells how to use it.
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <iostream>

#include <tavctl/application.h>

int main(int argc, char** argv) {
  // A reader that has seen enough ends this process, as it ends any other.
  std::signal(SIGPIPE, SIG_DFL);
  std::ios::sync_with_stdio(false);
  const bool terminal = isatty(STDOUT_FILENO) != 0;
  const char* const noColour = std::getenv("NO_COLOR");
  const bool plain = noColour != nullptr && *noColour != '\0';
  tav::ctl::cApplication application({std::cin, std::cout, std::cerr, terminal, terminal && !plain});
  return application.Run({argv + 1, argv + argc});
}
