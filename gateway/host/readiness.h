// SPDX-License-Identifier: Apache-2.0
// Tells the service manager that started this process what becomes of it: systemd's notification protocol, datagrams to
// the socket that the environment variable NOTIFY_SOCKET names. Without that variable nothing is sent.
#pragma once

#include <string>

namespace tav::gateway {

// state: lines such as "READY=1" or "STOPPING=1". False when there is somebody to tell and it failed.
bool NotifyManager(const std::string& state);

}  // namespace tav::gateway
