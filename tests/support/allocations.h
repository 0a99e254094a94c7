// SPDX-License-Identifier: Apache-2.0
// cAllocations: how often this process asked the allocator for memory since the object was made.
//
// malloc, calloc and realloc are counted, and operator new with them. Works under AddressSanitizer too.
#pragma once

#include <cstddef>

class cAllocations {
 public:
  cAllocations();
  std::size_t Get() const;

 private:
  std::size_t m_start;
};

// The framework keeps no spare buffers under AddressSanitizer, so that a use after the end is seen.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool kBuffersAreKept = false;
#else
constexpr bool kBuffersAreKept = true;
#endif
