// SPDX-License-Identifier: Apache-2.0
#include <tavctl/progress.h>

#include <gtest/gtest.h>

#include <sstream>

#include <tests/support/temp_folder.h>

namespace tav::ctl {
namespace {

class Progress : public testing::Test {
 protected:
  std::string Shown(bool terminal, std::chrono::milliseconds delay) {
    std::istringstream in;
    std::ostringstream out, err;
    vorn::cScmService service("tavctl-test", m_folder.GetPath());
    const cContext context{service, {in, out, err, terminal, false}};
    {
      cProgress progress(context, "work", 2, delay);
      for (int i = 0; i < 3; ++i) progress.Step();
    }
    EXPECT_EQ(out.str(), "");
    return err.str();
  }
  cTempFolder m_folder;
};

TEST_F(Progress, IsABarThatGoesAway) {
  const std::string half = std::string(15, '#') + std::string(15, '.'), whole(30, '#');
  EXPECT_EQ(Shown(true, std::chrono::milliseconds(0)),
            "\r\x1b[Kwork [" + half + "] 1/2\r\x1b[Kwork [" + whole + "] 2/2\r\x1b[Kwork [" + whole + "] 2/2\r\x1b[K");
}

TEST_F(Progress, LeavesItsLineToWhatIsPutOut) {
  std::istringstream in;
  std::ostringstream out, err;
  vorn::cScmService service("tavctl-test", m_folder.GetPath());
  const cContext context{service, {in, out, err, true, false}};
  cProgress progress(context, "work", 2, std::chrono::milliseconds(0));
  progress.Clear();
  EXPECT_EQ(err.str(), "") << "nothing was shown";
  progress.Step();
  const std::string shown = err.str();
  progress.Clear();
  progress.Clear();
  EXPECT_EQ(err.str(), shown + "\r\x1b[K");
}

TEST_F(Progress, IsNotShownOffATerminalNorForWhatIsDoneSoon) {
  EXPECT_EQ(Shown(false, std::chrono::milliseconds(0)), "");
  EXPECT_EQ(Shown(true, std::chrono::hours(1)), "");
}

}  // namespace
}  // namespace tav::ctl
