// SPDX-License-Identifier: Apache-2.0
// Answers as the HTTP library takes them, each with the fields that every answer has.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>

#include <gateway/web/front/answer.h>

struct MHD_Response;

namespace tav::gateway::web {

using ReadBody = ssize_t (*)(void* self, std::uint64_t at, char* to, std::size_t most);

// Both give null when there is no memory for it, or a field cannot be sent.
MHD_Response* MakeResponse(cAnswer answer, bool isTls);
// One whose body is read piece by piece. isHead: there is none, and nobody knows its length.
MHD_Response* MakeStreamResponse(const cAnswer& beginning, bool isTls, bool isHead, ReadBody read, void* self);

}  // namespace tav::gateway::web
