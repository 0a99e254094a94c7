// SPDX-License-Identifier: Apache-2.0
#include <bench/footprint/library_size.h>

#include <cstdio>
#include <filesystem>
#include <sstream>

namespace tav::bench {

namespace {

constexpr const char* kRunTime[] = {"/libc.so", "/libm.so", "/libgcc_s.so", "/libstdc++.so", "/ld-linux"};

std::string OutputOf(const std::string& command) {
  std::string output;
  FILE* const pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return output;
  char block[4096];
  for (std::size_t size; (size = std::fread(block, 1, sizeof block, pipe)) > 0;) output.append(block, size);
  pclose(pipe);
  return output;
}

bool IsRunTime(const std::string& path) {
  for (const char* name : kRunTime)
    if (path.find(name) != std::string::npos) return true;
  return false;
}

}  // namespace

double StrippedSize(const std::string& file, const std::string& directory) {
  const std::string copy = directory + "/stripped";
  OutputOf("strip -o '" + copy + "' '" + file + "' 2>&1");
  std::error_code error;
  const auto size = std::filesystem::file_size(copy, error);
  return error ? -1 : static_cast<double>(size);
}

// Lines such as "libm.so.6 => /lib/x86_64-linux-gnu/libm.so.6 (0x...)".
std::vector<std::string> LoadedBy(const std::string& library) {
  std::istringstream lines(OutputOf("ldd '" + library + "' 2>&1"));
  std::vector<std::string> loaded;
  bool known = false;
  for (std::string line; std::getline(lines, line);) {
    const std::size_t arrow = line.find("=> /");
    if (arrow == std::string::npos) continue;
    known = true;
    const std::string path = line.substr(arrow + 3, line.find(" (") - arrow - 3);
    if (!IsRunTime(path)) loaded.push_back(path);
  }
  return known ? loaded : std::vector<std::string>{"?"};
}

}  // namespace tav::bench
