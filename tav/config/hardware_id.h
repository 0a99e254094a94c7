// SPDX-License-Identifier: Apache-2.0
// What a gateway's hardware identifier says: which interfaces the hardware has.
#pragma once

#include <string>

#include <tav/export.h>

namespace tav {

// The interfaces as a readable list, "RS485 / LAN / GPRS". The code is the part of the identifier behind its first "-"
// up to the next one, if any; "Hardware ID unknown" for any other code and without one.
TAV_API std::string GetHWNameFromID(const std::string& id);

}  // namespace tav
