// SPDX-License-Identifier: Apache-2.0
// cScmService: a service of a named process, which knows the directory of the service sockets. It owns no proxy and no
// server, but calls those bound to it; they must end before it.
#pragma once

#include <string>

#include <tav/framework/service.h>

namespace vorn {

class VORN_API cScmService : public cService {
 public:
  // No directory: the environment's VORN_DIR, else $XDG_RUNTIME_DIR/vorn, else /run/vorn.
  explicit cScmService(const std::string& processName, const std::string& directory = {},
                       std::shared_ptr<const cClock> clock = nullptr);

  const std::string& GetProcessName() const { return m_processName; }
  const std::string& GetDirectory() const { return m_directory; }
  // Where the socket of a service stands.
  std::string GetSocketPath(const std::string& serviceName) const;

 private:
  std::string m_processName;
  std::string m_directory;
};

}  // namespace vorn
