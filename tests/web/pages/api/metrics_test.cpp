// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/api/metrics.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tests/web/pages/pages_world.h>

namespace tav::pages {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

TEST(Metrics, WritesAFamilyWithItsSamples) {
  cMetrics metrics;
  metrics.BeginGauge("tav_time_seconds", "A time", "seconds");
  metrics.Add({{"meter", "A"}, {"obis", "1-0:1.8.0"}}, "12.50");
  metrics.Add({}, "-3");
  EXPECT_EQ(metrics.ToText(),
            "# TYPE tav_time_seconds gauge\n"
            "# UNIT tav_time_seconds seconds\n"
            "# HELP tav_time_seconds A time\n"
            "tav_time_seconds{meter=\"A\",obis=\"1-0:1.8.0\"} 12.50\n"
            "tav_time_seconds -3\n"
            "# EOF\n");
}

TEST(Metrics, EndsEvenWhenThereIsNothing) { EXPECT_EQ(cMetrics().ToText(), "# EOF\n"); }

TEST(Metrics, LeavesOutWhatIsNoNumber) {
  for (const char* text : {"", "open", "1e5", "0x10", "NaN", "1 2", "1.", ".5", "1\n2", "--1", "007"}) {
    cMetrics metrics;
    metrics.BeginGauge("a", "b");
    metrics.Add({}, text);
    EXPECT_EQ(metrics.ToText(), "# TYPE a gauge\n# HELP a b\n# EOF\n") << text;
  }
}

TEST(Metrics, EscapesLabels) {
  cMetrics metrics;
  metrics.BeginGauge("a", "one\ntwo");
  metrics.Add({{"meter", "quote \" slash \\ line\n end"}, {"unit", "m\xB3"}}, "1");
  EXPECT_EQ(metrics.ToText(),
            "# TYPE a gauge\n# HELP a one\\ntwo\n"
            "a{meter=\"quote \\\" slash \\\\ line\\n end\",unit=\"m\xC2\xB3\"} 1\n# EOF\n");
}

using MetricsPage = cPagesWorld;

TEST_F(MetricsPage, TellsLastValuesAndStatus) {
  Enter();
  Store("METER1", 1709294400, {{"1-0:1.8.0", "1234.5", "Wh"}, {"0-0:96.1.0", "text", ""}});
  m_pages->GetGateway().status.SingleSet("data.readings", "42");
  m_pages->GetGateway().status.SingleSet("data.version", "3.0.0");
  const cAnswer answer = Get("/metrics");
  EXPECT_EQ(answer.Header("Content-Type"), "application/openmetrics-text; version=1.0.0; charset=utf-8");
  EXPECT_THAT(answer.body, HasSubstr("tav_meter_value{meter=\"METER1\",obis=\"1-0:1.8.0\",name=\""));
  EXPECT_THAT(answer.body, HasSubstr("\",unit=\"Wh\"} 1234.5\n"));
  EXPECT_THAT(answer.body,
              HasSubstr("tav_meter_value_timestamp_seconds{meter=\"METER1\",obis=\"1-0:1.8.0\"} 1709294400\n"));
  EXPECT_THAT(answer.body, HasSubstr("tav_status{name=\"data.readings\"} 42\n"));
  EXPECT_THAT(answer.body, Not(HasSubstr("3.0.0")));
  EXPECT_THAT(answer.body, EndsWith("# EOF\n"));
}

}  // namespace
}  // namespace tav::pages
