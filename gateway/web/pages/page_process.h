// SPDX-License-Identifier: Apache-2.0
// cPageProcess: the process that serves the gateway's pages. It registers with the web front end, gives every request a
// session and a page of its own, and brings answers of services to the page that waits for them.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include <gateway/host/service_host.h>
#include <gateway/host/status_publisher.h>
#include <gateway/host/task.h>
#include <gateway/web/pages/access/access.h>
#include <gateway/web/pages/access/gate.h>
#include <gateway/web/pages/core/gateway_clients.h>
#include <gateway/web/pages/core/live.h>
#include <gateway/web/pages/core/web_page.h>
#include <tav/http/http_io.h>
#include <tav/http/http_session.h>

namespace tav::pages {

class cPageProcess : public gateway::cServiceHost {
 public:
  // Requests at work at a time; further ones are refused, and the client may come again.
  static constexpr std::size_t kMaxRuns = 256;

  // directory: of the sockets. No clock: cClock::Steady().
  cPageProcess(const std::string& directory, const cAccess::cOptions& options,
               std::shared_ptr<const vorn::cClock> clock = nullptr);
  ~cPageProcess() override;

  cAccess& GetAccess() { return m_access; }
  cGatewayClients& GetGateway() { return m_gateway; }
  std::size_t CountRuns() const { return m_runs.size(); }

  bool DispatchMessage(const vorn::cMsg& msg) override;

 private:
  // The front end forgets a process whose channel closes: it is told again whenever the channel is up.
  class cFrontEnd final : public cHttpIO {
   public:
    cFrontEnd(vorn::cScmService* service, std::function<void()> onClose);
    void OnConnect() override;
    void OnClose() override;

   private:
    std::function<void()> m_onClose;
  };

  // One request at work.
  struct cRun {
    std::unique_ptr<cHttpSession> session;
    std::unique_ptr<cWebPage> page;
  };

  bool Dispatch(const vorn::cMsg& msg);
  void StartRun(vorn::cMsg& msg);
  void GiveBack(const vorn::cMsg& msg);
  void EndLogin(const vorn::cUuid& sid);
  // Nobody waits any more for what runs.
  void EndRuns();
  void Sweep();
  void Publish();

  cGatewayClients m_gateway;
  cAccess m_access;
  cLive m_live;
  cGate m_gate;
  cFrontEnd m_frontEnd;
  std::map<vorn::cUuid, cRun> m_runs;  // by the identifier of the session
  std::uint64_t m_requests = 0;
  std::uint64_t m_refused = 0;
  gateway::cStatusPublisher m_publisher;
  gateway::cTask m_publish;
};

}  // namespace tav::pages
