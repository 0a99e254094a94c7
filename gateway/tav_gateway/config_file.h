// SPDX-License-Identifier: Apache-2.0
// The configuration file of tav-gateway, TOML.
#pragma once

#include <string>

#include <gateway/tav_gateway/options.h>

namespace tav::gateway {

// Takes what the file says into options. On failure an error that names file, line and key; empty otherwise.
std::string ReadConfigFile(const std::string& file, cOptions& options);

}  // namespace tav::gateway
