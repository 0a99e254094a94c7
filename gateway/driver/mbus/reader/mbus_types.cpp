// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/reader/mbus_types.h>

#include <tav/framework/helper.h>

namespace tav::mbus {

std::string cMBusFault::ToString() const {
  return "byte " + std::to_string(offset) + ": " + what + (found >= 0 ? vorn::FormatString(" (%02X)", found) : "");
}

}  // namespace tav::mbus
