// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/sml_types.h>

#include <cstdio>

namespace tav::sml {

std::string cSmlFault::ToString() const {
  char what[24] = "the end of the bytes";
  if (found >= 0) std::snprintf(what, sizeof what, "0x%02X", static_cast<unsigned int>(found));
  return "byte " + std::to_string(offset) + ", " + field + ": expected " + expected + ", found " + what;
}

}  // namespace tav::sml
