// SPDX-License-Identifier: Apache-2.0
#include "allocations.h"

#include <atomic>

namespace {

std::atomic<std::size_t> allocations{0};

}  // namespace

#if defined(__SANITIZE_ADDRESS__)

// The run time's own header comes with clang only.
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*onMalloc)(const volatile void*, std::size_t),
                                                         void (*onFree)(const volatile void*));

namespace {

void OnMalloc(const volatile void*, std::size_t) { ++allocations; }
void OnFree(const volatile void*) {}

[[maybe_unused]] const int installed = __sanitizer_install_malloc_and_free_hooks(OnMalloc, OnFree);

}  // namespace

#else

extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);

void* malloc(std::size_t size) {
  ++allocations;
  return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) {
  ++allocations;
  return __libc_calloc(count, size);
}

void* realloc(void* block, std::size_t size) {
  ++allocations;
  return __libc_realloc(block, size);
}

}  // extern "C"

#endif

cAllocations::cAllocations() : m_start(allocations) {}

std::size_t cAllocations::Get() const { return allocations - m_start; }
