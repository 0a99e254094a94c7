// SPDX-License-Identifier: Apache-2.0
#include <tav/framework/scm_server.h>

#include "detail/listener.h"

namespace vorn {

cScmServer::cScmServer(cScmService* service, const std::string& name)
    : m_name(name), m_listener(std::make_shared<detail::cListener>(this, service, name)) {
  m_listener->Start();
}

cScmServer::~cScmServer() { m_listener->Detach(); }

void cScmServer::OnConnect(cScmChannel&) {}

void cScmServer::OnClose(cScmChannel&) {}

bool cScmServer::DispatchMessage(const cMsg&) { return false; }

bool cScmServer::IsListening() const { return m_listener->IsListening(); }

const std::string& cScmServer::GetError() const { return m_listener->GetError(); }

void cScmServer::SetPolicy(Policy policy) { m_listener->SetPolicy(std::move(policy)); }

std::vector<std::shared_ptr<cScmChannel>> cScmServer::GetChannels() const { return m_listener->GetChannels(); }

}  // namespace vorn
