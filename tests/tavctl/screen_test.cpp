// SPDX-License-Identifier: Apache-2.0
#include <tavctl/screen.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace tav::ctl {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

TEST(Screen, PutsEachPictureOverTheOneBefore) {
  std::ostringstream out;
  cScreen screen(out);
  out.str("");
  screen.Show("one\ntwo\n");
  EXPECT_EQ(out.str(), "\x1b[Hone\x1b[K\ntwo\x1b[K\n\x1b[J");
}

TEST(Screen, CutsLongLinesWhileItLivesAndRestoresTheTerminal) {
  std::ostringstream out;
  { const cScreen screen(out); }
  EXPECT_THAT(out.str(), StartsWith("\x1b[?7l"));
  EXPECT_THAT(out.str(), EndsWith("\x1b[?7h"));
}

TEST(Screen, CutsAPictureThatIsTooHigh) {
  std::ostringstream out;
  cScreen screen(out);
  std::string picture;
  for (int i = 0; i < 5000; ++i) picture += "line\n";
  screen.Show(picture + "last\n");
  EXPECT_THAT(out.str(), HasSubstr("line"));
  EXPECT_THAT(out.str(), testing::Not(HasSubstr("last")));
}

}  // namespace
}  // namespace tav::ctl
