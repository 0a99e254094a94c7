// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/view/overview_page.h>

#include <tests/web/pages/pages_world.h>

namespace tav::pages {
namespace {

using testing::HasSubstr;
using testing::Not;

using OverviewPage = cPagesWorld;

unsigned int Now() { return vorn::cTime::Now().GetSeconds(); }

TEST_F(OverviewPage, SaysThatNothingHasBeenReadYet) {
  Enter();
  EXPECT_THAT(Get("/").body, HasSubstr("No meter has been read yet."));
}

TEST_F(OverviewPage, ShowsACardForEachMeter) {
  Enter();
  Store("m1", Now(), {{"1-0:1.8.0", "100.50", "Wh"}});
  Store("m2", Now(), {{"8-0:1.0.0", "7", "m3"}}, "W");
  const std::string body = Get("/").body;
  EXPECT_THAT(body, HasSubstr("<a href=\"/meter?id=m1\">m1</a>"));
  EXPECT_THAT(body, HasSubstr("<a href=\"/meter?id=m2\">m2</a>"));
  EXPECT_THAT(body, HasSubstr("data-live=\"m1 1-0:1.8.0\">100.50</span> <span class=\"unit\">Wh</span>"));
  EXPECT_THAT(body, HasSubstr("<span class=\"state ok\">ok</span>"));
}

TEST_F(OverviewPage, ACardHasTheMostTellingValues) {
  Enter();
  Store("m1", Now(),
        {{"1-0:96.1.0", "id", ""},
         {"1-0:99.1.0", "1", ""},
         {"1-0:99.2.0", "2", ""},
         {"1-0:99.3.0", "3", ""},
         {"1-0:16.7.0", "230", "W"},
         {"1-0:1.8.0", "100", "Wh"}});
  const std::string body = Get("/").body;
  const std::size_t energy = body.find("data-live=\"m1 1-0:1.8.0\"");
  const std::size_t power = body.find("data-live=\"m1 1-0:16.7.0\"");
  ASSERT_NE(energy, std::string::npos);
  ASSERT_NE(power, std::string::npos);
  EXPECT_LT(energy, power);
  std::size_t count = 0;
  for (std::size_t at = body.find("class=\"reading\""); at != std::string::npos;
       at = body.find("class=\"reading\"", at + 1))
    ++count;
  EXPECT_EQ(count, cOverviewPage::kValuesOfMeter);
}

TEST_F(OverviewPage, HostileTextsOfAMeterAreText) {
  Enter();
  Store("<b>&\"m", Now(), {{"1-0:1.8.0", "<script>alert(1)</script>", "\"><i>"}});
  const std::string body = Get("/").body;
  EXPECT_THAT(body, HasSubstr("/meter?id=%3Cb%3E%26%22m"));
  EXPECT_THAT(body, HasSubstr("&lt;script&gt;alert(1)&lt;/script&gt;"));
  EXPECT_THAT(body, Not(HasSubstr("<b>")));
  EXPECT_THAT(body, Not(HasSubstr("<i>")));
  EXPECT_THAT(body, Not(HasSubstr("<script>alert")));
}

TEST_F(OverviewPage, ShowsMoreMetersThanOneAnswerHolds) {
  Enter();
  cRecordingClient driver(m_gateway.get(), "data");
  std::size_t stored = 0;
  driver.onMessage = [&](const vorn::cMsg& answer) { stored += answer.GetType() == db_ctrl::eMeterRecStored ? 1 : 0; };
  ASSERT_TRUE(PollUntil(*m_gateway, [&] { return driver.IsConnected(); }));
  constexpr std::size_t kMeters = 300;
  for (std::size_t i = 0; i < kMeters; ++i) {
    const std::string id = "meter" + std::to_string(i);
    cMeterRecord reading("test", "TAV", "E", id, "1", "ok", Now(), cMeterTav::eTsRtc, vorn::GetOSC());
    reading.SetInterfaceInfo("SIM", "SML", {});
    for (int value = 0; value < 5; ++value)
      reading.AddMeasurementEntry(
          cMeasurementEntry("1-0:" + std::to_string(value + 1) + ".8.0", "1", "Wh", Now(), cMeterTav::eTsRtc));
    vorn::cMsg msg(db_ctrl::eStoreMeterRec);
    msg.Record().AppendRecordPar(db_ctrl::kMeterRecord, reading.ToRecord());
    ASSERT_EQ(driver.Send(msg), 1);
  }
  ASSERT_TRUE(PollUntil(*m_gateway, [&] { return stored == kMeters; }));
  const std::string body = Get("/").body;
  for (std::size_t i = 0; i < kMeters; ++i)
    ASSERT_THAT(body, HasSubstr("data-live=\"meter" + std::to_string(i) + " 1-0:1.8.0\"")) << i;
  EXPECT_EQ(Statistic("results"), 0u);
}

TEST(MeterState, IsToldByTimeAndStatus) {
  const auto state = [](const std::string& status, unsigned int heard, unsigned int now) {
    cMeterStatus meter("m1", "1", "E", "TAV");
    meter.SetStatus(status);
    meter.SetLastReplyReceived(heard, cMeterTav::eTsRtc);
    return StateOf(meter, now);
  };
  constexpr unsigned int kNow = 1'700'000'000;
  EXPECT_EQ(state("ok", kNow, kNow).mark, "ok");
  EXPECT_EQ(state("OK", kNow, kNow).mark, "ok");
  EXPECT_EQ(state("", kNow, kNow).word, "ok");
  EXPECT_EQ(state("ok", kNow - 3600, kNow).mark, "ok");
  EXPECT_EQ(state("ok", kNow - 3601, kNow).word, "silent");
  EXPECT_EQ(state("ok", 0xFFFFFFFF, kNow).mark, "ok") << "the clock of a meter may be ahead";
  EXPECT_EQ(state("broken", kNow, kNow).mark, "bad");
  EXPECT_EQ(StateMark(state("<b>", kNow, kNow)).GetText(), "<span class=\"state bad\">&lt;b&gt;</span>");
  EXPECT_EQ(StateMark({"silent", "warn"}).GetText(), "<span class=\"state warn\">silent</span>");
}

}  // namespace
}  // namespace tav::pages
