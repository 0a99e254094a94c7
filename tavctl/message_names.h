// SPDX-License-Identifier: Apache-2.0
// cMessageNames: what the messages of a service are called, and what they should carry, by the tables of the protocols.
#pragma once

#include <string>

#include <tav/framework/msg.h>
#include <tav/protocol.h>

namespace tav::ctl {

class cMessageNames {
 public:
  // A service that no table is there for: its messages are named by their numbers.
  explicit cMessageNames(const std::string& service);

  // "store-meter-records"; "0x51234" for a number that no table has.
  std::string NameOf(unsigned int type) const;
  // What the message lacks of what its table asks for; empty when nothing.
  std::string FaultOf(const vorn::cMsg& msg) const;

 private:
  const cProtocol* m_protocol;
};

}  // namespace tav::ctl
