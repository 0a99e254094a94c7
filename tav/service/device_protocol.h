// SPDX-License-Identifier: Apache-2.0
// The protocols of the device services: user interface (channel "ui"), time and WAN state (channel "time-service"),
// mobile modem (channel "gsm").
//
// Where the number behind an answer is another request (relay, modem), the answer itself carries the "reason" of a
// refusal; an answer without one says that it was done.
#pragma once

#include <tav/protocol.h>

namespace tav {

namespace device {

// ---- record keys

// clang-format off
inline constexpr cProtocolKey kApn       {"APN",       vorn::eParText,   "access point of the mobile network"};
inline constexpr cProtocolKey kLed       {"led",       vorn::eParUInt,   "0 WAN, 1 and 2 meter data"};
inline constexpr cProtocolKey kLedMode   {"mode",      vorn::eParUInt,   "0 on, 1 off, 2 blinking, 3 trying, 4 error, 5 one flash for meter data"};
inline constexpr cProtocolKey kMobilePin {"MobilePin", vorn::eParText,   "PIN of the SIM card, empty when it has none"};
inline constexpr cProtocolKey kName      {"name",      vorn::eParText,   "name of the value"};
inline constexpr cProtocolKey kNewUtc    {"new-utc",   vorn::eParTime,   "the time to set"};
inline constexpr cProtocolKey kPassword  {"Password",  vorn::eParText,   "password at the access point, or empty"};
inline constexpr cProtocolKey kReason    {"reason",    vorn::eParText,   "why it was refused"};
inline constexpr cProtocolKey kRelayMode {"mode",      vorn::eParUInt,   "0 open, 1 closed"};
inline constexpr cProtocolKey kRow       {"row",       vorn::eParRecord, "one value of the state: texts name, value"};
inline constexpr cProtocolKey kTimeout   {"timeout",   vorn::eParUInt,   "seconds until the relay goes back to the mode it had, 0: it stays"};
inline constexpr cProtocolKey kUser      {"User",      vorn::eParText,   "user at the access point, or empty"};
inline constexpr cProtocolKey kValue     {"value",     vorn::eParText,   "the value, as text"};
// clang-format on

}  // namespace device

namespace ui {

// ---- words for the numbers that lights, their modes and the relay's modes are; the number is the place in the list

inline constexpr std::string_view kLeds[] = {"wan", "meter-1", "meter-2"};
inline constexpr std::string_view kLedModes[] = {"on", "off", "blink", "try", "error", "flash"};
inline constexpr std::string_view kRelayModes[] = {"open", "closed"};

// ---- message numbers; never reused

// clang-format off
enum eMessage : unsigned int {
  eSwitchLed       = 0x53000,
  eLedSwitched     = 0x53001,
  eSwitchLedFailed = 0x53002,
  eSwitchRelay     = 0x53005,
  eRelaySwitched   = 0x53006,
  eGetRelayMode    = 0x53007,
  eRelayMode       = 0x53008,
  eGetState        = 0x53010,
  eState           = 0x53011,
};

// ---- messages

inline constexpr cProtocolMessage kMessages[] = {
  {eSwitchLed,     "switch-led",     eToService, {{device::kLed}, {device::kLedMode}},                              eLedSwitched,   eSwitchLedFailed,  "switch a light"},
  {eSwitchRelay,   "switch-relay",   eToService, {{device::kRelayMode}, {device::kTimeout}},                        eRelaySwitched, eRelaySwitched,    "switch the relay"},
  {eRelaySwitched, "relay-switched", eToClient,  {{device::kReason, eOptional}},                                    0,              0,                 "the relay is switched, or with a reason it is not"},
  {eGetRelayMode,  "get-relay-mode", eToService, {},                                                                eRelayMode,     eRelayMode + 1,    "ask for the mode of the relay"},
  {eRelayMode,     "relay-mode",     eToClient,  {{device::kRelayMode}},                                            0,              0,                 "the mode of the relay"},
  {eGetState,      "get-ui-state",   eToService, {},                                                                eState,         eState + 1,        "ask how lights and relay are"},
  {eState,         "ui-state",       eToClient,  {{device::kRow, eRepeated}},                                       0,              0,                 "how lights and relay are"},
};
// clang-format on

inline constexpr cProtocol kProtocol("ui", kMessages);

static_assert(kProtocol.HasAscendingIds());
static_assert(kProtocol.HasNoEmptyText());
static_assert(kProtocol.AnswersGoBack());

}  // namespace ui

namespace time_service {

// ---- message numbers; never reused

// clang-format off
enum eMessage : unsigned int {
  eSetTime       = 0x56002,
  eTimeSet       = 0x56003,
  eSetTimeFailed = 0x56004,
  eWanUp         = 0x56014,
  eWanDown       = 0x56017,
  eGetState      = 0x56030,
  eState         = 0x56031,
};

// ---- messages

inline constexpr cProtocolMessage kMessages[] = {
  {eSetTime,  "set-time",       eToService, {{device::kNewUtc}},         eTimeSet,     eSetTimeFailed, "set the clock of the gateway"},
  {eWanUp,    "wan-up",         eToService, {},                          eWanUp + 1,   eWanUp + 2,     "the link to the wide area network is up"},
  {eWanDown,  "wan-down",       eToService, {},                          eWanDown + 1, eWanDown + 2,   "the link to the wide area network is down"},
  {eGetState, "get-time-state", eToService, {},                          eState,       eState + 1,     "ask how the clock and the link are"},
  {eState,    "time-state",     eToClient,  {{device::kRow, eRepeated}}, 0,            0,              "how the clock and the link are"},
};
// clang-format on

inline constexpr cProtocol kProtocol("time-service", kMessages);

static_assert(kProtocol.HasAscendingIds());
static_assert(kProtocol.HasNoEmptyText());
static_assert(kProtocol.AnswersGoBack());

}  // namespace time_service

namespace gsm {

// ---- message numbers; never reused

// clang-format off
enum eMessage : unsigned int {
  eStart      = 0x12000,
  eStarted    = 0x12001,
  eStop       = 0x12002,
  eStopped    = 0x12003,
  eStopFailed = 0x12004,
  eGetState   = 0x12010,
  eState      = 0x12011,
};

// ---- messages

inline constexpr cProtocolMessage kMessages[] = {
  {eStart,    "start",         eToService, {{device::kMobilePin}, {device::kApn}, {device::kUser}, {device::kPassword}}, eStarted, eStarted,     "start the mobile data connection"},
  {eStarted,  "started",       eToClient,  {{device::kReason, eOptional}},                                               0,        0,            "the connection is being made, or with a reason it is not"},
  {eStop,     "stop",          eToService, {},                                                                           eStopped, eStopFailed,  "end the mobile data connection"},
  {eGetState, "get-gsm-state", eToService, {},                                                                           eState,   eState + 1,   "ask how the modem is"},
  {eState,    "gsm-state",     eToClient,  {{device::kRow, eRepeated}},                                                  0,        0,            "how the modem is"},
};
// clang-format on

inline constexpr cProtocol kProtocol("gsm", kMessages);

static_assert(kProtocol.HasAscendingIds());
static_assert(kProtocol.HasNoEmptyText());
static_assert(kProtocol.AnswersGoBack());

}  // namespace gsm

}  // namespace tav
