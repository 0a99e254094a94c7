// SPDX-License-Identifier: Apache-2.0
// Where the processes of the gateway keep their files when nobody names a directory.
#pragma once

#include <string>

namespace tav::gateway {

// $STATE_DIRECTORY as systemd sets it, else /var/lib/tav for root, else $XDG_STATE_HOME/tav or ~/.local/state/tav.
std::string StateDirectory();

}  // namespace tav::gateway
