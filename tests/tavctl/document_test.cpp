// SPDX-License-Identifier: Apache-2.0
// docs/tavctl.md tells of everything that tavctl has.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <fstream>

#include <tests/tavctl/tavctl_world.h>

namespace tav::ctl {
namespace {

using testing::HasSubstr;

// Without the backslashes that keep a "|" from ending a cell.
std::string Page() {
  std::ifstream in(TAV_SOURCE_DIR "/docs/tavctl.md");
  std::string page{std::istreambuf_iterator<char>(in), {}};
  page.erase(std::remove(page.begin(), page.end(), '\\'), page.end());
  return page;
}

TEST(Document, NamesEveryCommandWithItsOptions) {
  const std::string page = Page();
  for (const auto& command : MakeCommands()) {
    CLI::App app;
    app.set_help_flag();
    CLI::App* const options = app.add_subcommand(command->GetName());
    command->AddOptions(*options);
    const std::string usage = std::string("| `") + command->GetName();
    const std::size_t row = std::min(page.find(usage + " "), page.find(usage + "`"));
    ASSERT_NE(row, std::string::npos) << usage;
    const std::string line = page.substr(row, page.find("\n| `", row) - row);
    for (const CLI::Option* option : options->get_options()) EXPECT_THAT(line, HasSubstr(option->get_name()));
    for (const CLI::App* action : options->get_subcommands({})) {
      EXPECT_THAT(line, HasSubstr(action->get_name()));
      for (const CLI::Option* option : action->get_options())
        EXPECT_THAT(line + " --help", HasSubstr(option->get_name()));
    }
  }
}

TEST(Document, NamesEveryExitCode) {
  const std::string page = Page();
  for (const cExitCode& exit : kExitCodes)
    EXPECT_THAT(page, HasSubstr("| " + std::to_string(exit.code) + " | " +
                                std::string(exit.meaning.substr(0, exit.meaning.find(':')))));
}

}  // namespace
}  // namespace tav::ctl
