// SPDX-License-Identifier: Apache-2.0
#include <tavctl/services_command.h>

#include <unistd.h>

#include <fstream>

#include <tests/support/raw_socket.h>
#include <tests/tavctl/tavctl_world.h>

namespace tav::ctl {
namespace {

using testing::HasSubstr;

class ServicesCommand : public TavctlWorld {};

TEST_F(ServicesCommand, TellsWhoAnswersAndWhoDoesNot) {
  const cRecordingServer data(&m_host, "data");
  const cRecordingServer status(&m_host, "status");
  cRawSocket silent;
  ASSERT_TRUE(silent.Listen(m_host.GetSocketPath("silent")));
  {
    cRawSocket ended;
    ASSERT_TRUE(ended.Listen(m_host.GetSocketPath("old")));
  }
  std::ofstream(m_folder.File("tav.db")) << "no socket";
  const cOutput output = Run({"--json", "--timeout", "0.2", "services"});
  EXPECT_EQ(output.exit, eExitDone);
  const auto rows = output.Json();
  ASSERT_EQ(rows.size(), 4u);
  EXPECT_EQ(rows[0]["service"], "data");
  EXPECT_EQ(rows[0]["state"], "running");
  EXPECT_EQ(rows[0]["pid"], getpid());
  EXPECT_EQ(rows[0]["process"], "tavctl_test");
  EXPECT_EQ(rows[1]["service"], "old");
  EXPECT_EQ(rows[1]["state"], "ended");
  EXPECT_TRUE(rows[1]["pid"].is_null());
  EXPECT_EQ(rows[2]["service"], "silent");
  EXPECT_EQ(rows[2]["state"], "no answer");
  EXPECT_EQ(rows[3]["service"], "status");
  EXPECT_EQ(rows[3]["state"], "running");
}

TEST_F(ServicesCommand, IsATableForPeople) {
  const cRecordingServer data(&m_host, "data");
  const cOutput output = Run({"services"});
  const std::string pid = std::to_string(getpid());
  const std::string title(pid.size() - std::min<std::size_t>(pid.size(), 3), ' ');
  EXPECT_EQ(output.out,
            "SERVICE  STATE    PROCESS      " + title + "PID\n" + "data     running  tavctl_test  " + pid + "\n");
}

TEST_F(ServicesCommand, FailsWhenNobodyAnswers) {
  {
    cRawSocket ended;
    ASSERT_TRUE(ended.Listen(m_host.GetSocketPath("data")));
  }
  const cOutput output = Run({"services"});
  EXPECT_EQ(output.exit, eExitUnreachable);
  EXPECT_THAT(output.out, HasSubstr("ended"));
  EXPECT_EQ(output.err, "tavctl: no service answers in " + Directory() + "\n");
}

TEST_F(ServicesCommand, FailsInAnEmptyDirectory) {
  EXPECT_EQ(Run({"services"}).exit, eExitUnreachable);
  EXPECT_EQ(Run({"--json", "services"}).out, "[]\n");
}

TEST_F(ServicesCommand, SaysThatThereIsNoDirectory) {
  std::istringstream in;
  std::ostringstream out, err;
  cApplication application({in, out, err});
  EXPECT_EQ(application.Run({"--dir", m_folder.File("none"), "services"}), eExitUnreachable);
  EXPECT_EQ(err.str(), "tavctl: directory " + m_folder.File("none") + ": No such file or directory; is --dir right?\n");
}

}  // namespace
}  // namespace tav::ctl
