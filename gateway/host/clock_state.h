// SPDX-License-Identifier: Apache-2.0
// How far the machine's clock can be trusted.
#pragma once

namespace tav::gateway {

// Whether the kernel holds it to be synchronized, by an NTP daemon for instance.
bool IsClockSynchronized();

}  // namespace tav::gateway
