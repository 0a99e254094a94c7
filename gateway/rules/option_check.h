// SPDX-License-Identifier: Apache-2.0
// What is wrong with the mapping text of one rule; a part of rule_check.h.
#pragma once

#include <functional>
#include <string>

#include <gateway/rules/rule_check.h>

namespace tav::rules {

using Report = std::function<void(eLevel level, eFinding kind, const std::string& text)>;

void CheckMapping(const std::string& map, const Report& report);

}  // namespace tav::rules
