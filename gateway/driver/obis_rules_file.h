// SPDX-License-Identifier: Apache-2.0
// The OBIS mapping rules of a driver that runs without the OBIS service: a TOML file of
//
//   [[rule]]
//   id = 1                       # optional, counts on from the rule before; the smallest ID wins
//   name = "Energy import"
//   obis = "1-0:1.8.0"
//   map = "protocol=dlms"        # optional
#pragma once

#include <string>

#include <tav/obis/obis_map.h>

namespace tav {

// False, and the map left alone, when the file cannot be read or one of its rules is wrong; error names file, line,
// rule and fault.
bool ReadObisRules(const std::string& file, cObisMap& map, std::string& error);

}  // namespace tav
