// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/view/status_page.h>

#include <unistd.h>

#include <tav/service/status_proxy.h>
#include <tests/web/pages/pages_world.h>

namespace tav::pages {
namespace {

using testing::HasSubstr;
using testing::Not;

class StatusPage : public cPagesWorld {
 protected:
  void Publish(const std::string& name, const std::string& value) {
    if (!m_process) {
      m_process = std::make_unique<cRecordingService>("publisher", m_folder.GetPath());
      m_proxy = std::make_unique<cStatusProxy>(m_process.get());
      ASSERT_TRUE(Await([&] {
        m_process->Poll(0);
        return m_proxy->m_synced;
      }));
    }
    m_proxy->SingleSet(name, value);
    ASSERT_TRUE(Await([&] {
      m_process->Poll(0);
      std::string known;
      return m_pages->GetGateway().status.Get(name, known) && known == value;
    }));
  }

  std::unique_ptr<cRecordingService> m_process;
  std::unique_ptr<cStatusProxy> m_proxy;
};

TEST_F(StatusPage, ShowsEachValueWithItsProcess) {
  Enter();
  Publish("test.state", "well & alive");
  const cAnswer answer = Get("/status");
  EXPECT_EQ(answer.Status(), 200u);
  EXPECT_THAT(answer.body, HasSubstr("<td data-live=\"test.state\">well &amp; alive</td><td>"));
  EXPECT_THAT(answer.body, HasSubstr(" (" + std::to_string(getpid()) + ")</td>"));
  EXPECT_THAT(answer.body, HasSubstr("<span class=\"state ok\">connected</span>"));
}

TEST_F(StatusPage, MarksWhatAProcessLeftBehind) {
  Enter();
  Publish("test.state", "well");
  m_proxy.reset();
  m_process.reset();
  EXPECT_TRUE(Await([this] { return Get("/status").body.find(">gone</span>") != std::string::npos; }));
}

TEST_F(StatusPage, ShowsTheValuesWhoseNameBeginsSo) {
  Enter();
  Publish("test.one", "1");
  Publish("other.two", "2");
  const std::string body = Get("/status", {{"prefix", "test."}}).body;
  EXPECT_THAT(body, HasSubstr("test.one"));
  EXPECT_THAT(body, Not(HasSubstr("other.two")));
  EXPECT_THAT(Get("/status", {{"prefix", "<b>"}}).body, HasSubstr("No value has such a name."));
}

TEST_F(StatusPage, HostileNamesAndValuesAreText) {
  Enter();
  Publish("test.\"><script>", "<script>alert(1)</script>");
  const std::string body = Get("/status").body;
  EXPECT_THAT(body, HasSubstr("data-live=\"test.&quot;&gt;&lt;script&gt;\""));
  EXPECT_THAT(body, Not(HasSubstr("<script>alert")));
}

TEST_F(StatusPage, SaysWhenTheServiceIsAway) {
  Enter();
  EndService("status");
  ASSERT_TRUE(Await([&] { return !m_pages->GetGateway().status.IsConnected(); }));
  const cAnswer answer = Get("/status");
  EXPECT_EQ(answer.Status(), 503u);
  EXPECT_THAT(answer.body, HasSubstr("The service &quot;status&quot; is away."));
}

}  // namespace
}  // namespace tav::pages
