// SPDX-License-Identifier: Apache-2.0
#include <tavctl/message_names.h>

#include <tav/framework/helper.h>
#include <tav/service/db_ctrl_protocol.h>

namespace tav::ctl {

namespace {

constexpr const cProtocol* kProtocols[] = {&db_ctrl::kProtocol};

}  // namespace

cMessageNames::cMessageNames(const std::string& service) {
  for (const cProtocol* protocol : kProtocols)
    if (protocol->GetService() == service) m_protocol = protocol;
}

std::string cMessageNames::NameOf(unsigned int type) const {
  return m_protocol != nullptr ? MessageName(*m_protocol, type) : vorn::FormatString("0x%x", type);
}

std::string cMessageNames::FaultOf(const vorn::cMsg& msg) const {
  const cProtocolMessage* const message = m_protocol != nullptr ? m_protocol->Find(msg.GetType()) : nullptr;
  std::string fault;
  if (message != nullptr) CheckParameters(*message, msg.Record(), fault);
  return fault;
}

}  // namespace tav::ctl
