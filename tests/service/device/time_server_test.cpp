// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/device/time_server.h>

#include <unistd.h>

#include <cerrno>

#include <tav/service/device_protocol.h>
#include <tav/service/tcm_io.h>
#include <tests/service/device/device_world.h>

namespace tav::gateway {
namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;

constexpr unsigned int kStart = 1'709'294'400;  // 2024-03-01T12:00:00Z

// A clock that stands still.
struct cClockLog {
  std::int64_t now = kStart;
  std::string fault;
};

class cLoggedClock final : public cWallClock {
 public:
  explicit cLoggedClock(cClockLog* log) : m_log(log) {}
  std::int64_t Now() const override { return m_log->now; }
  std::string Set(std::int64_t seconds) override {
    if (m_log->fault.empty()) m_log->now = seconds;
    return m_log->fault;
  }
  std::string GetKind() const override { return "logged"; }

 private:
  cClockLog* m_log;
};

class TimeServer : public DeviceWorld {
 protected:
  void SetUp() override {
    ASSERT_TRUE(m_server.IsListening()) << m_server.GetError();
    ASSERT_TRUE(m_client.AwaitConnection());
  }
  vorn::cMsg SetTime(unsigned int seconds, bool utc = true) {
    vorn::cRecord record;
    record.AppendTimePar("new-utc", vorn::cTime::FromSeconds(seconds, utc));
    return m_client.Ask(0x56002, record);
  }

