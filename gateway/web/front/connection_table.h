// SPDX-License-Identifier: Apache-2.0
// cConnectionTable: all connections of clients, the one idle longest first. It looks at their time, makes room for new
// ones, and hears of clients that are gone: the HTTP library does not look at connections that rest.
#pragma once

#include <cstddef>
#include <list>

#include <gateway/host/task.h>
#include <gateway/web/front/connection.h>
#include <gateway/web/front/web_limits.h>
#include <tav/framework/watch.h>

namespace tav::gateway::web {

class cConnectionTable {
 public:
  cConnectionTable(cServiceHost* host, const cWebParts& parts);

  cConnection* Add(MHD_Connection* handle);
  void Remove(cConnection* connection);
  // It has just said or got something.
  void MoveToEnd(cConnection* connection);
  void AbortAll();

  std::size_t Count() const { return m_connections.size(); }

 private:
  bool IsNearlyFull() const { return m_connections.size() + kSpareConnections >= kMaxConnections; }
  void MakeRoom();
  void TakeGone();
  void Check();

  cServiceHost* m_host;
  const cWebParts& m_parts;
  std::list<cConnection> m_connections;
  cDescriptor m_gone;  // an epoll set of all sockets, that tells only when the other end has closed
  vorn::cWatch m_goneWatch;
  cTask m_check;
};

}  // namespace tav::gateway::web
