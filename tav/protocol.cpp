// SPDX-License-Identifier: Apache-2.0
#include <tav/protocol.h>

#include <iterator>

#include <tav/framework/helper.h>

namespace tav {

namespace {

constexpr std::string_view kTypeNames[] = {"none", "text",   "int",  "uint", "uint64",
                                           "bool", "record", "time", "uuid", "data"};
static_assert(std::size(kTypeNames) == vorn::eParData + 1);

std::string Quoted(std::string_view name) { return "parameter \"" + std::string(name) + "\""; }

std::string WrongType(const cProtocolKey& key, unsigned int found) {
  return Quoted(key) + ": expected type " + std::string(ParTypeName(key.type)) + ", found " +
         std::string(ParTypeName(found));
}

}  // namespace

std::string_view ParTypeName(unsigned int type) {
  return type < std::size(kTypeNames) ? kTypeNames[type] : kTypeNames[vorn::eParNone];
}

std::string MessageName(const cProtocol& protocol, unsigned int id) {
  if (const cProtocolMessage* message = protocol.Find(id)) return std::string(message->name);
  for (const cProtocolMessage& message : protocol) {
    if (id != 0 && message.answer == id) return std::string(message.name) + "-done";
    if (id != 0 && message.refusal == id) return std::string(message.name) + "-failed";
  }
  return vorn::FormatString("0x%x", id);
}

bool CheckParameters(const cProtocolMessage& message, const vorn::cRecord& record, std::string& error) {
  for (std::size_t i = 0; i < message.CountParameters(); ++i) {
    const auto& [key, use] = message.parameters[i];
    vorn::cRecordPar found = record.GetPar(key);
    if (!found.IsValid() && use == eRequired) {
      error = Quoted(key) + " is missing, expected type " + std::string(ParTypeName(key.type));
      return false;
    }
    for (; found.IsValid(); found = use == eRepeated ? found.NextSame() : vorn::cRecordPar()) {
      if (found.GetType() == key.type) continue;
      error = WrongType(key, found.GetType());
      return false;
    }
  }
  return true;
}

}  // namespace tav
