// SPDX-License-Identifier: Apache-2.0
#include <tests/web/static/static_fixture.h>

#include <filesystem>

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

class MeterChart : public cStaticFixture {
 protected:
  void SetUp() override {
    if (!std::filesystem::exists(kChartJs)) GTEST_SKIP() << "there is no Chart.js here; install libjs-chart.js";
    cStaticFixture::SetUp();
  }
  void GiveValues(const std::string& json) { Give("/api/values", {200, "application/json", json}); }
  void ShowChart(const std::string& more = {},
                 const std::vector<std::string>& scripts = {"chart.js", "meter_chart.js"}) {
    Show(
        "<div class='chart'><canvas id='c' data-chart='/api/values?meter=1' data-chart-summary='s'></canvas></div>"
        "<p class='chart-summary' id='s'></p>" +
            more,
        scripts);
  }
  std::string AwaitSummary(const std::string& part) { return m_browser->AwaitText("#s", part); }
  // The labels of the axis of time, as they are drawn, parts of one joined by a blank.
  std::string Marks() {
    return m_browser->Execute(
        "return Chart.getChart('c').scales.x.ticks.map((tick) => [tick.label].flat().join(' ')).join(', ')");
  }
  // Whether anything but nothing is drawn.
  bool IsDrawn() {
    return m_browser->Execute(
        "const c = document.querySelector('#c');"
        "return c.getContext('2d').getImageData(0, 0, c.width, c.height).data.some((byte) => byte)");
  }
};

}  // namespace

TEST_F(MeterChart, DrawsTheValuesAndTellsThemInWords) {
  GiveValues(
      R"({"label":"Energy","unit":"Wh","points":[[1393675200,5],[1393678800,2.5],[1393682400,null],[1393686000,4]]})");
  ShowChart();
  const std::string text = AwaitSummary("last");
  EXPECT_THAT(text, StartsWith("Energy: 3 values: lowest 2.5 Wh ("));
  EXPECT_THAT(text, HasSubstr("highest 5 Wh ("));
  EXPECT_THAT(text, HasSubstr("last 4 Wh ("));
  EXPECT_EQ(m_browser->Attribute("#c", "aria-label"), text);
  EXPECT_EQ(m_browser->Attribute("#c", "role"), "img");
  EXPECT_TRUE(IsDrawn());
  EXPECT_THAT(Asked("/api/values"), ElementsAre("/api/values?meter=1"));
}

TEST_F(MeterChart, MarksTheTimeRoundly) {
  GiveValues(R"({"label":"","unit":"W","points":[[1393675260,1],[1393678800,2]]})");
  ShowChart();
  AwaitSummary("2 values");
  EXPECT_THAT(Marks(), testing::MatchesRegex("[0-9]+:[0-9][05] Mar 1(, [0-9]+:[0-9][05]( Mar [0-9]+)?)+"));
}

TEST_F(MeterChart, MarksDaysWhereTheyAreMany) {
  GiveValues(R"({"label":"","unit":"W","points":[[1393675200,1],[1394884800,2]]})");
  ShowChart();
  AwaitSummary("2 values");
  EXPECT_THAT(Marks(), testing::MatchesRegex("Mar [0-9]+(, Mar [0-9]+)+"));
}

TEST_F(MeterChart, OfOneValueIsDrawnToo) {
  GiveValues(R"({"label":"","unit":"","points":[[1393675200,7]]})");
  ShowChart();
  EXPECT_THAT(AwaitSummary("1 value"), StartsWith("1 value: lowest 7 ("));
  EXPECT_TRUE(IsDrawn());
}

TEST_F(MeterChart, WithoutValuesSaysSo) {
  for (const char* points : {"[]", "[[1393675200,null]]"}) {
    GiveValues(std::string(R"({"label":"Energy","unit":"Wh","points":)") + points + "}");
    ShowChart();
    EXPECT_EQ(AwaitSummary("no values"), "Energy: There are no values in this time.");
  }
}

TEST_F(MeterChart, ShowsWhatWentWrongAsText) {
  m_expectsFailures = true;
  const std::vector<std::pair<cTinyServer::cAnswer, std::string>> kWrong = {
      {{503, "text/html", "busy"}, "the gateway answered 503"},
      {{200, "text/html", "<h1>Sign in</h1>"}, "is the session over?"},
      {{200, "application/json", "{}"}, "without points"},
      {{200, "application/json", "{"}, "JSON"},
  };
  for (const auto& [answer, reason] : kWrong) {
    Give("/api/values", answer);
    ShowChart();
    EXPECT_THAT(AwaitSummary("cannot be shown"), HasSubstr(reason));
    EXPECT_FALSE(m_browser->Execute("return document.querySelector('.chart').checkVisibility()").get<bool>());
  }
  ShowChart("", {"meter_chart.js"});
  EXPECT_THAT(AwaitSummary("cannot be shown"), HasSubstr("Chart.js is missing"));
}

TEST_F(MeterChart, FollowsItsFormWithoutANewPage) {
  GiveValues(R"({"label":"all","unit":"Wh","points":[[1393675200,1]]})");
  ShowChart(
      "<form class='range' data-chart-form='c'><input name='from' id='from'><input name='to' id='to' value=''>"
      "<button>Show</button></form>");
  AwaitSummary("all: 1 value");
  m_browser->Execute("window.same = true");
  GiveValues(R"({"label":"some","unit":"Wh","points":[[1393675200,1],[1393675300,2]]})");
  m_browser->Type("#from", "2014-03-01");
  m_browser->Click("button");
  AwaitSummary("some: 2 values");
  EXPECT_EQ(Asked("/api/values").back(), "/api/values?meter=1&from=2014-03-01");
  EXPECT_THAT(m_browser->GetUrl(), EndsWith("/?from=2014-03-01"));
  EXPECT_EQ(m_browser->Execute("return window.same"), true);
}

TEST_F(MeterChart, HasTheColoursOfTheStyleInLightAndDark) {
  m_browser->SetMedia("prefers-color-scheme", "light");
  GiveValues(R"({"label":"","unit":"Wh","points":[[1393675200,1],[1393675300,2]]})");
  ShowChart();
  AwaitSummary("2 values");
  const std::string colour = "return Chart.getChart('c').data.datasets[0].borderColor";
  const nlohmann::json light = m_browser->Execute(colour);
  m_browser->SetMedia("prefers-color-scheme", "dark");
  m_browser->Await("other colours", [&] { return m_browser->Execute(colour) != light; });
}
