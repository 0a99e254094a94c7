// SPDX-License-Identifier: Apache-2.0
#include <tav/framework/scm_service_io.h>

#include "detail/connector.h"

namespace vorn {

namespace {

constexpr int kKeepAliveMode = 2;

}  // namespace

cScmServiceIO::cScmServiceIO(cScmService* service, const std::string& name, int mode)
    : m_service(service),
      m_name(name),
      m_connector(std::make_shared<detail::cConnector>(this, service, name, (mode & kKeepAliveMode) != 0)) {}

cScmServiceIO::~cScmServiceIO() { m_connector->Detach(); }

void cScmServiceIO::OnConnect() {}

void cScmServiceIO::OnClose() {}

bool cScmServiceIO::DispatchMessage(const cMsg&) { return false; }

std::string cScmServiceIO::ToString() const { return m_name + (IsConnected() ? " (connected)" : " (not connected)"); }

int cScmServiceIO::Send(const cMsg& msg) {
  const auto channel = m_connector->GetChannel();
  return channel ? channel->Send(msg) : 0;
}

bool cScmServiceIO::IsConnected() const {
  const auto channel = m_connector->GetChannel();
  return channel && channel->IsOpen();
}

std::shared_ptr<cScmChannel> cScmServiceIO::GetChannel() const { return m_connector->GetChannel(); }

void cScmServiceIO::HealthRequest() { m_connector->HealthRequest(); }

}  // namespace vorn
