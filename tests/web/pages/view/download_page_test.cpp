// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/view/download_page.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include <tav/service/db_ctrl_io.h>
#include <tests/web/pages/pages_world.h>

namespace tav::pages {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class DownloadPage : public cPagesWorld {
 protected:
  static constexpr unsigned int kBegin = 1'700'000'000;

  void SetUp() override {
    cPagesWorld::SetUp();
    Enter();
  }
  // Readings a minute apart, of two values each.
  void StoreMany(unsigned int count) {
    cDbCtrlIO driver(m_gateway.get(), "test-driver");
    ASSERT_TRUE(PollUntil(*m_gateway, [&] { return driver.IsConnected(); }));
    std::list<cMeterRecord> readings;
    for (unsigned int i = 0; i < count; ++i) {
      const unsigned int utc = kBegin + 60 * i;
      cMeterRecord reading("test", "TAV", "E", "m1", "1", "ok", utc, cMeterTav::eTsRtc, vorn::GetOSC());
      reading.SetInterfaceInfo("SIM", "SML", {});
      reading.AddMeasurementEntry(cMeasurementEntry("1-0:1.8.0", std::to_string(i), "Wh", utc, cMeterTav::eTsRtc));
      reading.AddMeasurementEntry(
          cMeasurementEntry("1-0:2.8.0", "0." + std::to_string(i), "Wh", utc, cMeterTav::eTsRtc));
      readings.push_back(reading);
    }
    ASSERT_TRUE(driver.StoreMeterRec(readings));
    ASSERT_TRUE(PollUntil(*m_gateway, [&] { return Statistic("readings-since-start") == count; }));
  }
  static cFields Query(const cFields& more = {}) {
    cFields query = {{"meter", "m1"}, {"format", "csv"}};
    query.insert(query.end(), more.begin(), more.end());
    return query;
  }
  vorn::cUuid Open(const cFields& query) { return Send(MakeRequest("GET", "/download", query, {})); }
  static std::ptrdiff_t Lines(const std::string& text) { return std::count(text.begin(), text.end(), '\n'); }
};

TEST_F(DownloadPage, GivesAllValuesOfAMeterAsAFile) {
  Store("m1", kBegin, {{"1-0:1.8.0", "100.50", "Wh"}, {"1-0:2.8.0", "7", "Wh"}});
  const cAnswer answer = Get("/download", Query());
  EXPECT_EQ(answer.Status(), 200u);
  EXPECT_EQ(answer.Header("Content-Type"), "text/csv; charset=utf-8");
  EXPECT_EQ(answer.Header("Content-Disposition"), "attachment; filename=\"values.csv\"");
  EXPECT_THAT(answer.body, StartsWith("meterID,timestamp,time-source,obis-id,value,unit\r\n"));
  EXPECT_THAT(answer.body, HasSubstr(",1-0:1.8.0,100.50,Wh\r\n"));
  EXPECT_EQ(Lines(answer.body), 3);
  EXPECT_TRUE(answer.isWhole);
}

TEST_F(DownloadPage, GivesWhatIsChosen) {
  Store("m1", kBegin, {{"1-0:1.8.0", "1", "Wh"}, {"1-0:2.8.0", "2", "Wh"}});
  Store("m1", kBegin + 60, {{"1-0:1.8.0", "3", "Wh"}});
  EXPECT_EQ(Lines(Get("/download", Query({{"obis", "1-0:2.8.0"}})).body), 2);
  EXPECT_EQ(Lines(Get("/download", Query({{"from", std::to_string(kBegin + 1)}})).body), 2);
  EXPECT_EQ(Lines(Get("/download", Query({{"to", std::to_string(kBegin)}})).body), 3);
}

TEST_F(DownloadPage, WithoutValuesTheFileIsWholeAndEmpty) {
  const cAnswer answer = Get("/download", {{"meter", "nobody"}, {"format", "json"}});
  EXPECT_EQ(answer.Status(), 200u);
  EXPECT_TRUE(nlohmann::json::accept(answer.body)) << answer.body;
  EXPECT_TRUE(answer.isWhole);
}

TEST_F(DownloadPage, SaysWhatIsMissing) {
  const std::pair<cFields, std::string> cases[] = {
      {{{"meter", "m1"}}, "format: expected csv or json\n"},
      {{{"meter", "m1"}, {"format", "xml"}}, "format: expected csv or json\n"},
      {{{"format", "csv"}}, "meter: expected the identifier of a meter\n"},
  };
  for (const auto& [query, text] : cases) {
    const cAnswer answer = Get("/download", query);
    EXPECT_EQ(answer.Status(), 400u);
    EXPECT_EQ(answer.body, text);
  }
  EXPECT_THAT(Get("/download", Query({{"from", "long ago"}})).body, StartsWith("from: "));
  EXPECT_THAT(Get("/download", Query({{"to", "never"}})).body, StartsWith("to: "));
}

TEST_F(DownloadPage, GivesMoreThanOneLotOfRows) {
  StoreMany(1300);
  const cAnswer answer = Get("/download", Query());
  EXPECT_EQ(Lines(answer.body), 1 + 2600);
  EXPECT_GT(answer.outputs, 3u);
  EXPECT_EQ(Statistic("results"), 0u);
}

TEST_F(DownloadPage, ReadsNoFurtherThanTheClientTakes) {
  StoreMany(1300);
  m_holdsBack = true;
  const vorn::cUuid id = Open(Query());
  ASSERT_TRUE(Await([&] { return m_answers[id].outputs == 2; })) << "the header and the first lot";
  for (int i = 0; i < 50; ++i) {
    m_pages->Poll(1);
    m_gateway->Poll(1);
  }
  EXPECT_EQ(m_answers[id].outputs, 2u);
  EXPECT_EQ(Statistic("results"), 1u) << "the rest waits in the service";
  PassOn(id);
  for (int i = 0; i < 50; ++i) {
    m_pages->Poll(1);
    m_gateway->Poll(1);
  }
  EXPECT_EQ(m_answers[id].outputs, 2u) << "one of the two is still on its way";
  PassOn(id);
  ASSERT_TRUE(Await([&] { return m_answers[id].outputs == 3; }));
  m_holdsBack = false;
  PassOn(id);
  ASSERT_TRUE(Await([&] { return m_answers[id].isFinished; }));
  EXPECT_EQ(Lines(m_answers[id].body), 1 + 2600);
}

TEST_F(DownloadPage, AClientThatIsGoneGivesTheResultBack) {
  StoreMany(1300);
  m_holdsBack = true;
  const vorn::cUuid id = Open(Query());
  ASSERT_TRUE(Await([&] { return m_answers[id].outputs == 2; }));
  ASSERT_EQ(Statistic("results"), 1u);
  Lose(id);
  EXPECT_TRUE(Await([this] { return m_pages->CountRuns() == 0; }));
  EXPECT_TRUE(Await([this] { return Statistic("results") == 0; }));
  EXPECT_EQ(m_answers[id].outputs, 2u);
}

TEST_F(DownloadPage, ALogoutEndsIt) {
  StoreMany(1300);
  m_holdsBack = true;
  const vorn::cUuid id = Open(Query());
  ASSERT_TRUE(Await([&] { return m_answers[id].outputs == 2; }));
  Post("/logout", {});
  EXPECT_TRUE(Await([&] { return m_answers[id].isFinished; }));
  EXPECT_FALSE(m_answers[id].isWhole);
  EXPECT_TRUE(Await([this] { return Statistic("results") == 0; }));
}

TEST_F(DownloadPage, AServiceThatDiesInTheMiddleLeavesABrokenFile) {
  const auto clock = std::make_shared<vorn::cManualClock>();
  StartPages(clock);
  Enter();
  StoreMany(1300);
  m_holdsBack = true;
  const vorn::cUuid id = Open(Query());
  ASSERT_TRUE(Await([&] { return m_answers[id].outputs == 2; }));
  EndService("data");
  ASSERT_TRUE(Await([this] { return !m_pages->GetGateway().data.IsConnected(); }));
  PassOn(id);
  PassOn(id);
  ASSERT_TRUE(Await([&] { return m_answers[id].isFinished; }));
  EXPECT_FALSE(m_answers[id].isWhole);
}

}  // namespace
}  // namespace tav::pages
