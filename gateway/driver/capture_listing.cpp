// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/capture_listing.h>

#include <algorithm>
#include <cstdio>

#include <gateway/driver/capture_bytes.h>

namespace tav {

void cCaptureListing::Range(std::uint64_t from, std::uint64_t to, const std::string& text) {
  Line(std::to_string(from) + ".." + std::to_string(to - 1) + ": " + text);
}

void cCaptureListing::Row(std::uint64_t offset, std::span<const std::uint8_t> bytes, const std::string& text) {
  char row[64];
  std::snprintf(row, sizeof row, "%8llu  %-20s%s  ", static_cast<unsigned long long>(offset),
                HexDigits(bytes.first(std::min(bytes.size(), kShownBytes))).c_str(),
                bytes.size() > kShownBytes ? ".." : "  ");
  Line(row + text);
}

}  // namespace tav
