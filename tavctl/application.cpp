// SPDX-License-Identifier: Apache-2.0
#include <tavctl/application.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <optional>

#include <gateway/form/time_text.h>
#include <tavctl/failure.h>
#include <tavctl/options.h>
#include <tavctl/trouble_note.h>

namespace tav::ctl {

namespace {

std::string Footer() {
  std::string text = "Exit codes:\n";
  for (const cExitCode& exit : kExitCodes)
    text += "  " + std::to_string(exit.code) + "  " + std::string(exit.meaning) + "\n";
  return text + "\nTIME is " + std::string(form::kTimeForms) + ".\n";
}

}  // namespace

cApplication::cApplication(const cStreams& streams, vorn::cScmService* service)
    : m_streams(streams),
      m_service(service),
      m_app(std::make_unique<CLI::App>("Looks at the services, meters and values of a gateway.", "tavctl")),
      m_commands(MakeCommands()) {
  Describe();
}

cApplication::~cApplication() = default;

void cApplication::Describe() {
  m_app->fallthrough();
  m_app->require_subcommand(0, 1);
  m_app->footer(Footer());
  m_app->set_help_flag("-h,--help", "Show this help, or that of a command");
  m_app->set_version_flag("--version", "tavctl " TAV_VERSION, "Show the version");
  m_app
      ->add_option("--dir", m_directory,
                   "Directory of the service sockets (default $VORN_DIR, else $XDG_RUNTIME_DIR/vorn, else /run/vorn)")
      ->type_name("DIR");
  AddFlag(*m_app, "--json", m_json, "Exactly one JSON document in place of tables");
  AddSeconds(*m_app, "--timeout", m_timeoutMs, "Seconds to wait for a service (default 10)");
  for (const auto& command : m_commands)
    command->AddOptions(*m_app->add_subcommand(command->GetName(), command->GetHelp()));
}

eExit cApplication::Run(std::vector<std::string> arguments) {
  std::reverse(arguments.begin(), arguments.end());  // as the parser takes them
  try {
    m_app->parse(arguments);
  } catch (const CLI::Success& asked) {
    m_app->exit(asked, m_streams.out, m_streams.err);
    return CheckOutput(eExitDone);
  } catch (const CLI::ExtrasError&) {
    return RefuseExtra(m_app->remaining(true).front());
  } catch (const CLI::ParseError& error) {
    return RefuseUsage(error.what());
  }
  cCommand* const command = FindChosen();
  return command != nullptr ? CheckOutput(RunCommand(*command)) : RefuseUsage("a command is missing");
}

cCommand* cApplication::FindChosen() const {
  for (const auto& command : m_commands)
    if (m_app->got_subcommand(command->GetName())) return command.get();
  return nullptr;
}

eExit cApplication::RefuseUsage(const std::string& text) const {
  const cCommand* const command = FindChosen();
  const std::string program = command != nullptr ? std::string("tavctl ") + command->GetName() : "tavctl";
  m_streams.err << program << ": " << text << "; see " << program << " --help" << std::endl;
  return eExitUsage;
}

// What stands in the command line and belongs to nothing.
eExit cApplication::RefuseExtra(const std::string& word) const {
  const bool isOption = word.size() > 1 && word.front() == '-';
  if (FindChosen() != nullptr || isOption) return RefuseUsage("there is no option or place for \"" + word + "\"");
  return RefuseUsage("there is no command \"" + word + "\"");
}

eExit cApplication::RunCommand(cCommand& command) {
  std::optional<vorn::cScmService> own;
  if (m_service == nullptr) own.emplace("tavctl", m_directory);
  cContext context{own ? *own : *m_service, m_streams, m_json, m_timeoutMs};
  const cTroubleNote note(context.trouble);
  try {
    return command.Run(context);
  } catch (const cFailure& failure) {
    if (*failure.what() != '\0') context.Note(failure.what());
    return failure.GetExit();
  } catch (const std::exception& failure) {
    context.Note(failure.what());
    return eExitInternal;
  }
}

eExit cApplication::CheckOutput(eExit exit) const {
  if (m_streams.out.flush()) return exit;
  m_streams.err << "tavctl: cannot write the output" << std::endl;
  return eExitFile;
}

}  // namespace tav::ctl
