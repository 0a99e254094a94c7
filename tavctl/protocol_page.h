// SPDX-License-Identifier: Apache-2.0
// The page of a service's protocol in docs/protocol/, printed from its table.
#pragma once

#include <string>

#include <tav/protocol.h>

namespace tav::ctl {

// Markdown: messages in the order of their numbers, then the parameters they carry.
std::string ProtocolPage(const cProtocol& protocol);

}  // namespace tav::ctl
