// SPDX-License-Identifier: Apache-2.0
// The services that a gateway process can host, as a table: what tav-gateway is told to run, and how each is made.
#pragma once

#include <memory>
#include <span>
#include <string>

#include <gateway/host/service_host.h>
#include <gateway/host/status_publisher.h>
#include <gateway/tav_gateway/exit_code.h>
#include <gateway/tav_gateway/options.h>

namespace tav::gateway {

// One service with all that it holds. It ends when it is destroyed, and then everything is written.
class cHostedService {
 public:
  virtual ~cHostedService() = default;

  // Opens what it needs and listens. What went wrong is said in error.
  virtual eExitCode Start(std::string& error) = 0;
  // How it is, for operators.
  virtual void Collect(cStatusValues& values) const = 0;
};

struct cServiceKind {
  const char* name;  // of its channel, and of its command
  const char* help;
  // Host and options outlive the service.
  std::unique_ptr<cHostedService> (*make)(cServiceHost* host, const cOptions& options);
};

// The one that can be left out of all.
constexpr const char* kWebService = "web";

// In the order in which they are started.
std::span<const cServiceKind> GetServiceKinds();

}  // namespace tav::gateway
