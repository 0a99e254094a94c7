// SPDX-License-Identifier: Apache-2.0
// The protocol of the database control service, channel "data": who stores readings, events and settings, and who asks
// for them. Record forms carried inside are told by their own classes (cMeterRecord, cInterfaceRecord, ...).
//
// The service matches an answer to its request by the message's identifier, which it returns. The same range of numbers
// holds the status service's messages (0x5102a to 0x51034) and the OBIS map's (0x51082 to 0x5108b); they stand in their
// own protocols.
#pragma once

#include <tav/protocol.h>

namespace tav::db_ctrl {

// ---- record keys

// clang-format off
inline constexpr cProtocolKey kAddr                {"addr",                 vorn::eParText,   "bus or network address of a meter"};
inline constexpr cProtocolKey kAfter               {"after",                vorn::eParData,   "cursor: go on behind the row that the previous answer ended with"};
inline constexpr cProtocolKey kChanges             {"changes",              vorn::eParUInt64, "how many rows the statement changed"};
inline constexpr cProtocolKey kColumn              {"column",               vorn::eParText,   "name of a column, in their order"};
inline constexpr cProtocolKey kCommand             {"command",              vorn::eParText,   "what the driver is to do"};
inline constexpr cProtocolKey kContent             {"content",              vorn::eParRecord, "data of the command, or of its answer"};
inline constexpr cProtocolKey kCount               {"count",                vorn::eParUInt,   "most rows to deliver"};
inline constexpr cProtocolKey kDb                  {"db",                   vorn::eParText,   "name of the database"};
inline constexpr cProtocolKey kDriver              {"driver",               vorn::eParText,   "name of the meter driver"};
inline constexpr cProtocolKey kDuplicates          {"duplicates",           vorn::eParUInt,   "how many of the records were stored before"};
inline constexpr cProtocolKey kEnd                 {"end",                  vorn::eParBool,   "nothing is behind these rows; the handle is released"};
inline constexpr cProtocolKey kFromUtc             {"fromUTC",              vorn::eParUInt,   "start of the time range, seconds UTC"};
inline constexpr cProtocolKey kHandle              {"handle",               vorn::eParUuid,   "result handle that the service chose"};
inline constexpr cProtocolKey kIdx                 {"idx",                  vorn::eParUInt64, "number of the entry"};
inline constexpr cProtocolKey kInterfaceName       {"interface-name",       vorn::eParText,   "interface concerned"};
inline constexpr cProtocolKey kInterfaceRecord     {"interface-record",     vorn::eParRecord, "an interface's configuration"};
inline constexpr cProtocolKey kKey                 {"key",                  vorn::eParText,   "key: of a value in a store, or of a meter's encryption"};
inline constexpr cProtocolKey kManufactor          {"manufactor",           vorn::eParText,   "manufacturer code"};
inline constexpr cProtocolKey kMaxLen              {"maxlen",               vorn::eParUInt,   "most rows in the answer"};
inline constexpr cProtocolKey kMedium              {"medium",               vorn::eParText,   "medium letter"};
inline constexpr cProtocolKey kMeterConfigRecord   {"meterconfig-record",   vorn::eParRecord, "a meter's configuration"};
inline constexpr cProtocolKey kMeterDashId         {"meter-id",             vorn::eParText,   "meter identifier, in the delete request only"};
inline constexpr cProtocolKey kMeterId             {"meterID",              vorn::eParText,   "meter identifier"};
inline constexpr cProtocolKey kMeterRecord         {"meter-record",         vorn::eParRecord, "one reading of one meter"};
inline constexpr cProtocolKey kMeterRequest        {"meter-request",        vorn::eParRecord, "selection of stored data"};
inline constexpr cProtocolKey kMeterStatus         {"meter-status",         vorn::eParRecord, "status of one meter"};
inline constexpr cProtocolKey kMeterTemplateRecord {"metertemplate-record", vorn::eParRecord, "a meter template"};
inline constexpr cProtocolKey kName                {"name",                 vorn::eParText,   "name of the entry"};
inline constexpr cProtocolKey kNext                {"next",                 vorn::eParData,   "cursor for \"after\" of the next request; absent behind the last row"};
inline constexpr cProtocolKey kObisId              {"obis-id",              vorn::eParText,   "OBIS identifier of a value"};
inline constexpr cProtocolKey kOptions             {"options",              vorn::eParUInt,   "bits of the service"};
inline constexpr cProtocolKey kPushTargetRecord    {"pushtarget-record",    vorn::eParRecord, "a push target's configuration"};
inline constexpr cProtocolKey kReason              {"reason",               vorn::eParText,   "why it was refused"};
inline constexpr cProtocolKey kRejected            {"rejected",             vorn::eParUInt,   "how many of the records were bad and not stored"};
inline constexpr cProtocolKey kRemoved             {"removed",              vorn::eParText,   "what was deleted: the thing itself, and what went with it"};
inline constexpr cProtocolKey kReplace             {"replace",              vorn::eParBool,   "also delete everything that the message does not hold"};
inline constexpr cProtocolKey kRow                 {"row",                  vorn::eParRecord, "one row of the result"};
inline constexpr cProtocolKey kSql                 {"sql",                  vorn::eParText,   "SQL statement"};
inline constexpr cProtocolKey kStore               {"store",                vorn::eParText,   "name of a key/value store: a driver's name, or its own"};
inline constexpr cProtocolKey kStoreValue          {"store-value",          vorn::eParRecord, "one value of the store: texts \"key\" and \"value\""};
inline constexpr cProtocolKey kTimestamp           {"timestamp",            vorn::eParUInt,   "time to set, seconds UTC"};
inline constexpr cProtocolKey kToUtc               {"toUTC",                vorn::eParUInt,   "end of the time range, seconds UTC"};
inline constexpr cProtocolKey kValue               {"value",                vorn::eParText,   "value under the key"};
inline constexpr cProtocolKey kValve               {"valve",                vorn::eParText,   "position of the valve"};
inline constexpr cProtocolKey kVendor              {"vendor",               vorn::eParText,   "vendor of the meter"};
inline constexpr cProtocolKey kWithLoggers         {"with-loggers",         vorn::eParBool,   "deliver the loggers of the interface too"};
inline constexpr cProtocolKey kWithMeters          {"with-meters",          vorn::eParBool,   "deliver the meters of the interface too"};

// ---- message numbers; never reused

enum eMessage : unsigned int {
  eSqlExec              = 0x51000,
  eSqlResult            = 0x51001,
  eSqlFetch             = 0x51003,
  eSqlRows              = 0x51004,
  eCloseResult          = 0x51006,
  eStoreMeterRec        = 0x51009,
  eMeterRecStored       = 0x5100a,
  eStoreMeterRecFailed  = 0x5100b,
  eGetLastValues        = 0x5100c,
  eLastValues           = 0x5100d,
  eGetStoredValues      = 0x5100f,
  eStoredValues         = 0x51010,
  eFetchStoredValues    = 0x51012,
  eStoredValueRows      = 0x51013,
  eRegisterDriver       = 0x5101e,
  eDriverRegistered     = 0x5101f,
  eRegisterDriverFailed = 0x51020,
  eGetMeterStatus       = 0x51027,
  eMeterStatuses        = 0x51028,
  eStoreEvent           = 0x51038,
  eEventStored          = 0x51039,
  eStoreEventFailed     = 0x5103a,
  eSetTimeDate          = 0x51046,
  eTimeDateSet          = 0x51047,
  eSetValve             = 0x51049,
  eValveSet             = 0x5104a,
  eActivateMeter        = 0x5104c,
  eMeterActivated       = 0x5104d,
  eGetInterface         = 0x51064,
  eInterfaces           = 0x51065,
  eSetInterface         = 0x51067,
  eDeleteInterface      = 0x5106a,
  eInterfaceDeleted     = 0x5106b,
  eGetMeter             = 0x51070,
  eMeters               = 0x51071,
  eSetMeter             = 0x51073,
  eDeleteMeter          = 0x51076,
  eMeterDeleted         = 0x51077,
  eSetStoreValue        = 0x51079,
  eAttachStore          = 0x5107c,
  eStoreContents        = 0x5107d,
  eAttachStoreFailed    = 0x5107e,
  eGetPushTarget        = 0x5108e,
  ePushTargets          = 0x5108f,
  eSetPushTarget        = 0x51091,
  ePushTargetSet        = 0x51092,
  eDeletePushTarget     = 0x51094,
  eGetMeterTemplate     = 0x51190,
  eMeterTemplates       = 0x51191,
  eSetMeterTemplate     = 0x51193,
  eMeterTemplateSet     = 0x51194,
  eDeleteMeterTemplate  = 0x51196,

