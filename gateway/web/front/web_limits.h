// SPDX-License-Identifier: Apache-2.0
// How much and how long the web front end bears. docs/web.md shows the same numbers.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tav::gateway::web {

// ---- a request
constexpr std::size_t kMaxTargetBytes = std::size_t{8} << 10;     // of the request line's target, else 414
constexpr std::size_t kMaxHeaderBytes = std::size_t{32} << 10;    // request line and fields, else 431
constexpr std::size_t kMaxNameBytes = 255;                        // of a field, variable or cookie: of a record's names
constexpr std::uint64_t kMaxBodyBytes = std::uint64_t{16} << 20;  // by default, else 413
constexpr std::size_t kMaxFormBytes = std::size_t{1} << 20;       // names and values of a form's fields, else 413
constexpr std::size_t kMaxUploadFiles = 16;                       // of one form, else 413
// Of a refused body so many bytes are read to their end, so that the client comes to see the answer.
constexpr std::uint64_t kMaxDiscardBytes = std::uint64_t{64} << 20;
// What all requests of the moment keep in files, else 503.
constexpr std::uint64_t kMaxStoredBytes = std::uint64_t{256} << 20;

// ---- connections
constexpr std::size_t kMaxConnections = 1200;
constexpr std::size_t kSpareConnections = 8;    // so many before the limit the one idle longest is closed
constexpr std::int64_t kHeaderTimeMs = 20'000;  // from a header's first byte to its last
constexpr std::int64_t kIdleTimeMs = 60'000;    // between two requests
constexpr std::int64_t kStuckTimeMs = 60'000;   // without a byte taken by the client
constexpr std::int64_t kBodyGraceMs = 20'000;   // before the rate of a body counts
constexpr std::uint64_t kLeastBodyRate = 1024;  // bytes a second, over all of the body
constexpr unsigned int kCheckMs = 1'000;        // how often all this is looked at while there are connections
constexpr int kSendBufferBytes = 128 << 10;     // what the kernel holds for a slow reader

// ---- pages
constexpr std::int64_t kAcceptTimeMs = 5'000;   // until a page process has accepted a request, else 504
constexpr std::int64_t kAnswerTimeMs = 30'000;  // from then to the end of the header block, else 504
constexpr std::size_t kMaxHeaderBlockBytes = std::size_t{16} << 10;   // of a page, else 502
constexpr std::size_t kMaxWaitingBytes = std::size_t{8} << 20;        // of one answer, not yet taken by the client
constexpr std::size_t kMaxWaitingTotalBytes = std::size_t{64} << 20;  // of all answers together

}  // namespace tav::gateway::web
