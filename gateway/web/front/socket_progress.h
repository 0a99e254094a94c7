// SPDX-License-Identifier: Apache-2.0
// How far a TCP connection has come, as the kernel counts it.
#pragma once

#include <cstdint>

namespace tav::gateway::web {

struct cSocketProgress {
  std::uint64_t received = 0;      // bytes
  std::uint64_t acknowledged = 0;  // bytes of ours that the other end has
};

// Zeros for what is no TCP connection.
cSocketProgress ReadProgress(int socket);

}  // namespace tav::gateway::web
