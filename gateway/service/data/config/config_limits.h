// SPDX-License-Identifier: Apache-2.0
// How much configuration the service keeps. docs/storage.md lists the same figures.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tav::data {

constexpr unsigned int kMaxInterfaces = 64;
constexpr unsigned int kMaxMeters = 1024;
constexpr unsigned int kMaxCollectors = 32;  // of one meter
constexpr unsigned int kMaxPushTargets = 64;
constexpr unsigned int kMaxTemplates = 256;

// Texts, in bytes: what names a thing, what describes it, and the two that are lists.
constexpr std::size_t kMaxName = 64;
constexpr std::size_t kMaxText = 255;
constexpr std::size_t kMaxOptions = 1024;
constexpr std::size_t kMaxObisIds = 2048;

// The largest number that a push target may bring along; the service goes on counting behind it.
constexpr std::uint64_t kMaxIdx = 0xFFFFFFFF;

// Faults that one refusal names.
constexpr std::size_t kMaxFaults = 16;

}  // namespace tav::data
