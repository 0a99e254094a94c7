// SPDX-License-Identifier: Apache-2.0
#include <tavctl/config/config_command.h>

#include <CLI/CLI.hpp>
#include <fstream>

#include <tavctl/config/gateway_config.h>
#include <tavctl/failure.h>
#include <tavctl/input_file.h>
#include <tavctl/options.h>
#include <tavctl/progress.h>

namespace tav::ctl {

namespace {

std::string Counted(const form::cConfigDocument& config) {
  return std::to_string(config.interfaces.size()) + " interface(s), " + std::to_string(config.meters.size()) +
         " meter(s), " + std::to_string(config.pushTargets.size()) + " push target(s), " +
         std::to_string(config.templates.size()) + " template(s)";
}

}  // namespace

void cConfigCommand::AddOptions(CLI::App& app) {
  m_app = &app;
  CLI::App& out = AddAction(app, "export", "Write the configuration as TOML, or with --json as JSON");
  AddArgument(out, "FILE", m_file, "Where to; standard output when there is none", eNeed::Optional);
  AddFlag(out, "--secrets", m_secrets, "Write keys and passwords too");
  CLI::App& in = AddAction(app, "import", "Take a configuration, all of it or nothing");
  AddArgument(in, "FILE", m_file, "The document, TOML or JSON; - is standard input", eNeed::Required);
  AddFlag(in, "--merge", m_merge, "Keep what the document does not have; without it that is deleted");
  AddFlag(in, "--check", m_check, "Only read the document and say what is wrong with it");
}

eExit cConfigCommand::Run(cContext& context) {
  return ChosenAction(*m_app) == "export" ? Export(context) : Import(context);
}

eExit cConfigCommand::Export(cContext& context) const {
  cProgress progress(context, "reading the configuration", cGatewayConfig::kGetSteps);
  const form::cConfigDocument config = cGatewayConfig(context).GetAll([&] { progress.Step(); });
  const std::string text = config.ToText(context.json ? form::eDocument::Json : form::eDocument::Toml,
                                         m_secrets ? form::eSecrets::Show : form::eSecrets::Leave);
  if (m_file.empty()) {
    context.streams.out << text;
    return eExitDone;
  }
  WriteFile(m_file, text);
  context.Note("wrote " + m_file + ": " + Counted(config));
  return eExitDone;
}

eExit cConfigCommand::Import(cContext& context) const {
  const std::string text = ReadInput(m_file, context.streams.in, kMaxDocument);
  std::optional<cGatewayConfig> gateway;
  if (!m_check) gateway.emplace(context);
  cProgress progress(context, "taking the configuration", cGatewayConfig::kGetSteps + 2);
  const auto step = [&] { progress.Step(); };
  form::Faults faults;
  const form::cConfigDocument config =
      form::cConfigDocument::FromText(text, gateway ? gateway->GetAll(step) : form::cConfigDocument(), faults);
  step();
  for (const form::cFault& fault : faults) context.Note(m_file + ": " + fault.place + ": " + fault.what);
  if (!faults.empty()) {
    if (!m_check) context.Note("nothing was changed");
    return eExitNegative;
  }
  if (gateway) gateway->Apply(config, !m_merge);
  context.Note((m_check ? "nothing is wrong in " : "took ") + m_file + ": " + Counted(config));
  return eExitDone;
}

}  // namespace tav::ctl
