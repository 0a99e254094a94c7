// SPDX-License-Identifier: Apache-2.0
#include <tavctl/live_view.h>

#include <csignal>

#include <tavctl/exit_code.h>
#include <tavctl/failure.h>
#include <tests/tavctl/tavctl_world.h>

namespace tav::ctl {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr cColumn kColumns[] = {{"name", "NAME"}, {"value", "VALUE"}};

// Two rows, of which the first has another value with every look.
class LiveView : public TavctlWorld {
 protected:
  LiveView() {
    m_plan.columns = kColumns;
    m_plan.title = "rows";
    m_plan.count = 3;
    m_plan.key = [](const vorn::cRecord& row) { return row.GetTextPar("name"); };
    m_plan.wait = [this] { m_context.Await([] { return false; }, 1); };
    m_plan.ask = [this] {
      if (++m_looks == m_interruptAt) raise(SIGINT);
      if (m_looks == m_failAt || m_looks == m_failAt + 1) throw cFailure(m_failure, "it is not there");
      return cLiveView::Rows{Row("rising", std::to_string(m_looks)), Row("steady", "7")};
    };
  }
  static vorn::cRecord Row(const std::string& name, const std::string& value) {
    vorn::cRecord row;
    row.AppendTextPar("name", name);
    row.AppendTextPar("value", value);
    return row;
  }
  std::string View() {
    cLiveView(m_context, m_plan).Run();
    return m_out.str();
  }

  std::istringstream m_in;
  std::ostringstream m_out, m_err;
  cContext m_context{m_host, {m_in, m_out, m_err}};
  cLiveView::cPlan m_plan;
  unsigned int m_looks = 0;
  unsigned int m_interruptAt = 0;
  unsigned int m_failAt = 100;
  eExit m_failure = eExitUnreachable;
};

TEST_F(LiveView, WritesALineForEachRowThatIsNew) {
  EXPECT_EQ(View(),
            "NAME    VALUE\n"
            "rising  1\n"
            "steady  7\n"
            "rising  2\n"
            "rising  3\n");
  EXPECT_EQ(m_looks, 3u);
}

TEST_F(LiveView, WritesARowAgainThatIsAsItWasBefore) {
  m_plan.ask = [this] { return cLiveView::Rows{Row("a", ++m_looks == 2 ? "other" : "same")}; };
  EXPECT_EQ(View(), "NAME  VALUE\na     same\na     other\na     same\n");
}

TEST_F(LiveView, IsOneArrayForProgramsOnATerminalToo) {
  m_context.json = m_context.streams.terminal = true;
  const nlohmann::json rows = nlohmann::json::parse(View());
  ASSERT_EQ(rows.size(), 4u);
  EXPECT_EQ(rows[3]["value"], "3");
}

TEST_F(LiveView, IsAnEmptyArrayWithoutARow) {
  m_context.json = true;
  m_plan.ask = [] { return cLiveView::Rows(); };
  EXPECT_EQ(nlohmann::json::parse(View()).size(), 0u);
}

TEST_F(LiveView, ReplacesThePictureOnATerminal) {
  m_context.streams.terminal = true;
  const std::string out = View();
  EXPECT_THAT(out, StartsWith("\x1b[?7l\x1b[2J\x1b[H"));
  const std::string last = out.substr(out.rfind("\x1b[H"));
  EXPECT_THAT(last, HasSubstr("rows, Ctrl-C ends"));
  EXPECT_THAT(last, HasSubstr("rising  3"));
  EXPECT_THAT(last, HasSubstr("steady  7")) << "all rows, not only the new ones";
}

TEST_F(LiveView, LooksOnUntilItIsInterrupted) {
  m_plan.count = 0;
  m_interruptAt = 5;
  EXPECT_THAT(View(), HasSubstr("rising  5\n"));
  EXPECT_EQ(m_looks, 5u);
}

TEST_F(LiveView, WaitsForAServiceThatIsAwayAndSaysItOnce) {
  m_failAt = 2;
  m_plan.count = 5;
  EXPECT_THAT(View(), HasSubstr("rising  1\nsteady  7\nrising  4\nrising  5\n"));
  EXPECT_EQ(m_err.str(), "tavctl: it is not there\n");
}

TEST_F(LiveView, SaysItAgainWhenTheServiceIsAwayAgain) {
  m_plan.count = 5;
  m_plan.ask = [this] {
    if (++m_looks % 2 == 0) throw cFailure(eExitUnreachable, "it is not there");
    return cLiveView::Rows();
  };
  View();
  EXPECT_EQ(m_err.str(), "tavctl: it is not there\ntavctl: it is not there\n");
}

TEST_F(LiveView, FailsForAnyOtherReason) {
  m_failAt = 2;
  m_failure = eExitRefused;
  EXPECT_THROW(View(), cFailure);
  EXPECT_THAT(m_out.str(), Not(HasSubstr("rising  3")));
}

}  // namespace
}  // namespace tav::ctl
