// SPDX-License-Identifier: Apache-2.0
// The protocol of the OBIS map service, channel "obis": who keeps the mapping rules, and who follows them. A rule
// travels in the form of cObisMapEntry, the map in that of cObisMap.
#pragma once

#include <tav/protocol.h>

namespace tav::obis {

// ---- record keys

// clang-format off
inline constexpr cProtocolKey kChanged {"changed",  vorn::eParUInt,   "how many rules were set or removed"};
inline constexpr cProtocolKey kCommand {"command",  vorn::eParText,   "\"set\" or \"remove\""};
inline constexpr cProtocolKey kEntry   {"entry",    vorn::eParRecord, "a mapping rule: uint64 ID, texts name, obis, map"};
inline constexpr cProtocolKey kObisMap {"obis-map", vorn::eParRecord, "mapping rules, one record \"entry\" each"};
inline constexpr cProtocolKey kReason  {"reason",   vorn::eParText,   "why it was refused"};
inline constexpr cProtocolKey kReplace {"replace",  vorn::eParBool,   "also remove every rule that the message does not hold"};

// ---- message numbers; never reused

enum eMessage : unsigned int {
  eGetMap            = 0x51082,
  eMap               = 0x51083,
  eGetMapFailed      = 0x51084,
  eChanged           = 0x51085,
  eChangeApplied     = 0x51086,
  eChangeNotApplied  = 0x51087,
  eSetRule           = 0x51088,
  eRuleSet           = 0x51089,
  eSetRuleFailed     = 0x5108a,
  eRemoveRule        = 0x5108b,
  eRuleRemoved       = 0x5108c,
  eRemoveRuleFailed  = 0x5108d,
  eApplyMap          = 0x51220,
  eMapApplied        = 0x51221,
  eApplyMapFailed    = 0x51222,
};

// ---- messages

inline constexpr cProtocolMessage kMessages[] = {
  {eGetMap,           "get-map",            eToService, {},                        eMap,           eGetMapFailed,     "get the whole map; sent by every client when it has connected"},
  {eMap,              "map",                eToClient,  {{kObisMap}},              0,              0,                 "the whole map, in place of what the client knows"},
  {eChanged,          "rule-changed",       eToClient,  {{kCommand}, {kEntry}},    eChangeApplied, eChangeNotApplied, "one rule was set or removed; sent to every client"},
  {eChangeApplied,    "change-applied",     eToService, {},                        0,              0,                 "the client has taken the change"},
  {eChangeNotApplied, "change-not-applied", eToService, {},                        0,              0,                 "the client could not take the change"},
  {eSetRule,          "set-rule",           eToService, {{kEntry}},                eRuleSet,       eSetRuleFailed,    "store a rule, in place of the one with its ID"},
  {eRemoveRule,       "remove-rule",        eToService, {{kEntry}},                eRuleRemoved,   eRemoveRuleFailed, "delete the rule with the ID of the entry; nothing else of the entry is read"},
  {eApplyMap,         "apply-map",          eToService, {{kObisMap}, {kReplace}},  eMapApplied,    eApplyMapFailed,   "take many rules in one transaction, or none of them"},
  {eMapApplied,       "map-applied",        eToClient,  {{kChanged}},              0,              0,                 "the rules are stored"},
};
// clang-format on

inline constexpr cProtocol kProtocol("obis", kMessages);

static_assert(kProtocol.HasAscendingIds());
static_assert(kProtocol.HasNoEmptyText());
static_assert(kProtocol.AnswersGoBack());

}  // namespace tav::obis
