// SPDX-License-Identifier: Apache-2.0
// Records of any form as JSON for programs.
//
// A record is an object; of a name that repeats the value is an array of its values. Numbers and booleans are such,
// times ISO 8601, uuids canonical, data hexadecimal digits, a text without text null.
#pragma once

#include <string_view>

#include <gateway/form/json.h>
#include <tav/framework/record.h>

namespace tav::form {

// Secrets: the values of parameters that hold some are kMasked in place of what they are.
enum class eMask { Nothing, Secrets };

inline constexpr const char* kMasked = "***";

// Whether parameters of that name hold secrets: "key", "password", "MobilePin", ...
bool IsSecret(std::string_view name);

cJson ToJson(const vorn::cRecord& record, eMask mask = eMask::Nothing);
// Of one value; null for an invalid parameter.
cJson ToJson(const vorn::cRecordPar& parameter, eMask mask = eMask::Nothing);

}  // namespace tav::form
