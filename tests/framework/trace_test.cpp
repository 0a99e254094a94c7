// SPDX-License-Identifier: Apache-2.0
#include <tav/framework/trace.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tests/support/captured_trace.h>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;
using vorn::cUnit;

namespace {

// A unit of a level, put back to the level of a fresh one at the end.
class TraceTest : public testing::Test {
 protected:
  TraceTest() { m_unit->SetLevel(cUnit::kDefaultLevel); }

  cUnit* const m_unit = cUnit::Find("UnitTest");
};

}  // namespace

TEST_F(TraceTest, FindGivesOneUnitAName) {
  EXPECT_EQ(cUnit::Find("UnitTest"), m_unit);
  EXPECT_NE(cUnit::Find("UnitOther"), m_unit);
  EXPECT_EQ(m_unit->GetName(), "UnitTest");
}

TEST_F(TraceTest, AUnitStartsAtWarnings) { EXPECT_EQ(cUnit::Find("UnitNeverUsedBefore")->GetLevel(), 4); }

TEST_F(TraceTest, ProducesALineWhenTheUnitsLevelIsAtLeastThatOfTheLine) {
  const cCapturedTrace trace;
  m_unit->SetLevel(8);
  for (const int level : {2, 7, 8, 9, 16}) vorn::_Trace(m_unit, level, "line");
  EXPECT_THAT(trace.GetLines(), ElementsAre("UnitTest 2 line", "UnitTest 7 line", "UnitTest 8 line"));
}

TEST_F(TraceTest, DropsALineOfNoUnit) {
  const cCapturedTrace trace;
  vorn::_Trace(nullptr, 0, "line");
  vorn::Trace(nullptr, 0, "line");
  EXPECT_THAT(trace.GetLines(), IsEmpty());
}

TEST_F(TraceTest, TheSinkGetsTheBareLine) {
  const cCapturedTrace trace;
  vorn::_Trace(m_unit, 2, "two\nlines ");
  EXPECT_THAT(trace.GetLines(), ElementsAre("UnitTest 2 two\nlines "));
}

TEST_F(TraceTest, BuildsALineFromItsParts) {
  const cCapturedTrace trace;
  const std::string text = "text";
  vorn::Trace(m_unit, 4, "a ", text, ' ', 42, " ", 7u, [] { return " made"; });
  EXPECT_THAT(trace.GetLines(), ElementsAre("UnitTest 4 a text 42 7 made"));
}

TEST_F(TraceTest, BuildsNothingWhenTheLevelIsTooLow) {
  const cCapturedTrace trace;
  int built = 0;
  const auto part = [&] {
    ++built;
    return std::string("part");
  };
  vorn::Trace(m_unit, 16, part);
  EXPECT_EQ(built, 0);
  m_unit->SetLevel(16);
  vorn::Trace(m_unit, 16, part);
  EXPECT_EQ(built, 1);
  EXPECT_THAT(trace.GetLines(), ElementsAre("UnitTest 16 part"));
}

TEST_F(TraceTest, ASinkMayReplaceItself) {
  int lines = 0;
  vorn::SetTraceSink([&](const cUnit&, int, const std::string&) {
    ++lines;
    vorn::SetTraceSink([&](const cUnit&, int, const std::string&) { lines += 10; });
  });
  vorn::_Trace(m_unit, 2, "first");
  vorn::_Trace(m_unit, 2, "second");
  vorn::SetTraceSink({});
  EXPECT_EQ(lines, 11);
}

TEST_F(TraceTest, TheDefaultSinkWritesATimeStampAndTheUnitToStandardError) {
  if (std::getenv("JOURNAL_STREAM") != nullptr) GTEST_SKIP() << "standard error goes to the journal: no time stamps";
  testing::internal::CaptureStderr();
  vorn::_Trace(m_unit, 2, "line");
  const std::string written = testing::internal::GetCapturedStderr();
  EXPECT_THAT(written, MatchesRegex("[0-9]+-[0-9]+-[0-9]+ [0-9]+:[0-9]+:[0-9]+[.][0-9][0-9][0-9] UnitTest: line\n"));
}

TEST_F(TraceTest, TheDefaultSinkKeepsALineWithBreaksTogether) {
  testing::internal::CaptureStderr();
  vorn::_Trace(m_unit, 2, "first\nsecond\n\nlast");
  const std::string written = testing::internal::GetCapturedStderr();
  EXPECT_THAT(written, testing::EndsWith("UnitTest: first\n  second\n  \n  last\n"));
}

TEST_F(TraceTest, AnEmptySinkRestoresTheDefaultOne) {
  { const cCapturedTrace trace; }
  testing::internal::CaptureStderr();
  vorn::_Trace(m_unit, 2, "line");
  EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::EndsWith("UnitTest: line\n"));
}
