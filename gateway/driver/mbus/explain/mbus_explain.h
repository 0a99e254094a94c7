// SPDX-License-Identifier: Apache-2.0
// What the bytes of an M-Bus capture mean, for people (every byte range with its meaning) and for programs (JSON).
//
// The capture may be raw bytes or hexadecimal digits, one frame or many, with noise between them. Unlike the reader it
// also shows what it cannot vouch for: frames with a wrong checksum or without their end, as far as their bytes go.
//
//   {"kind":"mbus","good":1,"bad":0,"incomplete":0,"skipped_bytes":0,"telegrams":[
//     {"offset":0,"good":true,"meter":"44950146","manufacturer":"SPX","version":52,"medium":"h","access":84,"status":16,
//      "configuration":0,"address":1,"control":8,"information":114,"more":false,"error":null,"reason":null,"values":[
//        {"record":0,"function":"Instantaneous value","storage":0,"tariff":0,"subunit":0,"dib":"0C","vib":"07",
//         "raw":"0","scaler":4,"unit":"Wh","value":"0","base_value":"0","base_unit":"Wh","mark":null,"rule":null}]}]}
//
// A telegram is a frame; it is good when it is whole and either an answer that could be read to its end, or none at
// all: a request of one character or of the short form. "reason" tells which byte of the frame, counted from 0, is the
// first that is wrong. A frame that the end of the capture cuts off counts as incomplete, not as bad. "error" is what
// an application error says; "more" that the meter has more to tell in its next telegram. dib and vib are written as
// the options dif and vif of a mapping rule. Numbers are exact decimals; null stands for what the meter did not send.
// "mark" says why a value is no more than its bytes; "rule" is null, or {"id":1,"name":"Energy","obis":"1-0:1.8.0"}
// where one of the caller's mapping rules names the value.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include <gateway/driver/capture_explain.h>
#include <gateway/driver/mbus/reader/mbus_types.h>

namespace tav::mbus {

// What mapping rules are asked by.
struct cMBusIdentity {
  std::string meterAddr;  // the primary address, "5"
  std::string medium;     // its letter; empty when the meter did not send it
  cBytes dib;
  cBytes vib;
};

using cMBusNamer = std::function<cObisNaming(const cMBusIdentity& identity)>;

cExplanation ExplainMBus(std::string_view capture, const cMBusNamer& namer = {});

}  // namespace tav::mbus
