// SPDX-License-Identifier: Apache-2.0
// cWebFront: the web front end: HTTP to its clients, channel "web" to page processes. See README.md beside this file.
#pragma once

#include <memory>
#include <string>

#include <gateway/host/service_host.h>
#include <gateway/host/status_publisher.h>
#include <gateway/web/front/web_options.h>

namespace tav::gateway::web {

class cWebFront {
 public:
  enum class eOutcome { Serving, BadOption, NoSocket, NoStorage };

  // The host outlives it.
  cWebFront(cServiceHost* host, const cWebOptions& options);
  ~cWebFront();
  cWebFront(const cWebFront&) = delete;
  cWebFront& operator=(const cWebFront&) = delete;

  // Listens on both sides. What stands in the way is said in error.
  eOutcome Start(std::string& error);
  // Where it listens: "http://127.0.0.1:8080/".
  const std::string& GetUrl() const;
  // How it is, for operators.
  void Collect(cStatusValues& values) const;

 private:
  struct cState;
  std::unique_ptr<cState> m_state;
};

}  // namespace tav::gateway::web
