// SPDX-License-Identifier: Apache-2.0
#include <tavctl/protocol_page.h>

#include <map>

#include <tav/framework/helper.h>

namespace tav::ctl {

namespace {

std::string Number(unsigned int id) { return id != 0 ? vorn::FormatString("0x%05x", id) : std::string("-"); }

const char* UseMark(eParUse use) {
  switch (use) {
    case eOptional:
      return "?";
    case eRepeated:
      return "*";
    default:
      return "";
  }
}

std::string Parameters(const cProtocolMessage& message) {
  std::string text;
  for (std::size_t i = 0; i < message.CountParameters(); ++i) {
    if (i != 0) text += ", ";
    text += "`" + std::string(message.parameters[i].key.name) + "`" + UseMark(message.parameters[i].use);
  }
  return text;
}

std::string MessageRow(const cProtocolMessage& message) {
  return "| " + Number(message.id) + " | " + std::string(message.name) + " | " +
         (message.direction == eToService ? "to the service" : "to the client") + " | " + Parameters(message) + " | " +
         Number(message.answer) + " | " + Number(message.refusal) + " | " + std::string(message.meaning) + " |\n";
}

std::string KeyRows(const cProtocol& protocol) {
  std::map<std::string, const cProtocolKey*> keys;
  for (const cProtocolMessage& message : protocol)
    for (std::size_t i = 0; i < message.CountParameters(); ++i)
      keys[std::string(message.parameters[i].key.name)] = &message.parameters[i].key;
  std::string text;
  for (const auto& [name, key] : keys)
    text += "| `" + name + "` | " + std::string(ParTypeName(key->type)) + " | " + std::string(key->meaning) + " |\n";
  return text;
}

}  // namespace

std::string ProtocolPage(const cProtocol& protocol) {
  const std::string service(protocol.GetService());
  std::string text = "# The protocol of the channel \"" + service + "\"\n\n";
  text += "Printed from the protocol's table by `tavctl protocol " + service +
          "`; do not edit. How messages travel is told in\n";
  text +=
      "[the wire format](../wire-format.md). An answer bears its request's identifier; a refusal has the text "
      "`reason`.\n\n";
  text += "## Messages\n\nParameters in their order; `?` may be absent, `*` any number of them.\n\n";
  text += "| number | name | direction | parameters | answer | refusal | meaning |\n|---|---|---|---|---|---|---|\n";
  for (const cProtocolMessage& message : protocol) text += MessageRow(message);
  text += "\n## Parameters\n\n| name | type | meaning |\n|---|---|---|\n";
  return text + KeyRows(protocol);
}

}  // namespace tav::ctl
