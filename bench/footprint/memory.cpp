// SPDX-License-Identifier: Apache-2.0
#include <bench/footprint/memory.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace tav::bench {

cMemory MemoryOf(pid_t pid) {
  const std::string folder = "/proc/" + std::to_string(pid);
  cMemory memory;
  std::ifstream file(folder + "/smaps_rollup");
  for (std::string line; std::getline(file, line);) {
    if (line.rfind("Rss:", 0) == 0) memory.resident = std::stod(line.substr(4));
    if (line.rfind("Anonymous:", 0) == 0) memory.anonymous = std::stod(line.substr(10));
  }
  std::error_code ignored;
  const std::filesystem::directory_iterator tasks(folder + "/task", ignored);
  memory.threads = static_cast<double>(std::distance(begin(tasks), end(tasks)));
  return memory;
}

}  // namespace tav::bench
