// SPDX-License-Identifier: Apache-2.0
// cGatewayProcess: the services of one process, from start to end.
//
// Started in this order: directories, loop and signals, database, services; then the service manager is told. SIGTERM
// and SIGINT end it: no new requests, what waits is committed and answered, the database is closed.
#pragma once

#include <memory>

#include <gateway/host/service_host.h>
#include <gateway/tav_gateway/exit_code.h>
#include <gateway/tav_gateway/options.h>

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
  struct cServices;

  eExitCode Start();
  eExitCode StartData();
  bool MakeDirectories();

  cOptions m_options;
  std::unique_ptr<cServiceHost> m_host;
  std::unique_ptr<cServices> m_services;
};

}  // namespace tav::gateway
