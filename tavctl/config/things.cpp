// SPDX-License-Identifier: Apache-2.0
#include <tavctl/config/things.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <optional>

#include <gateway/form/config_columns.h>
#include <tavctl/failure.h>
#include <tavctl/options.h>
#include <tavctl/progress.h>

namespace tav::ctl {

namespace {

// The one of that identifier or address, if there is one; several are refused.
std::optional<cMeterConfig> FindMeter(cGatewayConfig& config, const std::string& name) {
  const std::vector<cMeterConfig> found = config.GetMeters(name);
  if (found.empty()) return std::nullopt;
  if (found.size() == 1) return found.front();
  std::string names;
  for (const cMeterConfig& meter : found)
    names += (names.empty() ? "" : ", ") + meter.meterID + " (medium " + meter.medium + ", maker " + meter.mfct + ")";
  throw cFailure(eExitNegative, "several meters are called '" + name + "': " + names);
}

}  // namespace

// ---- interfaces

cInterfaceCommand::cInterfaceCommand()
    : cThingCommand("interface", "List, show, set and delete the interfaces of the gateway", "INTERFACE",
                    FieldHelp(form::kInterfaceFields)) {}

Columns cInterfaceCommand::GetColumns() const { return form::kInterfaceColumns; }

std::vector<form::cJson> cInterfaceCommand::Find(cGatewayConfig& config, const std::string& name,
                                                 form::eSecrets secrets) {
  std::vector<form::cJson> found;
  for (const auto& each : config.GetInterfaces(name))
    found.push_back(form::ToJson(each, form::kInterfaceFields, secrets));
  return found;
}

void cInterfaceCommand::Set(cGatewayConfig& config, const std::string& name, const std::vector<cAssignment>& fields) {
  const auto found = config.GetInterfaces(name);
  cInterfaceRecord interface = found.empty() ? cInterfaceRecord(name) : found.front();
  for (const cAssignment& field : fields) Assign(interface, form::kInterfaceFields, field);
  config.Set(interface);
}

std::vector<std::string> cInterfaceCommand::Delete(cGatewayConfig& config, const std::string& name) {
  if (config.GetInterfaces(name).empty()) RefuseUnknown(name);
  return config.DeleteInterface(name);
}

// ---- meters

cMeterCommand::cMeterCommand()
    : cThingCommand("meter", "List, show, set and delete the configured meters", "METER",
                    FieldHelp(form::kMeterFields)) {}

Columns cMeterCommand::GetColumns() const { return form::kMeterColumns; }

std::vector<form::cJson> cMeterCommand::Find(cGatewayConfig& config, const std::string& name, form::eSecrets secrets) {
  std::vector<form::cJson> found;
  for (const auto& each : config.GetMeters(name)) found.push_back(form::MeterToJson(each, secrets));
  return found;
}

void cMeterCommand::Set(cGatewayConfig& config, const std::string& name, const std::vector<cAssignment>& fields) {
  const auto found = FindMeter(config, name);
  cMeterConfig meter;
  if (found)
    meter = *found;
  else
    meter.meterID = name;
  for (const cAssignment& field : fields) Assign(meter, form::kMeterFields, field);
  config.Set(meter);
}

std::vector<std::string> cMeterCommand::Delete(cGatewayConfig& config, const std::string& name) {
  const auto found = FindMeter(config, name);
  if (!found) RefuseUnknown(name);
  return config.DeleteMeter(*found);
}

// ---- collectors

namespace {

// METER/NAME in two.
std::pair<std::string, std::string> Parts(const std::string& name) {
  const std::size_t slash = name.find('/');
  if (slash == std::string::npos || slash == 0 || slash + 1 == name.size())
    throw cFailure(eExitUsage, "expected METER/NAME, found \"" + name + "\"");
  return {name.substr(0, slash), name.substr(slash + 1)};
}

auto FindCollector(cMeterConfig& meter, const std::string& addr) {
  return std::find_if(meter.collectors.begin(), meter.collectors.end(),
                      [&](const cCollectorConfig& each) { return each.addr == addr; });
}

cMeterConfig KnownMeter(cGatewayConfig& config, const std::string& name) {
  const auto found = FindMeter(config, name);
  if (!found) throw cFailure(eExitNegative, "there is no meter '" + name + "'; see tavctl meter list");
  return *found;
}

}  // namespace

cCollectorCommand::cCollectorCommand()
    : cThingCommand("collector", "List, show, set and delete what is logged of a meter", "METER/NAME",
                    FieldHelp(form::kCollectorFields)) {}

Columns cCollectorCommand::GetColumns() const { return form::kCollectorColumns; }

std::vector<form::cJson> cCollectorCommand::Find(cGatewayConfig& config, const std::string& name,
                                                 form::eSecrets secrets) {
  const auto [which, addr] = name.empty() ? std::pair<std::string, std::string>() : Parts(name);
  std::vector<form::cJson> found;
  for (const cMeterConfig& meter : config.GetMeters(which))
    for (const cCollectorConfig& each : meter.collectors) {
      if (!addr.empty() && each.addr != addr) continue;
      form::cJson object = form::cJson::object({{"meterID", meter.meterID}});
      object.update(form::ToJson(each, form::kCollectorFields, secrets));
      found.push_back(object);
    }
  return found;
}

void cCollectorCommand::Set(cGatewayConfig& config, const std::string& name, const std::vector<cAssignment>& fields) {
  const auto [which, addr] = Parts(name);
  cMeterConfig meter = KnownMeter(config, which);
  auto collector = FindCollector(meter, addr);
  if (collector == meter.collectors.end()) {
    cCollectorConfig fresh;
    fresh.SetAddr(addr);
    collector = meter.collectors.insert(meter.collectors.end(), fresh);
  }
  for (const cAssignment& field : fields) Assign(*collector, form::kCollectorFields, field);
  config.Set(meter);
}

std::vector<std::string> cCollectorCommand::Delete(cGatewayConfig& config, const std::string& name) {
  const auto [which, addr] = Parts(name);
  cMeterConfig meter = KnownMeter(config, which);
  const auto collector = FindCollector(meter, addr);
  if (collector == meter.collectors.end()) RefuseUnknown(name);
  collector->shouldRemoved = true;
  config.Set(meter);
  return {"collector '" + addr + "' of meter '" + meter.meterID + "'"};
}

// ---- push targets

cPushTargetCommand::cPushTargetCommand()
    : cThingCommand("push-target", "List, show, set and delete the servers that values are pushed to", "PUSH-TARGET",
                    FieldHelp(form::kPushTargetFields)) {}

Columns cPushTargetCommand::GetColumns() const { return form::kPushTargetColumns; }

std::vector<form::cJson> cPushTargetCommand::Find(cGatewayConfig& config, const std::string& name,
                                                  form::eSecrets secrets) {
  std::vector<form::cJson> found;
  for (const auto& each : config.GetPushTargets(name))
    found.push_back(form::ToJson(each, form::kPushTargetFields, secrets));
  return found;
}

void cPushTargetCommand::Set(cGatewayConfig& config, const std::string& name, const std::vector<cAssignment>& fields) {
  const auto found = config.GetPushTargets(name);
  cPushTarget target;
  if (found.empty())
    target.name = name;
  else
    target = found.front();
  for (const cAssignment& field : fields) Assign(target, form::kPushTargetFields, field);
  config.Set(target);
}

std::vector<std::string> cPushTargetCommand::Delete(cGatewayConfig& config, const std::string& name) {
  const auto found = config.GetPushTargets(name);
  if (found.empty()) RefuseUnknown(name);
  config.DeletePushTarget(found.front().idx, name);
  return {"push target '" + name + "'"};
}

// ---- templates

namespace {

std::string TemplateHelp() {
  return FieldHelp(form::kTemplateFields) +
         "and meter-config.FIELD, push-config.FIELD; see tavctl meter set --help and tavctl "
         "push-target set --help\n";
}

// The number in a file's name, "42.mt".
unsigned long long NumberOf(const std::filesystem::path& file) {
  std::uint64_t number = 0;
  std::string expected;
  if (file.extension() != ".mt" || !form::TakeText(file.stem().string(), ~std::uint64_t{0}, number, expected))
    throw cFailure(eExitUsage, file.string() + ": a template's file is named after its number, such as 42.mt");
  return number;
}

}  // namespace

cTemplateCommand::cTemplateCommand()
    : cThingCommand("template", "List, show, set, delete, export and import presets for new meters", "TEMPLATE",
                    TemplateHelp()) {}

void cTemplateCommand::AddOptions(CLI::App& app) {
  cThingCommand::AddOptions(app);
  CLI::App& out = AddAction(app, "export", "Write a file NUMBER.mt for each template");
  AddArgument(out, "FOLDER", m_folder, "Folder for the files", eNeed::Required);
  AddFlag(out, "--secrets", m_withSecrets, "Write keys and passwords too");
  CLI::App& in = AddAction(app, "import", "Make or change templates from files");
  AddArguments(in, "FILE", m_files, "Files named NUMBER.mt", eNeed::Required);
}

Columns cTemplateCommand::GetColumns() const { return form::kTemplateColumns; }

std::vector<form::cJson> cTemplateCommand::Find(cGatewayConfig& config, const std::string& name,
                                                form::eSecrets secrets) {
  std::vector<form::cJson> found;
  for (const auto& each : config.GetTemplates(name)) found.push_back(form::TemplateToJson(each, secrets));
  return found;
}

void cTemplateCommand::Set(cGatewayConfig& config, const std::string& name, const std::vector<cAssignment>& fields) {
  const auto found = config.GetTemplates(name);
  cMeterTemplate changed;
  if (found.empty())
    changed.name = name;
  else
    changed = found.front();
  std::string error;
  for (const cAssignment& field : fields)
    if (!form::SetTemplateByName(changed, field.field, field.value, error)) throw cFailure(eExitUsage, error);
  const std::string fault = form::PushConfigFault(changed);
  if (!fault.empty()) throw cFailure(eExitUsage, "push-config: " + fault);
  config.Set(changed);
}

std::vector<std::string> cTemplateCommand::Delete(cGatewayConfig& config, const std::string& name) {
  const auto found = config.GetTemplates(name);
  if (found.empty()) RefuseUnknown(name);
  config.DeleteTemplate(found.front().id, name);
  return {"template '" + name + "'"};
}

bool cTemplateCommand::RunOther(cContext& context, cGatewayConfig& config, const std::string& action) {
  if (action == "export")
    Export(context, config);
  else
    Import(context, config);
  return true;
}

void cTemplateCommand::Export(cContext& context, cGatewayConfig& config) {
  std::vector<cMeterTemplate> all = config.GetTemplates();
  cProgress progress(context, "writing templates", all.size());
  for (cMeterTemplate& each : all) {
    if (!m_withSecrets) {
      each.meterConfig.key.clear();
      each.pushConfig.password.clear();
    }
    const std::string file = (std::filesystem::path(m_folder) / (std::to_string(each.id) + ".mt")).string();
    context.trouble.clear();
    if (!each.Store(m_folder)) throw cFailure(eExitFile, file + ": cannot be written: " + context.trouble);
    context.Note("wrote " + file + ", template '" + each.name + "'");
    progress.Step();
  }
}

void cTemplateCommand::Import(cContext& context, cGatewayConfig& config) {
  std::vector<cMeterTemplate> read;
  for (const std::string& name : m_files) {
    const std::filesystem::path file(name);
    cMeterTemplate& each = read.emplace_back();
    each.id = NumberOf(file);
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(file, ignored)) throw cFailure(eExitFile, name + ": there is no such file");
    context.trouble.clear();
    if (!each.Load(file.parent_path().string())) throw cFailure(eExitFile, name + ": " + context.trouble);
    if (each.name.empty()) throw cFailure(eExitFile, name + ": the template has no name");
  }
  cProgress progress(context, "setting templates", read.size());
  for (const cMeterTemplate& each : read) {
    context.Note("template '" + each.name + "' has number " + std::to_string(config.Set(each)));
    progress.Step();
  }
}

}  // namespace tav::ctl
