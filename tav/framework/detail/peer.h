// SPDX-License-Identifier: Apache-2.0
// Who is at the other end of a socket, as the kernel knows it.
#pragma once

#include <tav/framework/scm_channel.h>

namespace vorn::detail {

cScmPeer PeerOf(int socket);
// One line of /proc/PID/comm; empty when the process is gone or not to be seen.
std::string ProcessName(pid_t pid);

}  // namespace vorn::detail
