// SPDX-License-Identifier: Apache-2.0
// cGatewayProcess: the services of one process, from start to end.
//
// Started in this order: directories, loop and signals, services; then the service manager is told. SIGTERM and SIGINT
// end it: no new requests, what waits is committed and answered, the database is closed.
#pragma once

#include <memory>

#include <vector>

#include <gateway/host/task.h>
#include <gateway/tav_gateway/services.h>

namespace tav::gateway {

class cGatewayProcess {
 public:
  explicit cGatewayProcess(const cOptions& options);
  ~cGatewayProcess();
  cGatewayProcess(const cGatewayProcess&) = delete;
  cGatewayProcess& operator=(const cGatewayProcess&) = delete;

  // Until the process is asked to end. What went wrong is said on standard error.
  eExitCode Run();

 private:
  eExitCode Start();
  eExitCode Start(const cServiceKind& kind);
  bool IsWanted(const std::string& service) const;
  bool MakeDirectories();
  void Publish();

  cOptions m_options;
  std::unique_ptr<cServiceHost> m_host;
  std::vector<std::unique_ptr<cHostedService>> m_services;
  std::unique_ptr<cStatusPublisher> m_publisher;
  std::unique_ptr<cTask> m_publish;
};

}  // namespace tav::gateway
