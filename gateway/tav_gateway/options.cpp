// SPDX-License-Identifier: Apache-2.0
#include <gateway/tav_gateway/options.h>

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <sstream>

#include <gateway/host/state_directory.h>
#include <gateway/tav_gateway/config_file.h>
#include <gateway/tav_gateway/exit_code.h>
#include <gateway/tav_gateway/services.h>

namespace tav::gateway {

namespace {

namespace fs = std::filesystem;

constexpr const char* kAll = "run";
constexpr const char* kConfigName = "tav-gateway.toml";
constexpr const char* kSystemConfig = "/etc/tav/tav-gateway.toml";

// What the command line says; empty or -1: nothing.
struct cArguments {
  std::string dir;
  std::string config;
  std::string durability;
  int trace = -1;
  bool noWeb = false;
  std::string webListen;
  std::string webCertificate;
  std::string webKey;
  std::string webStatic;
};

void AddOptions(CLI::App& command, cArguments& arguments) {
  command.add_option("--dir", arguments.dir, "Directory of the sockets and the database; made when it is missing");
  command.add_option("--config", arguments.config,
                     "Configuration file (TOML); else tav-gateway.toml in --dir, or /etc/tav/tav-gateway.toml");
  command
      .add_option("--durability", arguments.durability,
                  "full: a committed reading survives a power cut; normal: the last ones may not, and it is faster")
      ->check(CLI::IsMember({"full", "normal"}));
  command.add_option("--trace", arguments.trace, "Level of diagnostics: 0 none, 2 failures, 4 warnings, 16 progress")
      ->check(CLI::Range(0, kMaxTrace));
}

void AddWebOptions(CLI::App& command, cArguments& arguments) {
  command.add_flag("--no-web", arguments.noWeb, "Leave the web front end out");
  command.add_option("--web-listen", arguments.webListen,
                     "Where web pages are served, ADDRESS:PORT or [ADDRESS]:PORT; port 0: any free one");
  command.add_option("--web-cert", arguments.webCertificate, "Certificate (PEM): web pages are served encrypted");
  command.add_option("--web-key", arguments.webKey, "Key of the certificate (PEM)");
  command.add_option("--web-static", arguments.webStatic, "Directory of the files below /static/");
}

void AddAllOptions(CLI::App& command, cArguments& arguments) {
  AddOptions(command, arguments);
  AddWebOptions(command, arguments);
}

std::string FindConfig(const cArguments& arguments) {
  if (!arguments.config.empty()) return arguments.config;
  const std::string usual = arguments.dir.empty() ? kSystemConfig : (fs::path(arguments.dir) / kConfigName).string();
  return access(usual.c_str(), F_OK) == 0 ? usual : "";
}

// Takes what the command line says of the web front end; an error, or empty.
std::string CompleteWeb(const cArguments& arguments, cOptions& options) {
  const auto take = [](const std::string& said, std::string& option) {
    if (!said.empty()) option = said;
  };
  options.isWebLeft |= arguments.noWeb;
  take(arguments.webListen, options.web.listen);
  take(arguments.webCertificate, options.web.certificate);
  take(arguments.webKey, options.web.key);
  take(arguments.webStatic, options.web.staticDirectory);
  const std::string fault = options.web.Check();
  return fault.empty() ? fault : "web front end: " + fault;
}

cParsedOptions Complete(const cArguments& arguments, const std::string& service) {
  cOptions options;
  options.service = service;
  options.configFile = FindConfig(arguments);
  if (!options.configFile.empty())
    if (const std::string error = ReadConfigFile(options.configFile, options); !error.empty())
      return {std::nullopt, eExitUsage, error};
  if (!arguments.dir.empty()) options.dir = arguments.dir;
  if (const auto durability = ReadDurability(arguments.durability)) options.durability = *durability;
  if (arguments.trace >= 0) options.trace = arguments.trace;
  if (const std::string error = CompleteWeb(arguments, options); !error.empty())
    return {std::nullopt, eExitUsage, error};
  return {options, eExitDone, {}};
}

}  // namespace

std::string cOptions::GetSocketDirectory() const { return dir; }

std::string cOptions::GetDataFile() const {
  return (fs::path(dir.empty() ? StateDirectory() : dir) / dataFile).string();
}

std::optional<data::eDurability> ReadDurability(const std::string& text) {
  if (text == "full") return data::eDurability::Full;
  if (text == "normal") return data::eDurability::Normal;
  return std::nullopt;
}

cParsedOptions ParseOptions(int argc, const char* const* argv) {
  CLI::App app("The reference gateway: services for meter drivers, pages and tools.", "tav-gateway");
  cArguments arguments;
  app.require_subcommand(1);
  AddAllOptions(*app.add_subcommand(kAll, "Run all services in this process"), arguments);
  for (const cServiceKind& kind : GetServiceKinds())
    AddAllOptions(*app.add_subcommand(kind.name, std::string("Run ") + kind.help + " alone"), arguments);
  try {
    app.parse(argc, argv);
    const std::string command = app.get_subcommands().front()->get_name();
    return Complete(arguments, command == kAll ? std::string() : command);
  } catch (const CLI::ParseError& error) {
    std::stringstream out;
    const bool asked = app.exit(error, out, out) == 0;
    return {std::nullopt, asked ? eExitDone : eExitUsage, out.str()};
  }
}

}  // namespace tav::gateway
