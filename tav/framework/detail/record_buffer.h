// SPDX-License-Identifier: Apache-2.0
// Making and growing the blocks behind records; FreeBuffer stands in record_wire.h. Internal to the framework.
#pragma once

#include <cstddef>

#include <tav/framework/record_wire.h>

namespace vorn::detail {

// Offsets into a record are 32 bits wide; far above any frame, far below their end.
constexpr std::size_t kMaxRecordSize = std::size_t{1} << 30;

// An empty buffer with room for capacity bytes and one reference; null when there is no memory or it is too much.
cRecordBuffer* NewBuffer(std::size_t capacity);
// Room for capacity bytes at least, more for a small one; null, and buffer as it was, when there is none.
cRecordBuffer* GrowBuffer(cRecordBuffer* buffer, std::size_t capacity);

}  // namespace vorn::detail
