// SPDX-License-Identifier: Apache-2.0
#include <bench/footprint/starts.h>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>

#include <bench/support/figures.h>
#include <tav/service/db_ctrl_protocol.h>

namespace tav::bench {

namespace {

constexpr double kPatience = 10;  // seconds

}  // namespace

// ---- a driver

cDriverStarts::cDriverStarts(const std::string& directory)
    : cScmService("bench-monitor", directory),
      cScmMonitor(this, std::string(db_ctrl::kProtocol.GetService())),
      m_directory(directory),
      m_gateway({TAV_GATEWAY, "data", "--dir", directory}) {
  Await(m_watching);
}

void cDriverStarts::OnMirrored(const vorn::cScmMirrored& mirrored) {
  if (mirrored.msg.GetType() == db_ctrl::eDriverRegistered && mirrored.pid == m_driver->GetPid()) m_registered = true;
}

bool cDriverStarts::Await(const bool& condition) {
  for (const double end = Now() + kPatience; !condition && Now() < end;) Poll(10);
  return condition;
}

double cDriverStarts::Start() {
  m_driver.reset();
  while (Poll(0)) {
  }
  m_registered = false;
  const double start = Now();
  m_driver = std::make_unique<cChild>(std::vector<std::string>{EHZIF, "--dir", m_directory, "--input", "-"});
  return m_watching && Await(m_registered) ? (Now() - start) * 1e3 : -1;
}

// ---- the bare client

cBareStarts::cBareStarts(const std::string& directory)
    : m_path(directory + "/bare"), m_listener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, m_path.c_str(), sizeof address.sun_path - 1);
  if (bind(m_listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0) listen(m_listener, 1);
}

cBareStarts::~cBareStarts() {
  close(m_connection);
  close(m_listener);
}

double cBareStarts::Start() {
  if (m_connection >= 0) close(m_connection);
  m_client.reset();
  const double start = Now();
  m_client = std::make_unique<cChild>(std::vector<std::string>{BARE_CLIENT, m_path});
  pollfd connecting{m_listener, POLLIN, 0};
  if (poll(&connecting, 1, static_cast<int>(kPatience * 1000)) != 1) return -1;
  m_connection = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
  char byte;
  if (read(m_connection, &byte, 1) != 1 || write(m_connection, &byte, 1) != 1) return -1;
  return (Now() - start) * 1e3;
}

}  // namespace tav::bench
