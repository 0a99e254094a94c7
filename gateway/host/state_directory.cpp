// SPDX-License-Identifier: Apache-2.0
#include <gateway/host/state_directory.h>

#include <unistd.h>

#include <cstdlib>

namespace tav::gateway {

namespace {

std::string Environment(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

}  // namespace

std::string StateDirectory() {
  if (std::string given = Environment("STATE_DIRECTORY"); !given.empty()) return given;
  if (getuid() == 0) return "/var/lib/tav";
  if (const std::string state = Environment("XDG_STATE_HOME"); !state.empty()) return state + "/tav";
  return Environment("HOME") + "/.local/state/tav";
}

}  // namespace tav::gateway
