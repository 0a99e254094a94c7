// SPDX-License-Identifier: Apache-2.0
#include <tavctl/message_names.h>

#include <tav/framework/helper.h>
#include <tavctl/protocols.h>

namespace tav::ctl {

cMessageNames::cMessageNames(const std::string& service) : m_protocol(FindProtocol(service)) {}

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
