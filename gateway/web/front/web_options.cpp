// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/front/web_options.h>

#include <filesystem>

#include <gateway/web/front/listen_socket.h>

namespace tav::gateway::web {

namespace fs = std::filesystem;

std::string cWebOptions::Check() const {
  cListenAddress address;
  std::string error;
  if (!ReadListenAddress(listen, address, error)) return error;
  if (certificate.empty() != key.empty()) return "a certificate needs a key, and a key a certificate";
  return {};
}

std::string FindStaticDirectory() {
  std::error_code error;
  const fs::path program = fs::read_symlink("/proc/self/exe", error);
  const fs::path beside = program.parent_path().parent_path() / "share/tav/web";
  return !error && fs::is_directory(beside, error) ? beside.string() : TAV_STATIC_DIRECTORY;
}

std::string FindChart() { return TAV_CHART_FILE; }

}  // namespace tav::gateway::web
