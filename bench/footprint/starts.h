// SPDX-License-Identifier: Apache-2.0
// Programs started until they have their first answer: a driver at the gateway, and the bare client at a bare socket.
#pragma once

#include <memory>
#include <string>

#include <bench/support/child.h>
#include <tav/framework/monitor.h>

namespace tav::bench {

// A gateway, and someone who watches what it answers.
class cDriverStarts : private vorn::cScmService, private vorn::cScmMonitor {
 public:
  explicit cDriverStarts(const std::string& directory);

  // Starts a driver with a silent input. Milliseconds until the gateway has answered its registration; negative when
  // it did not. The driver lives on until the next start.
  double Start();
  pid_t GetDriver() const { return m_driver->GetPid(); }

 private:
  void OnWatching() override { m_watching = true; }
  void OnMirrored(const vorn::cScmMirrored& mirrored) override;
  bool Await(const bool& condition);

  std::string m_directory;
  cChild m_gateway;
  std::unique_ptr<cChild> m_driver;
  bool m_watching = false;
  bool m_registered = false;
};

// The same for the bare client.
class cBareStarts {
 public:
  explicit cBareStarts(const std::string& directory);
  ~cBareStarts();
  cBareStarts(const cBareStarts&) = delete;
  cBareStarts& operator=(const cBareStarts&) = delete;

  double Start();
  pid_t GetClient() const { return m_client->GetPid(); }

 private:
  std::string m_path;
  int m_listener;
  int m_connection = -1;
  std::unique_ptr<cChild> m_client;
};

}  // namespace tav::bench
