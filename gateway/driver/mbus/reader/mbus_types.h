// SPDX-License-Identifier: Apache-2.0
// What the layers of the M-Bus reader share.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace tav::mbus {

// Bytes that somebody else holds.
using cBytes = std::span<const std::uint8_t>;

inline cBytes BytesOf(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

// What cannot be read: which byte of the frame, counted from 0, and why.
struct cMBusFault {
  const char* what = "";
  std::uint32_t offset = 0;
  int found = -1;  // the byte there, where it tells something

  // "byte 6: a control information that no meter answers with (76)".
  std::string ToString() const;
};

}  // namespace tav::mbus
