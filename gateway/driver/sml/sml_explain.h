// SPDX-License-Identifier: Apache-2.0
// What the bytes of an SML capture mean, for people (every byte range with its meaning) and for programs (JSON).
//
// The capture may be raw bytes or hexadecimal digits, with or without transport frames. Unlike the reader it also shows
// what it cannot vouch for: frames and messages with a wrong checksum, as far as their bytes can be read.
//
//   {"kind":"sml","good":1,"bad":0,"incomplete":0,"skipped_bytes":0,
//    "telegrams":[{"offset":0,"good":true,"meter":"0A01445A47000282225E","values":[
//      {"obis":"1-0:1.8.0*255","raw":"54301577","scaler":-1,"unit_code":30,"unit":"Wh","value":"5430157.7","rule":null}]}]}
//
// A telegram is a frame with both its ends, good when its checksum is right; a capture without transport frames is one
// telegram, good when it can be read to its end. Texts are exact decimals, "hex:0A01" for octets, "true", "false"; null
// stands for what the meter did not send. "rule" is null, or {"id":1,"name":"Energy","obis":"1-0:1.8.0"} where one of
// the caller's mapping rules names the value.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include <gateway/driver/capture_explain.h>

namespace tav::sml {

// Asked with every identifier "A-B:C.D.E*F".
using cObisNamer = std::function<cObisNaming(const std::string& obis)>;

// Whether there is SML in a capture at all: a start sequence somewhere, or messages without one.
bool HoldsSml(std::string_view capture);

cExplanation ExplainSml(std::string_view capture, const cObisNamer& namer = {});

}  // namespace tav::sml
