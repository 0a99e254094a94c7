// SPDX-License-Identifier: Apache-2.0
// Records that tests of their text forms share.
#pragma once

#include <tav/framework/record.h>

// One text parameter.
inline vorn::cRecord Holding(const char* name, const char* value) {
  vorn::cRecord record;
  record.AppendTextPar(name, value);
  return record;
}

// A parameter of every type.
inline vorn::cRecord RecordOfEverything() {
  vorn::cRecord record;
  record.AppendTextPar("text", "a \"b\"");
  record.AppendTextPar("none", static_cast<const char*>(nullptr));
  record.AppendIntPar("int", -5);
  record.AppendUIntPar("uint", 5);
  record.AppendUInt64Par("uint64", 0xFFFFFFFFFFFFFFFF);
  record.AppendBoolPar("bool", true);
  record.AppendRecordPar("record", Holding("inner", "x"));
  record.AppendTimePar("time", vorn::cTime::FromSeconds(1'709'294'400, true));
  vorn::cUuid id;
  id.FromString("6ba7b810-9dad-11d1-80b4-00c04fd430c8");
  record.AppendUuidPar("uuid", id);
  record.AppendDataPar("data", vorn::cData("\x0a\x01", 2));
  return record;
}
