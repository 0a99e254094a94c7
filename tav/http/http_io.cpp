// SPDX-License-Identifier: Apache-2.0
#include <tav/http/http_io.h>

#include <tav/http/http_protocol.h>
#include <tav/unit_tav.h>

namespace tav {

namespace {

constexpr int kProgress = 16;
// Of the channel: all bits, of which keep alive is the one that means something.
constexpr int kMode = -1;

}  // namespace

cHttpIO::cHttpIO(vorn::cScmService* service, const std::string& name, vorn::cMsg* registration)
    : cScmServiceIO(service, name, kMode) {
  if (registration != nullptr) m_registration = std::make_unique<vorn::cMsg>(*registration);
}

cHttpIO::~cHttpIO() = default;

void cHttpIO::OnConnect() {
  vorn::Trace(UnitTAV(), kProgress, "http connection established");
  if (m_registration == nullptr) return;
  Send(*m_registration);
  m_registration.reset();
}

void cHttpIO::OnClose() { vorn::Trace(UnitTAV(), kProgress, "http connection shutdown"); }

bool cHttpIO::DispatchMessage(const vorn::cMsg& msg) {
  if (msg.GetType() != http::eRegistered) return false;
  m_registration.reset();
  return true;
}

}  // namespace tav
