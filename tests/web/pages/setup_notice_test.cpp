// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/setup_notice.h>

#include <tests/web/pages/pages_world.h>

namespace tav::pages {
namespace {

class SetupNotice : public cPagesWorld {
 protected:
  void SetUp() override {
    cPagesWorld::SetUp();
    StartPages(m_clock);
  }
  void TearDown() override {
    m_notice.reset();
    cPagesWorld::TearDown();
  }
  void Watch() {
    m_notice = std::make_unique<cSetupNotice>(*m_pages, [this](const std::string& text) { m_said.push_back(text); });
  }
  void Look(unsigned int times = 1) {
    for (unsigned int i = 0; i < times; ++i) {
      m_clock->Advance(cSetupNotice::kLookMs);
      PollUntilIdle(*m_pages);
    }
  }
  std::string Notice(const std::string& address) {
    return "no password is set yet: set it at " + address + "/setup?code=" + m_pages->GetAccess().GetSetupCode();
  }

  std::shared_ptr<vorn::cManualClock> m_clock = std::make_shared<vorn::cManualClock>();
  std::vector<std::string> m_said;
  std::unique_ptr<cSetupNotice> m_notice;
};

TEST_F(SetupNotice, NamesTheAddressAsSoonAsItIsKnown) {
  Watch();
  Look(3);
  EXPECT_THAT(m_said, testing::IsEmpty());
  m_pages->GetGateway().status.SingleSet("web.address", "http://gateway:8080/");
  Look(3);
  EXPECT_THAT(m_said, testing::ElementsAre(Notice("http://gateway:8080")));
}

TEST_F(SetupNotice, ComesWithoutAnAddressInTheEnd) {
  Watch();
  Look(cSetupNotice::kLooks - 1);
  EXPECT_THAT(m_said, testing::IsEmpty());
  Look();
  EXPECT_THAT(m_said, testing::ElementsAre(Notice("")));
  Look(cSetupNotice::kLooks);
  EXPECT_EQ(m_said.size(), 1u) << "once";
}

TEST_F(SetupNotice, SaysNothingWhenThereIsAPassword) {
  MakeAccount();
  Watch();
  Look(2 * cSetupNotice::kLooks);
  EXPECT_THAT(m_said, testing::IsEmpty());
}

TEST_F(SetupNotice, SaysNothingWhenThePasswordWasSetMeanwhile) {
  Watch();
  Look();
  MakeAccount();
  Look(2 * cSetupNotice::kLooks);
  EXPECT_THAT(m_said, testing::IsEmpty());
}

}  // namespace
}  // namespace tav::pages
