// SPDX-License-Identifier: Apache-2.0
// The protocols that tavctl knows: names and explanations of messages come from their tables.
#pragma once

#include <string_view>

#include <tav/http/http_protocol.h>
#include <tav/obis/obis_protocol.h>
#include <tav/service/db_ctrl_protocol.h>
#include <tav/service/device_protocol.h>
#include <tav/service/status_protocol.h>

namespace tav::ctl {

inline constexpr const cProtocol* kProtocols[] = {&db_ctrl::kProtocol, &gsm::kProtocol,          &obis::kProtocol,
                                                  &status::kProtocol,  &time_service::kProtocol, &ui::kProtocol,
                                                  &http::kProtocol};

// Null for a service that no table is there for.
constexpr const cProtocol* FindProtocol(std::string_view service) {
  for (const cProtocol* protocol : kProtocols)
    if (protocol->GetService() == service) return protocol;
  return nullptr;
}

}  // namespace tav::ctl
