// SPDX-License-Identifier: Apache-2.0
// The OBIS mapping rules that the system ships: what common meters of electricity, heat, gas and water send, named
// after the public tables of OBIS identifiers. An operator's own rule with a smaller ID goes before them: they begin at
// 1000.
#pragma once

#include <optional>

#include <tav/obis/obis_map.h>

namespace tav::rules {

// Where each group of shipped rules begins; IDs are never given to another rule. From 10000 on none is shipped.
inline constexpr unsigned long long kFirstDefaultId = 1000;
inline constexpr unsigned long long kEndOfDefaultIds = 10000;

cObisMap MakeDefaultRules();

// For a new rule: above all that the map has, and not where shipped ones may come to stand. None when there is none.
std::optional<unsigned long long> FreeRuleId(const cObisMap& map);

}  // namespace tav::rules
