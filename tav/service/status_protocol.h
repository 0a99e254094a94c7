// SPDX-License-Identifier: Apache-2.0
// The protocol of the status service, channel "status": named values that processes publish for everybody.
//
// A value is a parameter named like it; a parameter of any type is taken by its text form. A text parameter without
// text removes the value of that name. The key "*" below stands for a parameter of any name.
#pragma once

#include <tav/protocol.h>

namespace tav::status {

// ---- record keys

// clang-format off
inline constexpr cProtocolKey kAnyName   {"*",         vorn::eParText,   "a status value, named as itself"};
inline constexpr cProtocolKey kChanged   {"changed",   vorn::eParUInt,   "when the value was changed last, seconds UTC"};
inline constexpr cProtocolKey kConnected {"connected", vorn::eParBool,   "the process that has published the value is connected"};
inline constexpr cProtocolKey kName      {"name",      vorn::eParText,   "name of the value"};
inline constexpr cProtocolKey kPid       {"pid",       vorn::eParUInt,   "number of the process that has published the value"};
inline constexpr cProtocolKey kPrefix    {"prefix",    vorn::eParText,   "how the names wanted begin"};
inline constexpr cProtocolKey kProcess   {"process",   vorn::eParText,   "name of the process that has published the value"};
inline constexpr cProtocolKey kReason    {"reason",    vorn::eParText,   "why it was refused"};
inline constexpr cProtocolKey kRow       {"row",       vorn::eParRecord, "one value: texts name, value, process; uint pid, changed; bool connected"};
inline constexpr cProtocolKey kValue     {"value",     vorn::eParText,   "the value's text"};

// The name that stands, without text and alone in a message, for all values of the client that sends it.
inline constexpr const char* kAll = "*";

// Of a name and of a value: a message with a longer one is refused whole.
inline constexpr std::size_t kMaxNameBytes = 200;
inline constexpr std::size_t kMaxValueBytes = 4'096;

// ---- message numbers; never reused

enum eMessage : unsigned int {
  eChange        = 0x5102a,
  eAccepted      = 0x5102b,
  eChangeFailed  = 0x5102c,
  eNoted         = 0x5102e,
  eFullSet       = 0x51030,
  eValues        = 0x51031,
  eFullSetFailed = 0x51032,
  eReplace       = 0x51033,
  eReplaced      = 0x51034,
  eList          = 0x51240,
  eListed        = 0x51241,
  eListFailed    = 0x51242,
  eAsk           = 0x52000,
  eAllValues     = 0x52001,
};

// ---- messages

inline constexpr cProtocolMessage kMessages[] = {
  {eChange,       "change",        eToService, {{kAnyName, eRepeated}}, eAccepted,  eChangeFailed,  "set the values named; one without text is removed; \"*\" alone without text removes all values of this client"},
  {eAccepted,     "accepted",      eToClient,  {},                      0,          0,              "the change is taken"},
  {eNoted,        "noted",         eToClient,  {},                      0,          0,              "accepted; there is nothing to do"},
  {eFullSet,      "full-set",      eToService, {{kAnyName, eRepeated}}, eValues,    eFullSetFailed, "all values that the client knows; sent when it has connected"},
  {eValues,       "values",        eToClient,  {{kAnyName, eRepeated}}, 0,          0,              "values to take beside those that the client knows"},
  {eReplace,      "replace",       eToClient,  {{kAnyName, eRepeated}}, eReplaced,  0,              "all values there are, in place of those that the client knows"},
  {eReplaced,     "replaced",      eToService, {},                      0,          0,              "the client has replaced its values"},
  {eList,         "list",          eToService, {{kPrefix, eOptional}},  eListed,    eListFailed,    "list the values with the process that each is from"},
  {eListed,       "listed",        eToClient,  {{kRow, eRepeated}},     0,          0,              "one row a value, in the order of their names"},
  {eAsk,          "ask",           eToClient,  {},                      eAllValues, 0,              "ask for all values that the client knows"},
  {eAllValues,    "all-values",    eToService, {{kAnyName, eRepeated}}, 0,          0,              "all values that the client knows"},
};
// clang-format on

inline constexpr cProtocol kProtocol("status", kMessages);

static_assert(kProtocol.HasAscendingIds());
static_assert(kProtocol.HasNoEmptyText());
static_assert(kProtocol.AnswersGoBack());

}  // namespace tav::status
