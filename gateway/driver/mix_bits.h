// SPDX-License-Identifier: Apache-2.0
// The mixer of splitmix64: every bit of the result depends on every bit of the number, so that simulations draw from
// what they are about and need no state.
#pragma once

#include <cstdint>

namespace tav {

inline constexpr std::uint64_t kMixStep = 0x9E3779B97F4A7C15;  // 2^64 by the golden ratio

constexpr std::uint64_t MixBits(std::uint64_t x) {
  x = (x ^ x >> 30) * 0xBF58476D1CE4E5B9;
  return (x ^ x >> 27) * 0x94D049BB133111EB;
}

}  // namespace tav
