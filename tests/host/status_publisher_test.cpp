// SPDX-License-Identifier: Apache-2.0
#include <gateway/host/status_publisher.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <gateway/service/status/status_set.h>
#include <tav/framework/time.h>
#include <tav/service/status_protocol.h>
#include <tests/support/parameters.h>
#include <tests/support/scm_world.h>

namespace tav::gateway {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::Ge;
using testing::IsEmpty;
using testing::Le;

// A publisher of two sources, and a service that writes down what it is told.
class StatusPublisher : public testing::Test {
 protected:
  void SetUp() override {
    m_publisher.AddSource("first", [this](cStatusValues& values) { Add(values, m_first); });
  }
  static void Add(cStatusValues& values, const cStatusValues& more) {
    for (const auto& [name, value] : more) values.Set(name, value);
  }
  void Serve() {
    m_server = std::make_unique<cRecordingServer>(&m_service, "status");
    m_server->onMessage = [](const vorn::cMsg& msg) {
      if (msg.GetType() == status::eFullSet) msg.GetReplyChannel()->Send(vorn::cMsg(status::eValues));
    };
    ASSERT_TRUE(PollUntil(m_service, [this] {
      m_clock->Advance(10);
      return m_publisher.GetProxy().m_synced;
    }));
  }
  // What the service hears, a text a parameter; version and start, which no test changes, left out.
  std::vector<std::string> Told(unsigned int type = status::eChange) {
    PollUntilIdle(m_service);
    std::vector<std::string> told;
    for (const vorn::cMsg& msg : std::exchange(m_server->messages, {})) {
      if (msg.GetType() != type) continue;
      for (const std::string& par : Parameters(msg.Record()))
        if (par.find(".version ") == std::string::npos && par.find(".started ") == std::string::npos)
          told.push_back(par);
    }
    return told;
  }
  std::vector<std::string> Publish() {
    m_publisher.Publish();
    return Told();
  }
  std::string Value(const std::string& name) const {
    std::string value;
    return m_publisher.GetProxy().Get(name, value) ? value : "none";
  }

  cTempFolder m_folder;
  std::shared_ptr<vorn::cManualClock> m_clock = std::make_shared<vorn::cManualClock>();
  vorn::cScmService m_service{"process", m_folder.GetPath(), m_clock};
  std::unique_ptr<cRecordingServer> m_server;
  cStatusPublisher m_publisher{&m_service};
  cStatusValues m_first;
};

TEST_F(StatusPublisher, NamesValuesBehindTheSourcesPrefix) {
  Serve();
  m_first = {{"a", "1"}, {"b.c", "2"}};
  Told();
  EXPECT_THAT(Publish(), ElementsAre("first.a text=1", "first.b.c text=2"));
}

TEST_F(StatusPublisher, TellsTheVersionAndTheStartOfEachSource) {
  const unsigned int before = vorn::cTime::Now().GetSeconds();
  m_publisher.AddSource("second", [](cStatusValues&) {});
  const unsigned int after = vorn::cTime::Now().GetSeconds();
  m_publisher.Publish();
  EXPECT_THAT(Value("first.version"), testing::MatchesRegex("[0-9]+\\.[0-9]+\\.[0-9]+"));
  EXPECT_EQ(Value("second.version"), Value("first.version"));
  EXPECT_THAT(Value("second.started"), AllOf(Ge(StatusTime(before)), Le(StatusTime(after))));
  const std::string started = Value("first.started");
  m_publisher.Publish();
  EXPECT_EQ(Value("first.started"), started);
}

TEST_F(StatusPublisher, TellsOnlyWhatHasChanged) {
  Serve();
  m_first = {{"a", "1"}, {"b", "1"}};
  Publish();
  EXPECT_THAT(Publish(), IsEmpty());
  EXPECT_THAT(m_server->messages, IsEmpty());
  m_first = {{"a", "1"}, {"b", "2"}, {"c", "1"}};
  EXPECT_THAT(Publish(), ElementsAre("first.b text=2", "first.c text=1"));
}

TEST_F(StatusPublisher, RemovesWhatASourceDoesNotTellAnyMore) {
  Serve();
  m_first = {{"a", "1"}, {"b", "1"}, {"c", "1"}};
  Publish();
  m_first = {{"b", "2"}};
  EXPECT_THAT(Publish(), ElementsAre("first.a text", "first.c text", "first.b text=2"));
  EXPECT_EQ(Value("first.a"), "none");
}

TEST_F(StatusPublisher, AsksAllItsSources) {
  Serve();
  cStatusValues second = {{"a", "2"}};
  m_publisher.AddSource("second", [&](cStatusValues& values) { Add(values, second); });
  m_first = {{"a", "1"}};
  EXPECT_THAT(Publish(), ElementsAre("first.a text=1", "second.a text=2"));
  second = {};
  EXPECT_THAT(Publish(), ElementsAre("second.a text")) << "the other one's has its name too";
}

TEST_F(StatusPublisher, TellsAnEmptyTextAsAValue) {
  Serve();
  m_first = {{"a", ""}};
  EXPECT_THAT(Publish(), ElementsAre("first.a text="));
}

TEST_F(StatusPublisher, BringsEverythingToAServiceThatComesLaterAndToOneThatComesBack) {
  m_first = {{"a", "1"}};
  m_publisher.Publish();
  Serve();
  EXPECT_THAT(Told(status::eFullSet), ElementsAre("first.a text=1"));
  m_server.reset();
  PollUntilIdle(m_service);
  m_first = {{"b", "2"}};
  m_publisher.Publish();
  Serve();
  EXPECT_THAT(Told(status::eFullSet), ElementsAre("first.b text=2"));
  EXPECT_THAT(Publish(), IsEmpty());
}

TEST_F(StatusPublisher, LeavesOutWhatTheServiceWouldRefuse) {
  Serve();
  const std::string name(cStatusSet::kMaxNameBytes - std::string("first.").size(), 'n');
  const std::string value(cStatusSet::kMaxValueBytes, 'v');
  m_first = {{name, "1"}, {name + "n", "2"}, {"a", value}, {"b", value + "v"}, {"c", "3"}};
  EXPECT_THAT(Publish(), ElementsAre("first.a text=" + value, "first.c text=3", "first." + name + " text=1"));
}

TEST(StatusText, IsTheSameEverywhere) {
  EXPECT_EQ(StatusText(true), "true");
  EXPECT_EQ(StatusText(false), "false");
  EXPECT_EQ(StatusTime(1'709'294'400), "2024-03-01T12:00:00Z");
  EXPECT_EQ(StatusTime(0), "");
}

}  // namespace
}  // namespace tav::gateway
