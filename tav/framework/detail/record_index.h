// SPDX-License-Identifier: Apache-2.0
// Validating a record's bytes and indexing them, in one pass. Internal to the framework.
#pragma once

#include <string>

#include <tav/framework/record_wire.h>

namespace vorn::detail {

// A buffer with so much capacity behind its bytes is scanned the fast way to its end.
constexpr std::size_t kScanRoom = 49;

// Validates the first size bytes of the buffer (bounds, types, nesting) and fills its index and depth. On failure
// false, and error, when given, says what is wrong at which byte.
bool IndexBuffer(cRecordBuffer* buffer, std::uint32_t size, std::string* error);

}  // namespace vorn::detail
