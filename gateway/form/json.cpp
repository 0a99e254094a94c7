// SPDX-License-Identifier: Apache-2.0
#include <gateway/form/json.h>

#include <nlohmann/json.hpp>

namespace tav::form {

std::string ToLine(const cJson& json) { return json.dump(-1, ' ', false, cJson::error_handler_t::replace); }

bool ParseJson(const std::string& text, cJson& json, std::string& error) {
  try {
    json = cJson::parse(text);
    return true;
  } catch (const cJson::parse_error& fault) {
    error = fault.what();
    const std::size_t what = error.find("] ");  // behind the library's number
    if (what != std::string::npos) error.erase(0, what + 2);
    return false;
  }
}

}  // namespace tav::form
