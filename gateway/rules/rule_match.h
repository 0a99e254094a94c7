// SPDX-License-Identifier: Apache-2.0
// Why a mapping rule fits a value, or does not: the look-ups of cObisMap, told condition by condition in the order in
// which they test them.
#pragma once

#include <string>
#include <vector>

#include <tav/framework/data.h>
#include <tav/obis/obis_map.h>

namespace tav::rules {

// How a value comes, and so which look-up names it.
enum class eRoad {
  Identifier,  // any reading, by its identifier without channel and group F: GetEntryByObisId
  Dlms,        // GetEntryByObisIdFromDLMS
  Mbus,        // GetEntryByDibVibFromMBUS
  Modbus,      // GetEntryFromMODBUS
};

struct cQuery {
  eRoad road = eRoad::Identifier;
  std::string obis;       // Identifier, Dlms
  std::string meterAddr;  // Mbus, Modbus
  std::string medium;
  vorn::cData dib;  // Mbus
  vorn::cData vib;
  std::string reg;  // Modbus
};

enum class eFit {
  Names,   // it is the one that the look-up gives
  Behind,  // it would, but another one has the smaller ID
  No,
};

struct cVerdict {
  const cObisMapEntry* rule = nullptr;  // of the map that was asked
  eFit fit = eFit::No;
  std::string text;           // "names it", or why it does not
  unsigned int distance = 0;  // 0 for those that fit; less is nearer
};

// A verdict on every rule, in the order of their IDs.
std::vector<cVerdict> Match(const cObisMap& map, const cQuery& query);

// Those that fit, and so many of the others: the nearest first.
std::vector<cVerdict> Nearest(std::vector<cVerdict> verdicts, std::size_t others);

}  // namespace tav::rules
