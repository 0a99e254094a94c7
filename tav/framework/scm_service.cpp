// SPDX-License-Identifier: Apache-2.0
#include <tav/framework/scm_service.h>

#include <cstdlib>

namespace vorn {

namespace {

std::string DefaultDirectory() {
  if (const char* directory = std::getenv("VORN_DIR"); directory != nullptr && *directory != '\0') return directory;
  if (const char* runtime = std::getenv("XDG_RUNTIME_DIR"); runtime != nullptr && *runtime != '\0')
    return std::string(runtime) + "/vorn";
  return "/run/vorn";
}

}  // namespace

cScmService::cScmService(const std::string& processName, const std::string& directory,
                         std::shared_ptr<const cClock> clock)
    : cService(std::move(clock)),
      m_processName(processName),
      m_directory(directory.empty() ? DefaultDirectory() : directory) {}

std::string cScmService::GetSocketPath(const std::string& serviceName) const {
  return m_directory + "/" + serviceName + ".sock";
}

}  // namespace vorn
