// SPDX-License-Identifier: Apache-2.0
// The gate that every request passes: finds its page, looks who asks and whether he may, and whether a change was meant
// by him and not by another site. What is not let in gets a page that says so.
#pragma once

#include <memory>

#include <gateway/web/pages/core/gateway_clients.h>
#include <gateway/web/pages/core/web_page.h>

namespace tav::pages {

class cGate {
 public:
  // All outlive it.
  cGate(vorn::cScmService* service, cGatewayClients& gateway, cAccess& access, cLive& live)
      : m_service(service), m_gateway(gateway), m_access(access), m_live(live) {}

  // The page that answers; never null.
  std::unique_ptr<cWebPage> Admit(const cHttpRequest& request);

 private:
  vorn::cScmService* m_service;
  cGatewayClients& m_gateway;
  cAccess& m_access;
  cLive& m_live;
};

}  // namespace tav::pages
