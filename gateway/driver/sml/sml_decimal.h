// SPDX-License-Identifier: Apache-2.0
// A number of an SML message as decimal text; sign and width are those tagged on the wire.
#pragma once

#include <gateway/driver/decimal_text.h>
#include <gateway/driver/sml/sml_types.h>

namespace tav::sml {

inline cDecimalText DecimalText(const cSmlValue& value, std::int8_t scaler) {
  return {value.IsNegative(), value.Magnitude(), scaler};
}

}  // namespace tav::sml
