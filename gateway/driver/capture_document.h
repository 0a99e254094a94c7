// SPDX-License-Identifier: Apache-2.0
// What the documents that explain captures to programs have in common.
#pragma once

#include <optional>
#include <string>

#include <nlohmann/json.hpp>

#include <gateway/driver/capture_explain.h>

namespace tav {

using cCaptureJson = nlohmann::ordered_json;

inline cCaptureJson RuleOrNull(const std::optional<cObisNaming::cRule>& rule) {
  if (!rule) return nullptr;
  return {{"id", rule->id}, {"name", rule->name}, {"obis", rule->obis}};
}

// One line. Names of rules may be no UTF-8.
inline std::string DumpLine(const cCaptureJson& json) {
  return json.dump(-1, ' ', false, cCaptureJson::error_handler_t::replace);
}

}  // namespace tav
