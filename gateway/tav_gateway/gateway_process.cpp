// SPDX-License-Identifier: Apache-2.0
#include <gateway/tav_gateway/gateway_process.h>

#include <signal.h>
#include <sys/stat.h>

#include <cstdio>
#include <filesystem>

#include <gateway/host/readiness.h>
#include <tav/framework/trace.h>
#include <tav/framework/watch.h>

namespace tav::gateway {

namespace {

namespace fs = std::filesystem;

// Readings tell about people: nobody else's business.
constexpr mode_t kPrivate = 027;

void Complain(const std::string& text) { std::fprintf(stderr, "tav-gateway: %s\n", text.c_str()); }

void SetTraceLevel(int level) {
  for (const char* name : {"UnitTAV", "UnitVORN", "UnitGateway", "UnitData", "UnitObis", "UnitStatus", "UnitWeb"})
    vorn::cUnit::Find(name)->SetLevel(level);
}

bool MakeDirectory(const fs::path& directory) {
  std::error_code error;
  if (directory.empty() || fs::is_directory(directory, error)) return true;
  fs::create_directories(directory, error);
  if (error) Complain("directory '" + directory.string() + "' cannot be made: " + error.message());
  return !error;
}

}  // namespace

cGatewayProcess::cGatewayProcess(const cOptions& options) : m_options(options) {}

cGatewayProcess::~cGatewayProcess() = default;

eExitCode cGatewayProcess::Run() {
  SetTraceLevel(m_options.trace);
  umask(kPrivate);
  // A file at its size limit is a full disk, to be answered as one.
  signal(SIGXFSZ, SIG_IGN);
  signal(SIGPIPE, SIG_IGN);
  m_host = std::make_unique<cServiceHost>("tav-gateway", m_options.GetSocketDirectory());
  const vorn::cSignalWatch stop(m_host.get(), {SIGTERM, SIGINT}, [this](int) { m_host->Stop(); });
  if (const eExitCode code = Start(); code != eExitDone) return code;
  if (!NotifyManager("READY=1")) Complain("the service manager at NOTIFY_SOCKET cannot be told");
  m_host->Run();
  NotifyManager("STOPPING=1");
  m_publish.reset();
  m_publisher.reset();
  while (!m_services.empty()) m_services.pop_back();
  return eExitDone;
}

eExitCode cGatewayProcess::Start() {
  if (!MakeDirectories()) return eExitStorage;
  m_publisher = std::make_unique<cStatusPublisher>(m_host.get());
  for (const cServiceKind& kind : GetServiceKinds()) {
    if (!IsWanted(kind.name)) continue;
    if (const eExitCode code = Start(kind); code != eExitDone) return code;
  }
  m_publish = std::make_unique<cTask>(m_host.get(), [this] { Publish(); });
  m_publish->Post();
  return eExitDone;
}

bool cGatewayProcess::IsWanted(const std::string& service) const {
  if (m_options.service.empty()) return service != kWebService || !m_options.isWebLeft;
  return m_options.service == service;
}

eExitCode cGatewayProcess::Start(const cServiceKind& kind) {
  m_services.push_back(kind.make(m_host.get(), m_options));
  cHostedService* const service = m_services.back().get();
  std::string error;
  const eExitCode code = service->Start(error);
  if (code == eExitDone)
    m_publisher->AddSource(kind.name, [service](cStatusValues& values) { service->Collect(values); });
  else
    Complain(error);
  return code;
}

bool cGatewayProcess::MakeDirectories() {
  return MakeDirectory(m_host->GetDirectory()) && MakeDirectory(fs::path(m_options.GetDataFile()).parent_path());
}

void cGatewayProcess::Publish() {
  m_publisher->Publish();
  m_publish->Start(cStatusPublisher::kIntervalMs, cStatusPublisher::kSlackMs);
}

}  // namespace tav::gateway
