// SPDX-License-Identifier: Apache-2.0
// The columns of a value of a meter, as last, values and watch show them.
#pragma once

#include <gateway/form/columns.h>
#include <tav/service/db_ctrl_protocol.h>

namespace tav::form {

inline constexpr cColumn kLastValueColumns[] = {
    {db_ctrl::kMeterId, "METER"},
    {db_ctrl::kObisId, "OBIS"},
    {db_ctrl::kValue, "VALUE", eForm::Number},
    {"unit", "", eForm::Unit},
    {db_ctrl::kTimestamp, "TIME", eForm::Time},
    {"time-source", "TIME FROM"},
    {"signature", "SIGNATURE", eForm::Data},
};

inline constexpr cColumn kStoredValueColumns[] = {
    {db_ctrl::kTimestamp, "TIME", eForm::Time}, {"time-source", "TIME FROM"}, {db_ctrl::kObisId, "OBIS"},
    {db_ctrl::kValue, "VALUE", eForm::Number},  {"unit", "", eForm::Unit},    {"signature", "SIGNATURE", eForm::Data},
};

// Of what a collector has logged: at which time of its raster, and the value's own time.
inline constexpr cColumn kProfileColumns[] = {
    {db_ctrl::kTimestamp, "PERIOD", eForm::Time}, {db_ctrl::kObisId, "OBIS"},
    {db_ctrl::kValue, "VALUE", eForm::Number},    {"unit", "", eForm::Unit},
    {"value-timestamp", "TIME", eForm::Time},     {"time-source", "TIME FROM"},
};

// As files to take away and as programs get them: values of several meters, as stored or as logged.
inline constexpr cColumn kExportColumns[] = {
    {db_ctrl::kMeterId, "METER"}, {db_ctrl::kTimestamp, "TIME", eForm::Time}, {"time-source", "TIME FROM"},
    {db_ctrl::kObisId, "OBIS"},   {db_ctrl::kValue, "VALUE", eForm::Number},  {"unit", "", eForm::Unit},
};

}  // namespace tav::form
