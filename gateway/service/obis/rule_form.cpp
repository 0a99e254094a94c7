// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/obis/rule_form.h>

#include <tav/obis/obis_protocol.h>

namespace tav::gateway {

namespace {

std::string TextFault(const vorn::cRecord& form, const char* name, std::size_t maxBytes) {
  const vorn::cRecordPar text = form.GetPar(name);
  const std::string field = std::string("rule: \"") + name + "\" ";
  if (!text.IsValid()) return field + "is missing";
  if (!text.IsText()) return field + "is no text";
  if (text.IsEmpty()) return field + "is empty";
  const std::size_t size = text.GetBytesView().size();
  if (size > maxBytes) return field + "has " + std::to_string(size) + " bytes, at most " + std::to_string(maxBytes);
  return {};
}

bool IsWhole(const vorn::cRecordPar& number) {
  return number.IsUInt64() || number.IsUInt() || (number.IsInt() && number.GetInt() >= 0);
}

}  // namespace

std::string ReadRule(const vorn::cRecord& form, std::size_t maxTextBytes, cObisMapEntry& rule) {
  if (!IsWhole(form.GetPar("ID"))) return "rule: \"ID\" is missing or no whole number";
  for (const char* name : {"name", "obis", "map"})
    if (std::string fault = TextFault(form, name, maxTextBytes); !fault.empty()) return fault;
  if (rule.FromRecord(form)) return {};
  return "rule " + form.GetPar("ID").GetText() + " for '" + form.GetTextPar("obis") + "' by '" +
         form.GetTextPar("map") + "': " + rule.GetError();
}

std::string ReadRules(const vorn::cRecord& form, std::size_t maxTextBytes, cObisMap& rules) {
  std::size_t place = 0;
  for (vorn::cRecordPar par = form.GetPar(obis::kEntry); par.IsValid(); par = par.NextSame()) {
    const std::string at = "rule number " + std::to_string(++place) + ": ";
    vorn::cRecord one;
    if (!par.GetRecord(one)) return at + "is no record";
    cObisMapEntry rule;
    if (const std::string fault = ReadRule(one, maxTextBytes, rule); !fault.empty()) return at + fault;
    if (!rules.Add(rule)) return at + "the ID " + std::to_string(rule.GetID()) + " is there twice";
  }
  return {};
}

}  // namespace tav::gateway
