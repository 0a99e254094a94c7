// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/view/meter_page.h>

#include <tests/web/pages/pages_world.h>

namespace tav::pages {
namespace {

using testing::HasSubstr;
using testing::Not;

class MeterPage : public cPagesWorld {
 protected:
  void SetUp() override {
    cPagesWorld::SetUp();
    Enter();
  }
  std::string Page(const cFields& more = {}) {
    cFields query = {{"id", "m1"}};
    query.insert(query.end(), more.begin(), more.end());
    return Get("/meter", query).body;
  }
};

TEST_F(MeterPage, ShowsAMeterWithAllItsValues) {
  Store("m1", 1'700'000'000, {{"1-0:1.8.0", "100.50", "Wh"}, {"1-0:96.1.0", "text", ""}});
  const std::string body = Page();
  EXPECT_THAT(body, HasSubstr("<h1>Meter m1</h1>"));
  EXPECT_THAT(body, HasSubstr("<dt>Manufacturer</dt><dd>TAV</dd>"));
  EXPECT_THAT(body, HasSubstr("data-live=\"m1 1-0:1.8.0\">100.50</td><td>Wh</td>"));
  EXPECT_THAT(body, HasSubstr("data-live=\"m1 1-0:96.1.0\">text</td>"));
  EXPECT_THAT(body, HasSubstr("<span class=\"state warn\">silent</span>"));
}

TEST_F(MeterPage, DrawsACurveOfANumber) {
  Store("m1", 1'700'000'000, {{"1-0:96.1.0", "text", ""}, {"1-0:1.8.0", "100", "Wh"}});
  EXPECT_THAT(
      Page(),
      HasSubstr("data-chart=\"/api/series?meter=m1&amp;obis=1-0%3A1.8.0&amp;profile=&amp;from=-24h&amp;to=now\""));
  const std::string chosen = Page({{"obis", "1-0:1.8.0"}, {"from", "-7d"}, {"to", "today"}});
  EXPECT_THAT(chosen, HasSubstr("from=-7d&amp;to=today\""));
  EXPECT_THAT(chosen, HasSubstr("name=\"from\" value=\"-7d\""));
  EXPECT_THAT(
      chosen,
      HasSubstr("/download?meter=m1&amp;obis=1-0%3A1.8.0&amp;profile=&amp;from=-7d&amp;to=today&amp;format=csv"));
}

TEST_F(MeterPage, WithoutANumberThereIsNoCurve) {
  Store("m1", 1'700'000'000, {{"1-0:96.1.0", "text", ""}});
  EXPECT_THAT(Page(), Not(HasSubstr("data-chart")));
}

TEST_F(MeterPage, SaysThatThereIsNoSuchMeter) {
  Store("m1", 1'700'000'000, {{"1-0:1.8.0", "100", "Wh"}});
  EXPECT_EQ(Get("/meter").Status(), 400u);
  EXPECT_EQ(Get("/meter", {{"id", "m2"}}).Status(), 404u);
  EXPECT_EQ(Get("/meter", {{"id", "m%"}}).Status(), 404u);
}

TEST_F(MeterPage, HostileTextsAreText) {
  const std::string id = "<b>\"'&m";
  Store(id, 1'700'000'000, {{"1-0:1.8.0", "1", "<i>"}, {"1-0:2.8.0", "<script>alert(1)</script>", ""}});
  const std::string body = Get("/meter", {{"id", id}, {"obis", "\"><u>"}, {"from", "\"><s>"}, {"profile", "<q>"}}).body;
  for (const char* markup : {"<b>", "<i>", "<u>", "<s>", "<q>", "<script>alert"})
    EXPECT_THAT(body, Not(HasSubstr(markup))) << markup;
}

// ---- the points of the curve

TEST_F(MeterPage, ItsCurveIsGivenAsJson) {
  Store("m1", 1'700'000'000, {{"1-0:1.8.0", "100.50", "m\xB3"}});
  Store("m1", 1'700'000'060, {{"1-0:1.8.0", "text", "Wh"}});
  const cAnswer answer = Get("/api/series", {{"meter", "m1"}, {"obis", "1-0:1.8.0"}, {"from", "1700000000"}});
  EXPECT_EQ(answer.Header("Content-Type"), "application/json");
  EXPECT_THAT(
      answer.body,
      HasSubstr("\"obis\":\"1-0:1.8.0\",\"unit\":\"Wh\",\"points\":[[1700000000,100.50],[1700000060,null]]}\n"));
  EXPECT_EQ(Statistic("results"), 0u);
}

TEST_F(MeterPage, ItsCurveSaysWhatIsMissing) {
  EXPECT_EQ(Get("/api/series", {{"meter", "m1"}}).body, "obis: expected an OBIS identifier\n");
  EXPECT_EQ(Get("/api/series", {{"obis", "1-0:1.8.0"}}).body, "meter: expected the identifier of a meter\n");
  EXPECT_EQ(Get("/api/series", {{"meter", "m1"}, {"obis", "1-0:1.8.0"}, {"to", "never"}}).Status(), 400u);
}

TEST_F(MeterPage, ItsCurveIsEmptyWhereThereIsNothing) {
  EXPECT_THAT(Get("/api/series", {{"meter", "m1"}, {"obis", "<b>\"x"}}).body,
              HasSubstr("\"label\":\"<b>\\\"x\",\"obis\":\"<b>\\\"x\",\"unit\":\"\",\"points\":[]}"));
}

}  // namespace
}  // namespace tav::pages
