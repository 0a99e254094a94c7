// SPDX-License-Identifier: Apache-2.0
// A record's parameters as texts in their order, to compare a whole record form at a glance.
#pragma once

#include <string>
#include <vector>

#include <tav/framework/record.h>

// "name type=value"; a nested record is "name record={its parameters}", a text without text "name text".
inline std::vector<std::string> Parameters(const vorn::cRecord& record) {
  constexpr const char* kTypes[] = {"none", "text", "int", "uint", "uint64", "bool", "record", "time", "uuid", "data"};
  std::vector<std::string> all;
  for (vorn::cRecordPar par = record.First(); par.IsValid(); par = par.Next()) {
    std::string text = par.GetName() + " " + kTypes[par.GetType()];
    vorn::cRecord nested;
    if (par.GetRecord(nested)) {
      text += "={";
      for (const std::string& inner : Parameters(nested)) text += (text.back() == '{' ? "" : ", ") + inner;
      text += "}";
    } else if (!par.IsText() || par.HasText()) {
      text += "=" + par.GetText();
    }
    all.push_back(text);
  }
  return all;
}
