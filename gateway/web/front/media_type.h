// SPDX-License-Identifier: Apache-2.0
// Media types of static files, and which types are worth compressing.
#pragma once

#include <string_view>

namespace tav::gateway::web {

// By the end of the name, such as ".css"; application/octet-stream for what is not known.
std::string_view MediaTypeOf(std::string_view fileName);
// Texts and what is like them. Not a stream of events: each has to be there at once.
bool IsCompressible(std::string_view contentType);

}  // namespace tav::gateway::web
