// SPDX-License-Identifier: Apache-2.0
// JSON as it is written and read here: members keep their order, and what comes from outside is refused with a reason.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace tav::form {

using cJson = nlohmann::ordered_json;

// Objects and arrays within each other that a text may have: more than any form here needs.
inline constexpr int kMaxJsonDepth = 32;

// One line, whatever bytes its texts hold.
std::string ToLine(const cJson& json);

// False, json left alone and in error where and what, for a text that is no JSON or nested too deep.
bool ParseJson(const std::string& text, cJson& json, std::string& error);

}  // namespace tav::form
