// SPDX-License-Identifier: Apache-2.0
#include <tavctl/application.h>

#include <tests/tavctl/tavctl_world.h>

namespace tav::ctl {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

class Application : public TavctlWorld {};

TEST_F(Application, ExplainsItself) {
  const cOutput help = Run({"--help"});
  EXPECT_EQ(help.exit, eExitDone);
  EXPECT_EQ(help.err, "");
  for (const auto& command : MakeCommands()) {
    EXPECT_THAT(help.out, HasSubstr(command->GetName()));
    EXPECT_THAT(help.out, HasSubstr(command->GetHelp()));
  }
  for (const cExitCode& code : kExitCodes)
    EXPECT_THAT(help.out, HasSubstr("  " + std::to_string(code.code) + "  " + std::string(code.meaning) + "\n"));
}

TEST_F(Application, ExplainsEachCommand) {
  for (const auto& command : MakeCommands()) {
    const cOutput help = Run({command->GetName(), "--help"});
    EXPECT_EQ(help.exit, eExitDone);
    EXPECT_THAT(help.out, StartsWith(command->GetHelp()));
    EXPECT_THAT(help.out, HasSubstr(std::string("tavctl ") + command->GetName()));
  }
  EXPECT_THAT(Run({"values", "-h"}).out, HasSubstr("--obis"));
}

TEST_F(Application, TellsItsVersion) {
  EXPECT_EQ(Run({"--version"}).out, "tavctl 3.0.0\n");
  EXPECT_EQ(Run({"--version"}).exit, eExitDone);
}

TEST_F(Application, SaysWhatIsWrongWithACommandLine) {
  const struct {
    std::vector<std::string> arguments;
    const char* error;
  } cases[] = {
      {{}, "tavctl: a command is missing; see tavctl --help\n"},
      {{"--json"}, "tavctl: a command is missing; see tavctl --help\n"},
      {{"metres"}, "tavctl: there is no command \"metres\"; see tavctl --help\n"},
      {{""}, "tavctl: there is no command \"\"; see tavctl --help\n"},
      {{"--jason"}, "tavctl: there is no option or place for \"--jason\"; see tavctl --help\n"},
      {{"last", "a", "b"}, "tavctl last: there is no option or place for \"b\"; see tavctl last --help\n"},
      {{"meters", "-x"}, "tavctl meters: there is no option or place for \"-x\"; see tavctl meters --help\n"},
      {{"values"}, "tavctl values: METER is required; see tavctl values --help\n"},
      {{"protocol"}, "tavctl protocol: SERVICE is required; see tavctl protocol --help\n"},
      {{"manifest"}, "tavctl manifest: FILE is required; see tavctl manifest --help\n"},
      {{"values", "M", "--limit", "few"},
       "tavctl values: --limit: expected a whole number from 0 on, found \"few\"; see tavctl values --help\n"},
      {{"values", "M", "--limit=-1"},
       "tavctl values: --limit: expected a whole number from 0 on, found \"-1\"; see tavctl values --help\n"},
      {{"watch", "--interval", "0.05"},
       "tavctl watch: --interval: expected seconds from 0.1 to 86400, found \"0.05\"; see tavctl watch --help\n"},
      {{"meters", "--timeout", "nan"},
       "tavctl meters: --timeout: expected seconds from 0.1 to 86400, found \"nan\"; see tavctl meters --help\n"},
  };
  for (const auto& [arguments, error] : cases) {
    const cOutput output = Run(arguments);
    EXPECT_EQ(output.exit, eExitUsage) << error;
    EXPECT_EQ(output.err, error);
    EXPECT_EQ(output.out, "");
  }
}

TEST_F(Application, SaysWhatATimeLooksLike) {
  const cOutput output = Run({"events", "--to", "soon"});
  EXPECT_EQ(output.exit, eExitUsage);
  EXPECT_THAT(output.err, StartsWith("tavctl events: --to: expected a time such as 2024-03-01"));
  EXPECT_THAT(output.err, HasSubstr("found \"soon\""));
}

TEST_F(Application, SaysThatAnOptionLacksItsValue) {
  const cOutput output = Run({"values", "M", "--from"});
  EXPECT_EQ(output.exit, eExitUsage);
  EXPECT_THAT(output.err, StartsWith("tavctl values: --from: 1 required TIME missing"));
}

TEST_F(Application, SaysWhichSocketIsMissing) {
  for (const char* command : {"meters", "last", "events", "store", "stats", "watch"}) {
    const cOutput output = Run({command});
    EXPECT_EQ(output.exit, eExitUnreachable);
    EXPECT_EQ(output.out, "");
    EXPECT_EQ(output.err, "tavctl: service 'data': there is no socket " + Directory() +
                              "/data.sock; does the gateway run, and is --dir right?\n");
  }
  EXPECT_EQ(Run({"--json", "meters"}).out, "") << "no document that says less than the exit code";
}

TEST_F(Application, SaysThatItsOutputCannotBeWritten) {
  std::istringstream in;
  std::ostringstream out, err;
  out.setstate(std::ios::badbit);
  cApplication application({in, out, err}, &m_host);
  EXPECT_EQ(application.Run({"--help"}), eExitFile);
  EXPECT_THAT(err.str(), StartsWith("tavctl: cannot write the output"));
}

TEST_F(Application, TakesItsCommonOptionsBeforeAndBehindTheCommand) {
  const cRecordingServer server(&m_host, "data");
  EXPECT_EQ(Run({"--json", "services"}).Json(), Run({"services", "--json"}).Json());
}

TEST_F(Application, TakesTheNameOfACommandAsAnArgument) {
  const cOutput output = Run({"last", "meters"});
  EXPECT_EQ(output.exit, eExitUnreachable) << output.err;
}

}  // namespace
}  // namespace tav::ctl
