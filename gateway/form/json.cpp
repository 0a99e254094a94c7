// SPDX-License-Identifier: Apache-2.0
#include <gateway/form/json.h>

#include <nlohmann/json.hpp>

namespace tav::form {

namespace {

// Behind the library's name and number of the fault.
std::string FaultText(const cJson::exception& fault) {
  const std::string text = fault.what();
  const std::size_t what = text.find("] ");
  return what == std::string::npos ? text : text.substr(what + 2);
}

}  // namespace

std::string ToLine(const cJson& json) { return json.dump(-1, ' ', false, cJson::error_handler_t::replace); }

bool ParseJson(const std::string& text, cJson& json, std::string& error) {
  bool tooDeep = false;
  const auto keep = [&](int depth, cJson::parse_event_t event, const cJson& /*parsed*/) {
    const bool begins = event == cJson::parse_event_t::object_start || event == cJson::parse_event_t::array_start;
    tooDeep = tooDeep || (begins && depth >= kMaxJsonDepth);
    return !tooDeep;
  };
  try {
    cJson read = cJson::parse(text, keep);
    if (!tooDeep) {
      json = std::move(read);
      return true;
    }
    error = "nested deeper than " + std::to_string(kMaxJsonDepth);
  } catch (const cJson::exception& fault) {
    error = FaultText(fault);
  }
  return false;
}

}  // namespace tav::form
