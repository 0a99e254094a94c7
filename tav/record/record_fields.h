// SPDX-License-Identifier: Apache-2.0
// Writing and reading fields of a record without needless copies. Internal to the record classes.
#pragma once

#include <string>
#include <string_view>

#include <tav/framework/record.h>

namespace tav {

inline void AppendUnlessEmpty(vorn::cRecord& to, std::string_view name, const std::string& text) {
  if (!text.empty()) to.AppendTextPar(name, text);
}

// The text form of a parameter of any type; empty when it is missing. Keeps the room the text has.
inline void ReadText(std::string& to, const vorn::cRecordPar& par) {
  if (par.IsText() || !par.IsValid())
    to.assign(par.GetBytesView());
  else
    to = par.GetText();
}

// Only a text is taken; empty for any other type.
inline void ReadOnlyText(std::string& to, const vorn::cRecordPar& par) {
  to.assign(par.IsText() ? par.GetBytesView() : std::string_view());
}

// Whether a parameter is there with a value of a type.
inline bool IsFilled(const vorn::cRecordPar& par, vorn::eParType type) {
  return par.GetType() == type && !par.IsEmpty();
}

// Takes a text that is there and not empty. False when there is none; then what was is left alone.
inline bool TakeText(const vorn::cRecord& rec, std::string_view name, std::string& to) {
  const vorn::cRecordPar par = rec.GetPar(name);
  if (!IsFilled(par, vorn::eParText)) return false;
  to = par.GetText();
  return true;
}

// What is wrong with a parameter that has to be there with a value of a type; empty when nothing is.
inline std::string ParFault(const vorn::cRecordPar& par, vorn::eParType type, const char* name) {
  if (!par.IsValid()) return std::string(name) + " invalid";
  if (par.IsEmpty()) return std::string(name) + " is empty";
  return par.GetType() == type ? std::string() : std::string("bad type in ") + name;
}

}  // namespace tav
