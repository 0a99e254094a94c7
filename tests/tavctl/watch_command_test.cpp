// SPDX-License-Identifier: Apache-2.0
#include <tavctl/watch_command.h>

#include <csignal>

#include <tests/tavctl/tavctl_world.h>

namespace tav::ctl {
namespace {

using testing::HasSubstr;

// Two values; the first one rises by one with every look.
class WatchCommand : public TavctlWithAnswers {
 protected:
  void SetUp() override {
    Answer([this](const vorn::cMsg& request) {
      if (++m_looks == m_interruptAt) raise(SIGINT);
      if (m_looks == m_failAt) return Message(0);
      vorn::cRecord page;
      page.AppendRecordPar("row", Value("1-0:1.8.0", std::to_string(m_looks)));
      page.AppendRecordPar("row", Value("1-0:16.7.0", "7"));
      return Message(request.GetType() + 1, page);
    });
  }
  static vorn::cRecord Value(const std::string& obis, const std::string& value) {
    vorn::cRecord row = Text("meterID", "M");
    row.AppendTextPar("obis-id", obis);
    row.AppendTextPar("value", value);
    row.AppendTextPar("unit", "W");
    row.AppendUIntPar("timestamp", kNoon);
    row.AppendTextPar("time-source", "RTC");
    return row;
  }

  unsigned int m_looks = 0;
  unsigned int m_interruptAt = 0;
  unsigned int m_failAt = 0;
};

TEST_F(WatchCommand, WritesALineForEachNewValue) {
  const cOutput output = Run({"watch", "--count", "3", "--interval", "0.1"});
  EXPECT_EQ(output.exit, eExitDone);
  EXPECT_EQ(output.out,
            "METER  OBIS        VALUE    TIME                       TIME FROM\n"
            "M      1-0:1.8.0       1 W  2023-11-14T23:13:20+01:00  RTC\n"
            "M      1-0:16.7.0      7 W  2023-11-14T23:13:20+01:00  RTC\n"
            "M      1-0:1.8.0       2 W  2023-11-14T23:13:20+01:00  RTC\n"
            "M      1-0:1.8.0       3 W  2023-11-14T23:13:20+01:00  RTC\n");
}

TEST_F(WatchCommand, TellsHowOftenItLooks) {
  EXPECT_THAT(Run({"watch", "--count", "1", "--interval", "0.1"}, "", true).out, HasSubstr("every 0.1 s, Ctrl-C ends"));
}

TEST_F(WatchCommand, AsksForTheMeterThatIsNamed) {
  Run({"watch", "M", "--count", "1"});
  ASSERT_EQ(m_server.messages.size(), 1u);
  EXPECT_EQ(m_server.messages[0].Record().GetRecordPar("meter-request").GetTextPar("meterID"), "M");
}

TEST_F(WatchCommand, EndsCleanlyWhileItWaitsForAnAnswer) {
  m_interruptAt = m_failAt = 2;
  const cOutput output = Run({"--json", "watch", "--interval", "0.1"});
  EXPECT_EQ(output.exit, eExitDone);
  EXPECT_EQ(output.Json().size(), 2u);
  EXPECT_EQ(output.err, "");
}

TEST_F(WatchCommand, GoesOnWhenAnAnswerIsMissing) {
  m_failAt = 2;
  const cOutput output = Run({"--timeout", "0.1", "watch", "--count", "3", "--interval", "0.1"});
  EXPECT_EQ(output.exit, eExitDone);
  EXPECT_THAT(output.err, HasSubstr("did not answer get-last-values within 0.1 s"));
  EXPECT_THAT(output.out, HasSubstr("1-0:1.8.0       3 W"));
}

TEST_F(WatchCommand, FailsWhenItIsRefused) {
  Answer([](const vorn::cMsg& request) { return Message(request.GetType() + 2, Text("reason", "no")); });
  EXPECT_EQ(Run({"watch"}).exit, eExitRefused);
}

}  // namespace
}  // namespace tav::ctl
