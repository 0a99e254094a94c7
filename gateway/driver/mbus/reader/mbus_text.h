// SPDX-License-Identifier: Apache-2.0
// What a record says, as text: exact decimals, never rounded and never through floating point.
#pragma once

#include <string>

#include <gateway/driver/mbus/reader/mbus_reader.h>

namespace tav::mbus {

// Upper-case digits, two a byte.
std::string HexText(cBytes bytes, const char* separator = "");
// The unit of the value: the helper's, or the letters of a plain text VIF, with '?' for control characters; and what
// the value is for each of. As ISO 8859-1, empty when there is none.
std::string UnitText(const cMBusRecord& record);
// The number as it was sent, without its scaler; of anything else its bytes, "hex:0A01"; empty when there are no data.
std::string RawText(const cMBusRecord& record);
// The number in its unit; a text, a point in time, "hex:0A01" for octets; empty when there are no data. Octets come in
// the order they were sent, except a binary number of variable length, which is shown most significant byte first.
std::string ValueText(const cMBusRecord& record);

// The same number in the unit that quantities are compared in: Wh, J, m³, kg, W, J/h, m³/h, s, °C, K, bar; another unit
// stays. Both texts are empty when there is no number.
struct cBaseValue {
  std::string value;
  std::string unit;
};
cBaseValue BaseValue(const cMBusRecord& record);

}  // namespace tav::mbus