  cClockLog m_wall;
  cTimeServer m_server{&m_host, {}, std::make_unique<cLoggedClock>(&m_wall)};
  cTestClient m_client{&m_host, "time-service"};
};

TEST_F(TimeServer, ShowsItsStateInRows) {
  const vorn::cMsg answer = m_client.Ask(0x56030);
  EXPECT_EQ(answer.GetType(), 0x56031u);
  EXPECT_THAT(Rows(answer), ElementsAre("utc=2024-03-01T12:00:00Z", "clock=logged",
                                        testing::AnyOf("synchronized=yes", "synchronized=no"), "last-set=never",
                                        "wan=unknown", "wan-since=never"));
}

TEST_F(TimeServer, SetsTheClockAndSaysFromWhenToWhen) {
  std::vector<std::string> steps;
  m_server.SetOnStep([&](const vorn::cTime& before, const vorn::cTime& after) {
    steps.push_back(before.ToISO8601String() + " " + after.ToISO8601String());
  });
  const vorn::cMsg answer = SetTime(kStart + 3600, false);
  EXPECT_EQ(answer.GetType(), 0x56003u);
  EXPECT_TRUE(answer.Record().IsEmpty());
  EXPECT_EQ(m_wall.now, kStart + 3600);
  EXPECT_THAT(steps, ElementsAre("2024-03-01T12:00:00Z 2024-03-01T13:00:00Z"));
  EXPECT_THAT(m_trace.GetLines(),
              ElementsAre("UnitGateway 4 time-service: clock (logged) set from 2024-03-01T12:00:00Z to "
                          "2024-03-01T13:00:00Z"));
  EXPECT_EQ(Row(m_server, "last-set"), "2024-03-01T13:00:00Z");
}

TEST_F(TimeServer, BoundsTheTime) {
  constexpr unsigned int kEarliest = cTimeServer::kEarliest, kLatest = cTimeServer::kLatest;
  for (const unsigned int good : {kEarliest, kEarliest + 1, kLatest - 1, kLatest})
    EXPECT_EQ(SetTime(good).GetType(), 0x56003u) << good;
  const vorn::cMsg early = SetTime(kEarliest - 1);
  EXPECT_EQ(early.GetType(), 0x56004u);
  EXPECT_EQ(Reason(early),
            "parameter \"new-utc\": expected 2024-01-01T00:00:00Z to 2099-12-31T23:59:59Z, found 2023-12-31T23:59:59Z");
  EXPECT_THAT(Reason(SetTime(kLatest + 1)), EndsWith("found 2100-01-01T00:00:00Z"));
  EXPECT_EQ(SetTime(0).GetType(), 0x56004u);
  EXPECT_EQ(m_wall.now, kLatest);
}

TEST_F(TimeServer, LetsOnlyThoseSetItWhoMay) {
  m_server.SetPolicy([](const vorn::cScmPeer&) { return false; });
  const vorn::cMsg answer = SetTime(kStart + 1);
  EXPECT_EQ(answer.GetType(), 0x56004u);
  EXPECT_THAT(Reason(answer), HasSubstr(" may not set the clock: only root and the user of this service may, uid " +
                                        std::to_string(geteuid())));
  EXPECT_EQ(m_wall.now, kStart);
  // The link may be told by everybody who is connected.
  EXPECT_EQ(m_client.Ask(0x56014).GetType(), 0x56015u);
}

TEST_F(TimeServer, SaysWhyTheClockDoesNotObey) {
  int steps = 0;
  m_server.SetOnStep([&](const vorn::cTime&, const vorn::cTime&) { ++steps; });
  m_wall.fault = "no right";
  const vorn::cMsg answer = SetTime(kStart + 1);
  EXPECT_EQ(answer.GetType(), 0x56004u);
  EXPECT_EQ(Reason(answer), "no right");
  EXPECT_THAT(m_trace.GetLines(), ElementsAre("UnitGateway 4 time-service: no right"));
  EXPECT_EQ(Row(m_server, "last-set"), "never");
  EXPECT_EQ(steps, 0);
}

TEST_F(TimeServer, KnowsTheLinkAndSinceWhen) {
  EXPECT_EQ(m_client.Ask(0x56014).GetType(), 0x56015u);
  EXPECT_EQ(Row(m_server, "wan"), "up");
  EXPECT_EQ(Row(m_server, "wan-since"), "2024-03-01T12:00:00Z");
  m_wall.now += 60;
  m_client.Ask(0x56014);  // nothing new
  EXPECT_EQ(Row(m_server, "wan-since"), "2024-03-01T12:00:00Z");
  EXPECT_EQ(m_client.Ask(0x56017).GetType(), 0x56018u);
  EXPECT_EQ(Row(m_server, "wan"), "down");
  EXPECT_EQ(Row(m_server, "wan-since"), "2024-03-01T12:01:00Z");
}

TEST_F(TimeServer, TellsItsHostOfChanges) {
  int changes = 0;
  m_server.SetOnStateChanged([&] { ++changes; });
  SetTime(kStart + 1);
  m_client.Ask(0x56014);
  EXPECT_EQ(changes, 2);
  m_client.Ask(0x56014);
  SetTime(0);
  EXPECT_EQ(changes, 2);
}

TEST_F(TimeServer, ObeysTheLibrarysClient) {
  cTcmIO client(&m_host);
  ASSERT_TRUE(PollUntil(m_host, [&] { return client.IsConnected(); }));
  vorn::cTime time = vorn::cTime::FromSeconds(kStart + 7, true);
  client.SetTimeUTC(time);
  client.WanDown();
  ASSERT_TRUE(PollUntil(m_host, [&] { return Row(m_server, "wan") == "down"; }));
  EXPECT_EQ(m_wall.now, kStart + 7);
}

class TimeServerByOptions : public DeviceWorld {};

TEST_F(TimeServerByOptions, SimulatesUnlessItIsToldOtherwise) {
  EXPECT_EQ(Row(cTimeServer(&m_host), "clock"), "simulated");
  EXPECT_EQ(Row(cTimeServer(&m_host, {"kernel"}), "clock"), "kernel");
  EXPECT_EQ(Row(cTimeServer(&m_host, {"sundial"}), "clock"), "simulated");
}

TEST(TimeOptions, NameTheKeyThatIsWrong) {
  EXPECT_EQ(cTimeOptions().Check(), "");
  EXPECT_EQ(cTimeOptions{"kernel"}.Check(), "");
  EXPECT_EQ(cTimeOptions{"sundial"}.Check(), "clock: expected \"simulated\" or \"kernel\", found \"sundial\"");
}

}  // namespace
}  // namespace tav::gateway