  // Requests of the service's own, for tools that look into it.
  eListMeters           = 0x51200,
  eMeterList            = 0x51201,
  eListMetersFailed     = 0x51202,
  eListLastValues       = 0x51203,
  eLastValueList        = 0x51204,
  eListLastValuesFailed = 0x51205,
  eListValues           = 0x51206,
  eValueList            = 0x51207,
  eListValuesFailed     = 0x51208,
  eListEvents           = 0x51209,
  eEventList            = 0x5120a,
  eListEventsFailed     = 0x5120b,
  eListStores           = 0x5120c,
  eStoreList            = 0x5120d,
  eListStoresFailed     = 0x5120e,
  eGetStatistics        = 0x5120f,
  eStatistics           = 0x51210,
  eGetStatisticsFailed  = 0x51211,

  // From the service to a driver.
  eNotifyDriver         = 0x51212,
  eDriverDone           = 0x51213,
  eDriverFailed         = 0x51214,

  // A whole configuration at once.
  eApplyConfig          = 0x51215,
};

// ---- messages

// id, name, direction, parameters, answer, refusal, meaning
inline constexpr cProtocolMessage kMessages[] = {
  {eSqlExec,              "sql-exec",                   eToService, {{kDb}, {kSql}, {kOptions}},                                              eSqlExec + 1,             eSqlExec + 2,             "execute an SQL statement"},
  {eSqlResult,             "sql-result",                 eToClient,  {{kHandle, eOptional}, {kColumn, eRepeated}, {kChanges}},                 0,                        0,                        "executed; a statement that gives rows has a handle to fetch them with"},
  {eSqlFetch,             "sql-fetch",                  eToService, {{kHandle}, {kCount}},                                                    eSqlFetch + 1,            eSqlFetch + 2,            "fetch rows of an SQL result"},
  {eSqlRows,               "sql-rows",                   eToClient,  {{kRow, eRepeated}, {kEnd}},                                              0,                        0,                        "the next rows: a parameter a column, in their order and under their names; a null is a text without a text"},
  {eCloseResult,          "close-result",               eToService, {{kHandle}},                                                              eCloseResult + 1,         eCloseResult + 2,         "release a result handle"},
  {eStoreMeterRec,        "store-meter-records",        eToService, {{kMeterRecord, eRepeated}},                                              eMeterRecStored,          eStoreMeterRecFailed,     "store readings"},
  {eMeterRecStored,       "meter-records-stored",       eToClient,  {{kDuplicates, eOptional}, {kRejected, eOptional}, {kReason, eOptional}}, 0,                        0,                        "the good records are committed; \"reason\" names meter and fault of each rejected one"},
  {eStoreMeterRecFailed,  "store-meter-records-failed", eToClient,  {{kReason}},                                                              0,                        0,                        "no record was stored"},
  {eGetLastValues,        "get-last-values",            eToService, {{kMeterRequest}},                                                        eGetLastValues + 1,       eGetLastValues + 2,       "query the last values of meters"},
  {eLastValues,            "last-values",                eToClient,  {{kRow, eRepeated}, {kHandle, eOptional}},                                0,                        0,                        "one row a meter and OBIS identifier: texts meterID, obis-id, value, unit, time-source; uint timestamp; with a handle when there are more"},
  {eGetStoredValues,      "get-stored-values",          eToService, {{kMeterRequest}},                                                        eGetStoredValues + 1,     eGetStoredValues + 2,     "query stored values"},
  {eStoredValues,          "stored-values",              eToClient,  {{kHandle}},                                                              0,                        0,                        "the result to fetch with this handle"},
  {eFetchStoredValues,    "fetch-stored-values",        eToService, {{kHandle}, {kCount}},                                                    eFetchStoredValues + 1,   eFetchStoredValues + 2,   "fetch stored values of a result handle"},
  {eStoredValueRows,       "stored-value-rows",          eToClient,  {{kRow, eRepeated}, {kEnd}},                                              0,                        0,                        "the next rows, as the mode of the request has them"},
  {eRegisterDriver,       "register-driver",            eToService, {{kDriver}},                                                              eDriverRegistered,        eRegisterDriverFailed,    "register a driver"},
  {eDriverRegistered,     "driver-registered",          eToClient,  {{kStoreValue, eRepeated}},                                               0,                        0,                        "registered; the values of the driver's store"},
  {eRegisterDriverFailed, "register-driver-failed",     eToClient,  {{kReason}},                                                              0,                        0,                        "not registered"},
  {eGetMeterStatus,       "get-meter-status",           eToService, {{kMeterRequest}},                                                        eGetMeterStatus + 1,      eGetMeterStatus + 2,      "query the status of meters"},
  {eMeterStatuses,         "meter-statuses",             eToClient,  {{kMeterStatus, eRepeated}, {kHandle, eOptional}},                        0,                        0,                        "the status of each meter; with a handle when there are more"},
  {eStoreEvent,           "store-event",                eToService, {},                                                                       eEventStored,             eStoreEventFailed,        "store an event: the whole record is the event"},
  {eEventStored,          "event-stored",               eToClient,  {},                                                                       0,                        0,                        "the event is committed"},
  {eStoreEventFailed,     "store-event-failed",         eToClient,  {{kReason}},                                                              0,                        0,                        "the event was not stored"},
  {eSetTimeDate,          "set-time-date",              eToService, {{kMeterId}, {kManufactor}, {kMedium}, {kTimestamp}},                     eSetTimeDate + 1,         eSetTimeDate + 2,         "set the clock of a meter"},
  {eTimeDateSet,           "time-date-set",              eToClient,  {{kContent, eOptional}},                                                  0,                        0,                        "the driver has done it; what it answered"},
  {eSetValve,             "set-valve",                  eToService, {{kMeterId}, {kManufactor}, {kMedium}, {kValve}},                         eSetValve + 1,            eSetValve + 2,            "set the valve of a meter"},
  {eValveSet,              "valve-set",                  eToClient,  {{kContent, eOptional}},                                                  0,                        0,                        "the driver has done it; what it answered"},
  {eActivateMeter,        "activate-meter",             eToService, {{kMeterId}, {kManufactor}, {kMedium}, {kVendor, eOptional}, {kKey, eOptional}}, eActivateMeter + 1,       eActivateMeter + 2,       "activate a meter"},
  {eMeterActivated,        "meter-activated",            eToClient,  {{kContent, eOptional}},                                                  0,                        0,                        "the driver has done it; what it answered"},
  {eGetInterface,         "get-interface",              eToService, {{kName, eOptional}, {kWithMeters}, {kWithLoggers}},                      eGetInterface + 1,        eGetInterface + 2,        "get one interface, or all without a name"},
  {eInterfaces,            "interfaces",                 eToClient,  {{kInterfaceRecord, eRepeated}},                                          0,                        0,                        "the interfaces by name; meters are nested in their interface as \"meterconfig-record\""},
  {eSetInterface,         "set-interface",              eToService, {{kInterfaceRecord}},                                                     eSetInterface + 1,        eSetInterface + 2,        "create or change an interface"},
  {eDeleteInterface,      "delete-interface",           eToService, {{kName}},                                                                eDeleteInterface + 1,     eDeleteInterface + 2,     "delete an interface"},
  {eInterfaceDeleted,      "interface-deleted",          eToClient,  {{kRemoved, eRepeated}},                                                  0,                        0,                        "what was deleted"},
  {eGetMeter,             "get-meter",                  eToService, {{kAddr, eOptional}},                                                     eGetMeter + 1,            eGetMeter + 2,            "get the configuration of one meter, or of all without an address"},
  {eMeters,                "meters",                     eToClient,  {{kMeterConfigRecord, eRepeated}},                                        0,                        0,                        "the meters by identifier"},
  {eSetMeter,             "set-meter",                  eToService, {{kMeterConfigRecord}},                                                   eSetMeter + 1,            eSetMeter + 2,            "create or change a meter's configuration"},
  {eDeleteMeter,          "delete-meter",               eToService, {{kMeterDashId, eOptional}, {kMedium, eOptional}, {kManufactor, eOptional}}, eDeleteMeter + 1,         eDeleteMeter + 2,         "delete a meter's configuration"},
  {eMeterDeleted,          "meter-deleted",              eToClient,  {{kRemoved, eRepeated}},                                                  0,                        0,                        "what was deleted"},
  {eSetStoreValue,        "set-store-value",            eToService, {{kStore}, {kKey}, {kValue}},                                             eSetStoreValue + 1,       eSetStoreValue + 2,       "set one value of a store"},
  {eAttachStore,          "attach-store",               eToService, {{kStore}},                                                               eStoreContents,           eAttachStoreFailed,       "attach to a named store, for clients that are no driver"},
  {eStoreContents,        "store-contents",             eToClient,  {{kStoreValue, eRepeated}},                                               0,                        0,                        "the values of the attached store"},
  {eAttachStoreFailed,    "attach-store-failed",        eToClient,  {{kReason}},                                                              0,                        0,                        "not attached"},
  {eGetPushTarget,        "get-push-target",            eToService, {{kName, eOptional}},                                                     eGetPushTarget + 1,       eGetPushTarget + 2,       "get one push target, or all without a name"},
  {ePushTargets,           "push-targets",               eToClient,  {{kPushTargetRecord, eRepeated}},                                         0,                        0,                        "the push targets by number"},
  {eSetPushTarget,        "set-push-target",            eToService, {{kPushTargetRecord, eOptional}},                                         eSetPushTarget + 1,       eSetPushTarget + 2,       "create or change a push target; its client omits the record of an invalid one"},
  {ePushTargetSet,         "push-target-set",            eToClient,  {{kIdx}},                                                                 0,                        0,                        "its number"},
  {eDeletePushTarget,     "delete-push-target",         eToService, {{kIdx}, {kName}},                                                        eDeletePushTarget + 1,    eDeletePushTarget + 2,    "delete a push target"},
  {eGetMeterTemplate,     "get-meter-template",         eToService, {{kName, eOptional}},                                                     eGetMeterTemplate + 1,    eGetMeterTemplate + 2,    "get one meter template, or all without a name"},
  {eMeterTemplates,        "meter-templates",            eToClient,  {{kIdx, eRepeated}, {kMeterTemplateRecord, eRepeated}},                   0,                        0,                        "the templates by number: numbers and records in the same order"},
  {eSetMeterTemplate,     "set-meter-template",         eToService, {{kMeterTemplateRecord}},                                                 eSetMeterTemplate + 1,    eSetMeterTemplate + 2,    "create or change a meter template"},
  {eMeterTemplateSet,      "meter-template-set",         eToClient,  {{kIdx}},                                                                 0,                        0,                        "its number"},
  {eDeleteMeterTemplate,  "delete-meter-template",      eToService, {{kIdx}, {kName}},                                                        eDeleteMeterTemplate + 1, eDeleteMeterTemplate + 2, "delete a meter template"},
  {eListMeters,           "list-meters",                eToService, {{kMaxLen, eOptional}, {kAfter, eOptional}},                              eMeterList,               eListMetersFailed,        "list the known meters"},
  {eMeterList,            "meter-list",                 eToClient,  {{kRow, eRepeated}, {kNext, eOptional}},                                  0,                        0,                        "one row a meter: texts meterID, addr, manufactor, medium, driver, interface-name; uint first-timestamp and timestamp of its readings; uint64 values, their number"},
  {eListMetersFailed,     "list-meters-failed",         eToClient,  {{kReason}},                                                              0,                        0,                        "the request was refused"},
  {eListLastValues,       "list-last-values",           eToService, {{kMeterId, eOptional}, {kMaxLen, eOptional}, {kAfter, eOptional}},       eLastValueList,           eListLastValuesFailed,    "list the last values of one meter, or of all"},
  {eLastValueList,        "last-value-list",            eToClient,  {{kRow, eRepeated}, {kNext, eOptional}},                                  0,                        0,                        "one row a meter and OBIS identifier: texts meterID, obis-id, value, unit, time-source; uint timestamp"},
  {eListLastValuesFailed, "list-last-values-failed",    eToClient,  {{kReason}},                                                              0,                        0,                        "the request was refused"},
  {eListValues,           "list-values",                eToService, {{kMeterId}, {kObisId, eOptional}, {kFromUtc, eOptional}, {kToUtc, eOptional}, {kMaxLen, eOptional}, {kAfter, eOptional}}, eValueList,               eListValuesFailed,        "list stored values of one meter"},
  {eValueList,            "value-list",                 eToClient,  {{kRow, eRepeated}, {kNext, eOptional}},                                  0,                        0,                        "one row a value, ascending in time: texts obis-id, value, unit, time-source; uint timestamp; data signature where there is one"},
  {eListValuesFailed,     "list-values-failed",         eToClient,  {{kReason}},                                                              0,                        0,                        "the request was refused"},
  {eListEvents,           "list-events",                eToService, {{kFromUtc, eOptional}, {kToUtc, eOptional}, {kMaxLen, eOptional}, {kAfter, eOptional}}, eEventList,               eListEventsFailed,        "list stored events"},
  {eEventList,            "event-list",                 eToClient,  {{kRow, eRepeated}, {kNext, eOptional}},                                  0,                        0,                        "one row an event, ascending in time: uint timestamp; record event"},
  {eListEventsFailed,     "list-events-failed",         eToClient,  {{kReason}},                                                              0,                        0,                        "the request was refused"},
  {eListStores,           "list-stores",                eToService, {{kStore, eOptional}, {kMaxLen, eOptional}, {kAfter, eOptional}},         eStoreList,               eListStoresFailed,        "list the values of one store, or the names of all"},
  {eStoreList,            "store-list",                 eToClient,  {{kRow, eRepeated}, {kNext, eOptional}},                                  0,                        0,                        "one row a value: texts store, key, value; without \"store\" in the request one row a name: text store"},
  {eListStoresFailed,     "list-stores-failed",         eToClient,  {{kReason}},                                                              0,                        0,                        "the request was refused"},
  {eGetStatistics,        "get-statistics",             eToService, {},                                                                       eStatistics,              eGetStatisticsFailed,     "get the counters of the service"},
  {eStatistics,           "statistics",                 eToClient,  {{kRow, eRepeated}, {kNext, eOptional}},                                  0,                        0,                        "one row a counter: text name; uint64 value"},
  {eGetStatisticsFailed,  "get-statistics-failed",      eToClient,  {{kReason}},                                                              0,                        0,                        "the request was refused"},
  {eNotifyDriver,          "notify-driver",              eToClient,  {{kInterfaceName, eOptional}, {kCommand}, {kContent, eOptional}},         eDriverDone,              eDriverFailed,            "a driver is to do something, or its configuration has changed; docs/protocol/notifications.md tells the commands"},
  {eDriverDone,            "driver-done",                eToService, {{kContent, eOptional}},                                                  0,                        0,                        "the driver has done it"},
  {eDriverFailed,          "driver-failed",              eToService, {{kReason}},                                                              0,                        0,                        "the driver could not do it"},
  {eApplyConfig,           "apply-config",               eToService, {{kInterfaceRecord, eRepeated}, {kMeterConfigRecord, eRepeated}, {kPushTargetRecord, eRepeated}, {kIdx, eRepeated}, {kMeterTemplateRecord, eRepeated}, {kReplace}}, eApplyConfig + 1,         eApplyConfig + 2,         "take a whole configuration in one transaction, or none of it; the numbers are those of the templates, in the same order, or none"},
};
// clang-format on

inline constexpr cProtocol kProtocol("data", kMessages);

static_assert(kProtocol.HasAscendingIds());
static_assert(kProtocol.HasNoEmptyText());
static_assert(kProtocol.AnswersGoBack());

}  // namespace tav::db_ctrl
