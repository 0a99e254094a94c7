// SPDX-License-Identifier: Apache-2.0
#include <tavctl/obis/obis_command.h>

#include <CLI/CLI.hpp>
#include <charconv>
#include <sstream>

#include <gateway/form/rule_rows.h>
#include <gateway/form/toml_text.h>
#include <gateway/form/utf8.h>
#include <gateway/rules/default_rules.h>
#include <gateway/rules/rule_check.h>
#include <gateway/rules/rule_difference.h>
#include <gateway/rules/rules_text.h>
#include <tavctl/failure.h>
#include <tavctl/input_file.h>
#include <tavctl/json_rows.h>
#include <tavctl/obis/rule_document.h>
#include <tavctl/obis/rule_service.h>
#include <tavctl/options.h>
#include <tavctl/terminal_text.h>

namespace tav::ctl {

namespace {

using cId = unsigned long long;

constexpr const char* kComment = "OBIS mapping rules of a gateway; import with: tavctl obis import FILE";

cId ReadId(const std::string& text) {
  cId id = 0;
  const char* const end = text.data() + text.size();
  const auto [last, fault] = std::from_chars(text.data(), end, id);
  if (!text.empty() && fault == std::errc() && last == end) return id;
  throw cFailure(eExitUsage, "obis: RULE: expected a whole number from 0 on, found \"" + ForTerminal(text) + "\"");
}

const cObisMapEntry& Find(const cObisMap& map, const std::string& idText) {
  const auto found = map.GetEntries().find(ReadId(idText));
  if (found != map.GetEntries().end()) return found->second;
  throw cFailure(eExitNegative, "there is no rule " + idText + "; see tavctl obis list");
}

cId FreeId(const cObisMap& map) {
  if (const auto id = rules::FreeRuleId(map)) return *id;
  const std::string largest = std::to_string(map.GetEntries().rbegin()->first);
  throw cFailure(eExitUsage, "obis set: there is no ID above " + largest + "; give one");
}

bool Holds(const cObisMapEntry& rule, const std::string& text) {
  return (std::to_string(rule.GetID()) + "\n" + rule.GetObisID() + "\n" + rule.GetName() + "\n" + rule.GetMap())
             .find(text) != std::string::npos;
}

std::string Counted(std::size_t count) { return std::to_string(count) + " rule(s)"; }

}  // namespace

void cObisCommand::AddOptions(CLI::App& app) {
  m_app = &app;
  CLI::App& list = AddAction(app, "list", "List the rules");
  AddText(list, "--filter", m_filter, "Only rules with this text in their ID, identifier, name or mapping");
  CLI::App& show = AddAction(app, "show", "Show one rule");
  AddArgument(show, "RULE", m_id, "Its ID", eNeed::Required);
  CLI::App& set = AddAction(app, "set", "Make a rule or change it; what is not named stays as it is");
  AddArgument(set, "RULE", m_id, "Its ID; without it a new one behind all others", eNeed::Optional);
  AddText(set, "--obis", m_obis, "The identifier that a value gets, such as 1-0:1.8.0");
  AddText(set, "--name", m_name, "The name that is shown for it");
  AddText(set, "--map", m_map, "Which values, such as protocol=dlms or protocol=mbus,medium=W,dif=0C,vif=13");
  CLI::App& remove = AddAction(app, "delete", "Delete rules");
  AddArguments(remove, "RULE", m_ids, "Their IDs", eNeed::Required);
  CLI::App& check = AddAction(app, "check", "Say what is wrong with the rules");
  AddArgument(check, "FILE", m_file, "Those of a TOML file in place of the gateway's; - is standard input",
              eNeed::Optional);
  CLI::App& in = AddAction(app, "import", "Take rules, all of them or none");
  AddArgument(in, "FILE", m_file, "TOML, as export writes it; - is standard input", eNeed::Optional);
  AddFlag(in, "--defaults", m_defaults, "The shipped rules in place of a file");
  AddFlag(in, "--replace", m_replace, "Delete the rules that the file does not have");
  AddFlag(in, "--dry-run", m_dryRun, "Change nothing, and say what would be changed");
  CLI::App& out = AddAction(app, "export", "Write the rules as TOML, or with --json as JSON");
  AddArgument(out, "FILE", m_file, "Where to; standard output when there is none, or -", eNeed::Optional);
}

eExit cObisCommand::Run(cContext& context) {
  const std::string action = ChosenAction(*m_app);
  if (action == "list") return List(context);
  if (action == "show") return Show(context);
  if (action == "set") return Set(context);
  if (action == "delete") return Delete(context);
  if (action == "check") return Check(context);
  return action == "import" ? Import(context) : Export(context);
}

bool cObisCommand::IsGiven(const char* option) const { return m_app->get_subcommands().front()->count(option) != 0; }

// ---- one by one

eExit cObisCommand::List(cContext& context) const {
  const cObisMap map = cRuleService(context).GetMap();
  const auto rows = context.Rows(form::kRuleColumns);
  for (const auto& [id, rule] : map.GetEntries())
    if (Holds(rule, m_filter)) rows->Write(rule.ToRecord());
  rows->End();
  if (map.GetEntries().empty()) context.Note("there is no rule yet; the shipped ones: tavctl obis import --defaults");
  return eExitDone;
}

eExit cObisCommand::Show(cContext& context) const {
  const cObisMap map = cRuleService(context).GetMap();
  const cObisMapEntry& rule = Find(map, m_id);
  form::cJson json;
  json[context.json ? "ID" : "id"] = rule.GetID();
  json["name"] = form::ToUtf8(rule.GetName());
  json["obis"] = form::ToUtf8(rule.GetObisID());
  json["map"] = form::ToUtf8(rule.GetMap());
  context.streams.out << (context.json ? form::ToLine(json) + "\n" : form::ToToml(json));
  return eExitDone;
}

// The rule that "set" makes of the one there is.
cObisMapEntry cObisCommand::ChangedRule(const cObisMap& map) const {
  const cId id = IsGiven("RULE") ? ReadId(m_id) : FreeId(map);
  cObisMapEntry present;
  map.GetEntries().Get(id, present);
  const auto choose = [&](const char* option, const std::string& given, const std::string& kept) {
    if (IsGiven(option)) return given;
    if (!map.GetEntries().Contains(id))
      throw cFailure(eExitUsage, "obis set: rule " + std::to_string(id) + " is new: " + option + " is missing");
    return kept;
  };
  const std::string obis = choose("--obis", m_obis, present.GetObisID());
  const std::string name = choose("--name", m_name, present.GetName());
  const std::string mapping = choose("--map", m_map, present.GetMap());
  cObisMapEntry rule;
  const auto findings = rules::Check({{id, name, obis, mapping, {}}});
  for (const rules::cFinding& finding : findings)
    if (finding.level == rules::eLevel::Error)
      throw cFailure(eExitNegative, "rule " + std::to_string(id) + ": " + ForTerminal(finding.text));
  rule.Set(id, name, obis, mapping);
  return rule;
}

eExit cObisCommand::Set(cContext& context) const {
  cRuleService service(context);
  cObisMap map = service.GetMap();
  const cObisMapEntry rule = ChangedRule(map);
  service.Set(rule);
  context.Note("set rule " + std::to_string(rule.GetID()) + ": " + ForTerminal(rule.ToString()));
  map.Set(rule);
  for (const rules::cFinding& finding : rules::Check(map))
    if (finding.id == rule.GetID() || finding.other == rule.GetID()) NoteFindings({finding}, context);
  return eExitDone;
}

eExit cObisCommand::Delete(cContext& context) const {
  cRuleService service(context);
  const cObisMap map = service.GetMap();
  std::vector<cObisMapEntry> rules;
  for (const std::string& id : m_ids) rules.push_back(Find(map, id));
  for (const cObisMapEntry& rule : rules) {
    service.Remove(rule);
    context.Note("deleted rule " + std::to_string(rule.GetID()) + ": " + ForTerminal(rule.ToString()));
  }
  return eExitDone;
}

// ---- all of them

eExit cObisCommand::Check(cContext& context) const {
  std::vector<rules::cFinding> findings;
  std::size_t count = 0;
  if (m_file.empty()) {
    const cObisMap map = cRuleService(context).GetMap();
    findings = rules::Check(map);
    count = map.GetEntries().size();
  } else {
    const auto rules = ReadRules(m_file, context);
    findings = rules::Check(rules);
    count = rules.size();
  }
  WriteFindings(findings, context);
  if (findings.empty()) context.Note("nothing is wrong with " + Counted(count));
  return rules::HasError(findings) ? eExitNegative : eExitDone;
}

eExit cObisCommand::Import(cContext& context) const {
  if (m_defaults != m_file.empty())
    throw cFailure(eExitUsage, "obis import: expected FILE or --defaults, found " +
                                   std::string(m_defaults ? "both" : "none") + "; see tavctl obis import --help");
  cObisMap map;
  if (m_defaults) {
    map = rules::MakeDefaultRules();
  } else {
    const auto rules = ReadRules(m_file, context);
    const auto findings = rules::Check(rules);
    NoteFindings(findings, context);
    if (rules::HasError(findings)) {
      context.Note("nothing was changed");
      return eExitNegative;
    }
    map = rules::MapOf(rules);
  }
  cRuleService service(context);
  const std::string source =
      Counted(map.GetEntries().size()) + " of " + (m_defaults ? "the shipped set" : RulesSource(m_file));
  if (m_dryRun)
    context.Note("would take " + source + ": " +
                 std::to_string(rules::Difference(service.GetMap(), map, m_replace).size()) + " change(s)");
  else
    context.Note("took " + source + ": " + std::to_string(service.Apply(map, m_replace)) + " change(s)");
  return eExitDone;
}

eExit cObisCommand::Export(cContext& context) const {
  const cObisMap map = cRuleService(context).GetMap();
  std::ostringstream text;
  if (context.json) {
    cJsonRows rows(text, form::kRuleColumns);
    for (const auto& [id, rule] : map.GetEntries()) rows.Write(rule.ToRecord());
    rows.End();
  } else {
    text << rules::WriteRulesText(map, kComment);
  }
  if (m_file.empty() || m_file == "-") {
    context.streams.out << text.str();
    return eExitDone;
  }
  WriteFile(m_file, text.str());
  context.Note("wrote " + m_file + ": " + Counted(map.GetEntries().size()));
  return eExitDone;
}

}  // namespace tav::ctl
