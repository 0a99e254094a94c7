// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/options.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <sstream>

#include <gateway/host/state_directory.h>

namespace tav::pages {

namespace {

constexpr const char* kFileName = "web-accounts.json";
constexpr unsigned int kMostMinutes = 24 * 60;
constexpr int kUsage = 2;

}  // namespace

cParsedOptions ParseOptions(int argc, const char* const* argv) {
  CLI::App app("The pages of the gateway: what the web front end shows.", "tav-pages");
  cOptions options;
  std::string role = "admin";
  unsigned int minutes = options.access.timeoutSec / 60;
  app.add_option("--dir", options.dir, "Directory of the service sockets and of the accounts");
  app.add_option("--accounts", options.access.file, "File of the accounts (default: web-accounts.json in --dir)");
  app.add_option("--session-minutes", minutes, "A login ends after so many minutes without a request")
      ->check(CLI::Range(1u, kMostMinutes))
      ->capture_default_str();
  CLI::Option* const account =
      app.add_option("--set-password", options.account,
                     "Set the password of this account to the line on standard input, make it when it is missing, end");
  app.add_option("--role", role, "With --set-password: what the account may do")
      ->check(CLI::IsMember({"admin", "viewer"}))
      ->needs(account)
      ->capture_default_str();
  app.add_option("--trace", options.trace, "Level of diagnostics: 0 none, 2 failures, 4 warnings, 16 progress")
      ->capture_default_str();
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    std::stringstream out;
    const bool asked = app.exit(error, out, out) == 0;
    return {std::nullopt, asked ? 0 : kUsage, out.str()};
  }
  options.access.timeoutSec = minutes * 60;
  ReadRole(role, options.role);
  if (options.access.file.empty()) {
    const std::filesystem::path directory = options.dir.empty() ? gateway::StateDirectory() : options.dir;
    options.access.file = (directory / kFileName).string();
  }
  return {options, 0, {}};
}

}  // namespace tav::pages
