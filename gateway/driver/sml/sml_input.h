// SPDX-License-Identifier: Apache-2.0
// Whether a capture holds SML, and in which form: in transport frames, or the bare messages. It is found by looking.
#pragma once

#include <gateway/driver/sml/sml_types.h>

namespace tav::sml {

// Messages without a transport frame: no start sequence anywhere, and the first byte is that of a message.
bool IsPayload(cBytes capture);
// A start sequence somewhere, or messages without.
bool IsSml(cBytes capture);

}  // namespace tav::sml
