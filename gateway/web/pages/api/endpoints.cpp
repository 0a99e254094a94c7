// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/api/endpoints.h>

#include <gateway/form/rule_rows.h>
#include <gateway/form/value_columns.h>
#include <tav/service/status_protocol.h>

namespace tav::pages {

namespace {

using form::cColumn;
using form::eForm;

constexpr cColumn kMeterColumns[] = {
    {db_ctrl::kMeterId, "METER"},
    {db_ctrl::kMedium, "MEDIUM"},
    {db_ctrl::kManufactor, "MAKER"},
    {db_ctrl::kAddr, "ADDRESS"},
    {db_ctrl::kDriver, "DRIVER"},
    {"interface-name", "INTERFACE"},
    {"values", "VALUES", eForm::Number},
    {"first-timestamp", "FIRST", eForm::Time},
    {db_ctrl::kTimestamp, "LAST", eForm::Time},
};

constexpr cColumn kStatusColumns[] = {
    {status::kName, "NAME"},
    {status::kValue, "VALUE"},
    {status::kProcess, "FROM"},
    {status::kConnected, "CONNECTED"},
    {status::kChanged, "CHANGED", eForm::Time},
};

// clang-format off
constexpr cApiParameter kMeterParameter[] = {
    {"meter", false, "only this meter"},
};
constexpr cApiParameter kValuesParameters[] = {
    {"meter",   true,  "identifier of the meter"},
    {"obis",    false, "only this OBIS identifier"},
    {"profile", false, "what a collector has logged: its address, or an event that one of them has, such as 15min"},
    {"from",    false, "begin of the range, a time such as 2024-03-01T12:00:00Z, 1709294400, -24h or today"},
    {"to",      false, "end of the range, likewise"},
};
constexpr cApiParameter kStatusParameters[] = {
    {"prefix", false, "only values whose name begins so"},
};
// clang-format on

}  // namespace

const cEndpoint kMetersEndpoint{"/api/meters", "The meters that have been read", {}, kMeterColumns};
const cEndpoint kLastValuesEndpoint{"/api/last-values", "The last value of each meter and OBIS identifier",
                                    kMeterParameter, form::kExportColumns};
const cEndpoint kValuesEndpoint{"/api/values", "Stored values of a meter, ascending in time", kValuesParameters,
                                form::kExportColumns};
const cEndpoint kStatusEndpoint{"/api/status", "What the processes of the gateway tell about themselves",
                                kStatusParameters, kStatusColumns};
const cEndpoint kRulesEndpoint{
    "/api/rules", "The rules that give values their OBIS identifiers", {}, form::kRuleColumns};

std::span<const cEndpoint* const> GetEndpoints() {
  static constexpr const cEndpoint* kAll[] = {&kMetersEndpoint, &kLastValuesEndpoint, &kValuesEndpoint,
                                              &kStatusEndpoint, &kRulesEndpoint};
  return kAll;
}

}  // namespace tav::pages
