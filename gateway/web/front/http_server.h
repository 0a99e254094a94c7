// SPDX-License-Identifier: Apache-2.0
// cHttpServer: the HTTP library on our loop, without a thread: its set of sockets is watched, its time-out served by a
// timer, and what it reads handed to the connections.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include <gateway/host/task.h>
#include <gateway/web/front/connection_table.h>
#include <tav/framework/watch.h>

struct MHD_Daemon;

namespace tav::gateway::web {

class cHttpServer {
 public:
  // What they name outlives it.
  cHttpServer(cServiceHost* host, const cWebParts& parts);
  ~cHttpServer();
  cHttpServer(const cHttpServer&) = delete;
  cHttpServer& operator=(const cHttpServer&) = delete;

  // Takes a socket that listens, or none; certificate and key are texts in PEM form, both empty without TLS. What went
  // wrong, else an empty text.
  std::string Start(cDescriptor socket, const std::string& certificate, const std::string& key);
  // Takes a client's connection that was accepted elsewhere.
  bool Add(cDescriptor socket);

  const cConnectionTable& GetConnections() const { return m_connections; }

 private:
  friend struct cHttpCallbacks;

  // Whatever is ready.
  void Run();

  cWebParts m_parts;
  cConnectionTable m_connections;
  MHD_Daemon* m_daemon = nullptr;
  std::string m_said;  // by the library, while it starts
  std::optional<vorn::cWatch> m_watch;
  cServiceHost* m_host;
  cTask m_again;
};

}  // namespace tav::gateway::web
