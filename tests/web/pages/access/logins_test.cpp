// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/access/logins.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tests/support/scm_world.h>

namespace tav::pages {
namespace {

class Logins : public testing::Test {
 protected:
  vorn::cUuid Begin(const std::string& name = "admin", eRole role = eRole::Admin) {
    return m_logins.Begin(name, role).sid;
  }
  bool Is(const vorn::cUuid& sid) { return m_logins.Find(sid.ToString(), false) != nullptr; }

  cTempFolder m_folder;
  cRecordingService m_service{"pages", m_folder.GetPath()};
  std::vector<vorn::cUuid> m_ended;
  cLogins m_logins{&m_service, 60, [this](const vorn::cUuid& sid) { m_ended.push_back(sid); }};
};

TEST_F(Logins, HaveAnIdentifierAndATokenOfTheirOwn) {
  const cVisitor first = m_logins.Begin("admin", eRole::Admin);
  const cVisitor second = m_logins.Begin("eve", eRole::Viewer);
  EXPECT_NE(first.sid, second.sid);
  EXPECT_NE(first.csrfToken, second.csrfToken);
  EXPECT_EQ(first.csrfToken.size(), 64u);
  EXPECT_TRUE(first.MayChange());
  EXPECT_FALSE(second.MayChange());
  EXPECT_EQ(m_logins.Find(second.sid.ToString(), true)->name, "eve");
}

TEST_F(Logins, AreFoundByTheirIdentifierOnly) {
  const vorn::cUuid sid = Begin();
  for (const std::string& text : {std::string(), std::string("nonsense"), vorn::cUuid().ToString(),
                                  sid.ToString() + "0", sid.ToString().substr(1)})
    EXPECT_EQ(m_logins.Find(text, true), nullptr) << text;
}

TEST_F(Logins, AreSessionsOfThePageFrameworkWhileTheyLast) {
  const vorn::cUuid sid = Begin();
  EXPECT_TRUE(HttpSessions.Contains(sid));
  m_logins.End(sid);
  EXPECT_FALSE(HttpSessions.Contains(sid));
  {
    cLogins others(&m_service, 60, [](const vorn::cUuid&) {});
    others.Begin("admin", eRole::Admin);
    EXPECT_EQ(HttpSessions.size(), 1u);
  }
  EXPECT_TRUE(HttpSessions.empty());
}

TEST_F(Logins, TellEachThatEndsOnce) {
  const vorn::cUuid sid = Begin();
  m_logins.End(sid);
  m_logins.End(sid);
  EXPECT_THAT(m_ended, testing::ElementsAre(sid));
  EXPECT_FALSE(Is(sid));
}

TEST_F(Logins, OfAnAccountEndButForOne) {
  const vorn::cUuid first = Begin();
  const vorn::cUuid second = Begin();
  const vorn::cUuid other = Begin("eve", eRole::Viewer);
  m_logins.EndAll("admin", second);
  EXPECT_THAT(m_ended, testing::ElementsAre(first));
  m_logins.EndAll("admin", {});
  EXPECT_THAT(m_ended, testing::ElementsAre(first, second));
  EXPECT_TRUE(Is(other));
}

TEST_F(Logins, OneMoreThanThereMayBeEndsTheOldest) {
  std::vector<vorn::cUuid> all;
  for (std::size_t i = 0; i < cLogins::kMaxLogins; ++i) all.push_back(Begin());
  EXPECT_TRUE(m_ended.empty());
  Begin();
  EXPECT_EQ(m_logins.Count(), cLogins::kMaxLogins);
  Begin();
  EXPECT_THAT(m_ended, testing::ElementsAre(all[0], all[1]));
}

}  // namespace
}  // namespace tav::pages
