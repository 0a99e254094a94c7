// SPDX-License-Identifier: Apache-2.0
#include <gateway/tav_gateway/gateway_process.h>

#include <signal.h>
#include <sys/stat.h>

#include <cstdio>
#include <filesystem>

#include <gateway/host/readiness.h>
#include <gateway/service/data/data_server.h>
#include <tav/framework/trace.h>
#include <tav/framework/watch.h>

namespace tav::gateway {

namespace {

namespace fs = std::filesystem;

// Readings tell about people: nobody else's business.
constexpr mode_t kPrivate = 027;

void Complain(const std::string& text) { std::fprintf(stderr, "tav-gateway: %s\n", text.c_str()); }

void SetTraceLevel(int level) {
  for (const char* name : {"UnitTAV", "UnitVORN", "UnitGateway", "UnitData"}) vorn::cUnit::Find(name)->SetLevel(level);
}

bool MakeDirectory(const fs::path& directory) {
  std::error_code error;
  if (directory.empty() || fs::is_directory(directory, error)) return true;
  fs::create_directories(directory, error);
  if (error) Complain("directory '" + directory.string() + "' cannot be made: " + error.message());
  return !error;
}

data::cDataOptions DataOptions(const cOptions& options) {
  data::cDataOptions made;
  made.file = options.GetDataFile();
  made.durability = options.durability;
  made.maxBytes = options.maxMegabytes << 20;
  return made;
}

}  // namespace

// In the order in which they are needed, so that they end the other way round.
struct cGatewayProcess::cServices {
  explicit cServices(const cOptions& options) : store(DataOptions(options)) {}

  data::cDataStore store;
  std::unique_ptr<data::cDataServer> data;
};

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
  m_services.reset();
  return eExitDone;
}

eExitCode cGatewayProcess::Start() {
  if (!MakeDirectories()) return eExitStorage;
  m_services = std::make_unique<cServices>(m_options);
  return StartData();
}

bool cGatewayProcess::MakeDirectories() {
  return MakeDirectory(m_host->GetDirectory()) && MakeDirectory(fs::path(m_options.GetDataFile()).parent_path());
}

eExitCode cGatewayProcess::StartData() {
  if (const data::cFault fault = m_services->store.Open()) {
    Complain(fault.text);
    return eExitStorage;
  }
  m_services->data = std::make_unique<data::cDataServer>(m_host.get(), &m_services->store);
  if (m_services->data->IsListening()) return eExitDone;
  Complain(m_services->data->GetError());
  return eExitSocket;
}

}  // namespace tav::gateway
