// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/setup_notice.h>

namespace tav::pages {

namespace {

// The status value with which the front end tells where it listens.
constexpr const char* kAddress = "web.address";

}  // namespace

cSetupNotice::cSetupNotice(cPageProcess& process, std::function<void(const std::string& text)> say)
    : m_process(process), m_say(std::move(say)), m_look(&process, [this] { Look(); }) {
  if (m_process.GetAccess().NeedsSetup()) m_look.Start(kLookMs);
}

void cSetupNotice::Look() {
  if (!m_process.GetAccess().NeedsSetup()) return;
  std::string address;
  const bool isKnown = m_process.GetGateway().status.Get(kAddress, address);
  if (!isKnown && ++m_looks < kLooks) return m_look.Start(kLookMs);
  while (address.ends_with('/')) address.pop_back();
  m_say("no password is set yet: set it at " + address + "/setup?code=" + m_process.GetAccess().GetSetupCode());
}

}  // namespace tav::pages
