// SPDX-License-Identifier: Apache-2.0
#include <tavctl/config/thing_command.h>

#include <CLI/CLI.hpp>

#include <gateway/form/toml_text.h>
#include <tavctl/failure.h>
#include <tavctl/json_rows.h>
#include <tavctl/options.h>

namespace tav::ctl {

void cThingCommand::AddOptions(CLI::App& app) {
  m_app = &app;
  AddAction(app, "list", "List all of them");
  CLI::App& show = AddAction(app, "show", "Show one with all its fields, as they stand in an exported configuration");
  AddArgument(show, m_nameWord, m_name, "Which one", eNeed::Required);
  AddFlag(show, "--secrets", m_secrets, "Show keys and passwords too");
  CLI::App& set = AddAction(app, "set", "Make one or change it; fields that are not named stay as they are");
  AddArgument(set, m_nameWord, m_name, "Which one", eNeed::Required);
  AddArguments(set, "FIELD=VALUE", m_fields, "What to set; VALUE may be @FILE, or @- for standard input",
               eNeed::Optional);
  set.footer(m_fieldHelp);
  CLI::App& remove = AddAction(app, "delete", "Delete one");
  AddArgument(remove, m_nameWord, m_name, "Which one", eNeed::Required);
}

eExit cThingCommand::Run(cContext& context) {
  const std::string action = ChosenAction(*m_app);
  std::vector<cAssignment> fields;  // what is wrong with them needs no gateway
  for (const std::string& word : m_fields) fields.push_back(ReadAssignment(word, context.streams.in));
  cGatewayConfig config(context);
  if (action == "list") return List(context, config);
  if (action == "show") return Show(context, config);
  if (action == "set")
    Set(config, m_name, fields);
  else if (action == "delete")
    for (const std::string& removed : Delete(config, m_name)) context.Note("deleted: " + removed);
  else
    RunOther(context, config, action);
  return eExitDone;
}

eExit cThingCommand::List(cContext& context, cGatewayConfig& config) {
  const std::vector<form::cJson> things = Find(config, {}, form::eSecrets::Leave);
  if (context.json) {
    cJsonRows rows(context.streams.out, GetColumns());
    for (const form::cJson& thing : things) rows.Write(thing);
    rows.End();
    return eExitDone;
  }
  const auto rows = context.Rows(GetColumns());
  for (const form::cJson& thing : things) rows->Write(form::RowOf(thing));
  rows->End();
  if (things.empty()) context.Note(std::string("there is no ") + GetName() + " yet");
  return eExitDone;
}

eExit cThingCommand::Show(cContext& context, cGatewayConfig& config) {
  const std::vector<form::cJson> things = Find(config, m_name, GetSecrets());
  if (things.empty()) RefuseUnknown(m_name);
  for (const form::cJson& thing : things)
    context.streams.out << (context.json ? form::ToLine(thing) + "\n"
                                         : form::ToToml(thing) + (things.size() > 1 ? "\n" : ""));
  return eExitDone;
}

void cThingCommand::RefuseUnknown(const std::string& name) const {
  throw cFailure(eExitNegative,
                 std::string("there is no ") + GetName() + " '" + name + "'; see tavctl " + GetName() + " list");
}

}  // namespace tav::ctl
