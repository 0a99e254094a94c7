// SPDX-License-Identifier: Apache-2.0
// The field Range of a request (RFC 9110, 14.1.2), as far as it asks for one range of bytes.
#pragma once

#include <cstdint>
#include <string_view>

namespace tav::gateway::web {

struct cByteRange {
  std::uint64_t first = 0;
  std::uint64_t size = 0;
};

enum class eRange {
  Whole,       // none is asked for, several, or something else: all is sent
  Part,        // this one
  Impossible,  // it lies behind the end
};

// Of a file of so many bytes. range is set for a part only.
eRange ReadRange(std::string_view field, std::uint64_t fileSize, cByteRange& range);

}  // namespace tav::gateway::web
