// SPDX-License-Identifier: Apache-2.0
// The blocks behind records. Freed ones of ordinary size are kept for the next record of the thread, so that a process
// that builds and sends readings all day asks the allocator for none of them.
#include "record_buffer.h"

#include <cstdlib>

namespace vorn::detail {

namespace {

constexpr std::uint32_t kSmallest = 256;      // bytes of a fresh buffer
constexpr std::uint32_t kLargestKept = 4096;  // a larger one goes back to the allocator
constexpr std::uint32_t kLargestIndexKept = 512;
#if defined(__has_feature)
#define VORN_ASAN __has_feature(address_sanitizer)
#elif defined(__SANITIZE_ADDRESS__)
#define VORN_ASAN 1
#else
#define VORN_ASAN 0
#endif
#if VORN_ASAN
constexpr unsigned kMostKept = 0;  // so that a use after the end is seen
#else
constexpr unsigned kMostKept = 16;
#endif

struct cKept {
  cRecordBuffer* buffers[kMostKept + 1];
  unsigned count;
  bool cleaned;
  bool ended;
};

// Plain data, so that it may be touched while the thread ends; cCleaner empties it then.
__attribute__((tls_model("initial-exec"))) thread_local cKept kept{};

void Destroy(cRecordBuffer* buffer) {
  std::free(buffer->index);
  std::free(buffer);
}

struct cCleaner {
  ~cCleaner() {
    kept.ended = true;
    while (kept.count != 0) Destroy(kept.buffers[--kept.count]);
  }
  bool started = false;
};
thread_local cCleaner cleaner;

}  // namespace

cRecordBuffer* NewBuffer(std::size_t capacity) {
  if (capacity > kMaxRecordSize) return nullptr;
  cRecordBuffer* buffer = nullptr;
  if (kept.count != 0 && kept.buffers[kept.count - 1]->capacity >= capacity) {
    buffer = kept.buffers[--kept.count];
  } else {
    if (capacity < kSmallest) capacity = kSmallest;
    buffer = static_cast<cRecordBuffer*>(std::malloc(sizeof(cRecordBuffer) + capacity));
    if (buffer == nullptr) return nullptr;
    buffer->capacity = static_cast<std::uint32_t>(capacity);
    buffer->index = nullptr;
    buffer->indexCapacity = 0;
  }
  buffer->refs = 1;
  buffer->depth = 1;
  buffer->indexed = 0;
  return buffer;
}

cRecordBuffer* GrowBuffer(cRecordBuffer* buffer, std::size_t capacity) {
  if (capacity > kMaxRecordSize) return nullptr;
  std::size_t doubled = std::size_t{buffer->capacity} * 2;
  if (doubled > kMaxRecordSize) doubled = kMaxRecordSize;
  if (capacity < doubled) capacity = doubled;
  auto* grown = static_cast<cRecordBuffer*>(std::realloc(buffer, sizeof(cRecordBuffer) + capacity));
  if (grown != nullptr) grown->capacity = static_cast<std::uint32_t>(capacity);
  return grown;
}

void FreeBuffer(cRecordBuffer* buffer) {
  if (kept.ended || kept.count >= kMostKept || buffer->capacity > kLargestKept ||
      buffer->indexCapacity > kLargestIndexKept) {
    Destroy(buffer);
    return;
  }
  if (!kept.cleaned) {
    kept.cleaned = cleaner.started = true;  // touches it, so that it is constructed and will run
  }
  kept.buffers[kept.count++] = buffer;
}

}  // namespace vorn::detail
