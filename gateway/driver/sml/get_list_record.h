// SPDX-License-Identifier: Apache-2.0
// The record form of an SML list response, from which cMeterRecord::FromSmlGetListRes makes a reading:
//
//   "serverId"  data
//   "valList"   record: one "valListEntry" record a value: "objName" (OBIS identifier packed as 0x0000AABBCCDDEEFF),
//               "value", "status", "scaler", "unit", "signature"; what the meter did not send is not there
//
// The import reads some of this in ways that meters do not have in mind, so the entries are prepared for it:
//
// - Number and scaler reach it as text and exponent where its rule (shift the point in the digits) gives the right
//   text. Where it would not, it gets the finished decimal text and the scaler 0: a negative number with no more digits
//   than decimal places, a zero with a positive scaler. A negative number below 32 bits goes as text anyway.
// - Its status text comes from the "value" of the first entry with a "status", an energy in most meters. A status word
//   entry (1-0:96.5.5*255) put first decides instead: the number of the meter's own status word, or else of the first
//   status sent with a value. A status word sent as octets becomes a number.
// - The manufacturer is read under 129-129:199.130.3*255 only; meters that send it as 1-0:96.50.1*1 get that entry too.
// - A value with a unit becomes a measurement. Some meters send the unit 0 with octets: only numbers keep theirs. A
//   number without a unit (a power factor) is a count in the list of units, unless it is a status word.
#pragma once

#include <tav/framework/record.h>

#include <gateway/driver/sml/sml_message.h>

namespace tav::sml {

vorn::cRecord ToGetListRecord(const cSmlList& list);

}  // namespace tav::sml
