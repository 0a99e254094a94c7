// SPDX-License-Identifier: Apache-2.0
// The program tavctl itself, beside a gateway that runs in the test: its output into files, pipes and a terminal, its
// exit codes, and how it ends.
#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <fstream>

#include <tests/support/child_process.h>
#include <tests/tavctl/tavctl_world.h>

namespace tav::ctl {
namespace {

using testing::HasSubstr;
using testing::Not;

class Process : public TavctlWithGateway {
 protected:
  static constexpr const char* kProgram = TAVCTL;

  std::string OutFile() const { return m_folder.File("out"); }
  std::string ErrFile() const { return m_folder.File("err"); }
  static std::string Content(const std::string& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }

  // A shell's command line, in which $tavctl is the program with the directory of this world.
  std::unique_ptr<cChildProcess> Start(const std::string& line, const std::vector<std::string>& environment = {}) {
    const std::string setup = "tavctl=\"" + std::string(kProgram) + " --dir " + Directory() + "\"; exec 2>" + ErrFile();
    return std::make_unique<cChildProcess>(std::vector<std::string>{"/bin/bash", "-c", setup + "; " + line},
                                           environment);
  }
  // Lets the gateway work until the program has ended.
  cOutput Finish(cChildProcess& child) {
    std::optional<int> exit;
    PollUntil(
        m_host, [&] { return (exit = child.Wait(0)).has_value(); }, std::chrono::seconds(30));
    return {exit.value_or(-1), Content(OutFile()), Content(ErrFile())};
  }
  cOutput RunShell(const std::string& line, const std::vector<std::string>& environment = {}) {
    return Finish(*Start(line, environment));
  }
  cOutput RunProgram(const std::string& arguments) { return RunShell("exec $tavctl " + arguments + " >" + OutFile()); }
  bool AwaitError(const std::string& text) {
    return PollUntil(m_host, [&] { return Content(ErrFile()).find(text) != std::string::npos; });
  }
  void StoreMany() {
    for (unsigned int i = 0; i < 3000; ++i) Store(Reading("M", kNoon + i, {{"1-0:1.8.0", std::to_string(i)}}));
  }
};

TEST_F(Process, LooksIntoARunningGateway) {
  Store(Reading("M", kNoon, {{"1-0:1.8.0", "5"}}));
  const cOutput output = RunProgram("--json values M");
  EXPECT_EQ(output.exit, eExitDone) << output.err;
  EXPECT_EQ(output.Json()[0]["value"], "5");
  EXPECT_EQ(RunProgram("services").exit, eExitDone);
}

TEST_F(Process, FindsTheDirectoryByTheEnvironment) {
  const cOutput output =
      RunShell("exec " + std::string(kProgram) + " --json services >" + OutFile(), {"VORN_DIR=" + Directory()});
  EXPECT_EQ(output.exit, eExitDone) << output.err;
  EXPECT_EQ(output.Json()[0]["service"], "data");
}

TEST_F(Process, EndsWithTheDocumentedCodes) {
  const struct {
    const char* arguments;
    int exit;
  } cases[] = {
      {"--help", eExitDone},
      {"last nobody", eExitNegative},
      {"explain /dev/null", eExitNegative},
      {"", eExitUsage},
      {"values", eExitUsage},
      {"completion fish", eExitUsage},
      {"monitor none", eExitUnreachable},
      {"explain /nowhere", eExitFile},
  };
  for (const auto& [arguments, exit] : cases) EXPECT_EQ(RunProgram(arguments).exit, exit) << arguments;
}

TEST_F(Process, SaysThatItsOutputCannotBeWritten) {
  const cOutput output = RunShell("exec $tavctl stats >/dev/full");
  EXPECT_EQ(output.exit, eExitFile);
  EXPECT_EQ(output.err, "tavctl: cannot write the output\n");
}

TEST_F(Process, EndsSilentlyWithItsReader) {
  StoreMany();
  const cOutput output = RunShell("$tavctl values M --limit 0 | head -n 1 >" + OutFile() + "; exit ${PIPESTATUS[0]}");
  EXPECT_EQ(output.exit, 128 + SIGPIPE);
  EXPECT_THAT(output.out, testing::StartsWith("TIME"));
  EXPECT_EQ(output.err, "");
}

TEST_F(Process, WritesPlainTextIntoAFile) {
  Store(Reading("M", kNoon, {{"1-0:1.8.0", "5"}}));
  EXPECT_THAT(RunProgram("last").out, Not(HasSubstr("\x1b")));
  EXPECT_THAT(RunProgram("watch --count 1").out, Not(HasSubstr("\x1b")));
}

TEST_F(Process, SetsTitlesOffOnATerminalOnly) {
  const int terminal = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
  ASSERT_TRUE(terminal >= 0 && grantpt(terminal) == 0 && unlockpt(terminal) == 0);
  const std::string name = ptsname(terminal);
  const int held = open(name.c_str(), O_RDWR | O_NOCTTY);  // keeps what was written
  const auto shown = [&](const std::vector<std::string>& environment) {
    EXPECT_EQ(RunShell("exec $tavctl stats >" + name, environment).exit, eExitDone);
    std::string text(10'000, '\0');
    const ssize_t size = read(terminal, text.data(), text.size());
    text.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    return text;
  };
  EXPECT_THAT(shown({}), HasSubstr("\x1b[1mCOUNTER"));
  const std::string plain = shown({"NO_COLOR=1"});
  EXPECT_THAT(plain, HasSubstr("COUNTER"));
  EXPECT_THAT(plain, Not(HasSubstr("\x1b")));
  close(held);
  close(terminal);
}

TEST_F(Process, EndsAMonitorCleanlyOnCtrlC) {
  const auto child = Start("exec $tavctl --json monitor data >" + OutFile());
  ASSERT_TRUE(AwaitError("watching service 'data'"));
  child->Signal(SIGINT);
  const cOutput output = Finish(*child);
  EXPECT_EQ(output.exit, eExitDone);
  EXPECT_EQ(output.out, "[]\n");
}

TEST_F(Process, EndsAWatchCleanlyWhenItIsTerminated) {
  Store(Reading("M", kNoon, {{"1-0:1.8.0", "5"}}));
  const auto child = Start("exec $tavctl --json watch --interval 60 >" + OutFile());
  ASSERT_TRUE(PollUntil(m_host, [&] { return !Content(OutFile()).empty(); })) << "shown without waiting for more";
  child->Signal(SIGTERM);
  const cOutput output = Finish(*child);
  EXPECT_EQ(output.exit, eExitDone);
  EXPECT_EQ(output.Json().size(), 1u);
}

TEST_F(Process, MonitorWaitsForAServiceThatIsStartedAnew) {
  const auto child = Start("exec $tavctl --json monitor data --count 1 >" + OutFile());
  ASSERT_TRUE(AwaitError("watching"));
  m_server.reset();
  ASSERT_TRUE(AwaitError("has ended; waiting for it"));
  m_server = std::make_unique<data::cDataServer>(&m_host, m_store.get());
  std::size_t watching = 0;
  ASSERT_TRUE(PollUntil(m_host, [&] {
    watching = Content(ErrFile()).rfind("watching");
    return watching != std::string::npos && watching > Content(ErrFile()).find("has ended");
  }));
  EXPECT_EQ(Run({"stats"}).exit, eExitDone);
  EXPECT_EQ(Finish(*child).Json()[0]["message"], "get-statistics");
}

}  // namespace
}  // namespace tav::ctl
