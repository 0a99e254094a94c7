// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/mbif/missing_readings.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace tav::mbus {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class MissingReadings : public testing::Test {
 protected:
  std::vector<std::string> Told() { return std::exchange(m_told, {}); }

  std::vector<std::string> m_told;
  cMissingReadings m_missing{[this](unsigned int count, std::uint32_t first, std::uint32_t last,
                                    const std::string& cause) {
    m_told.push_back(std::to_string(count) + " " + std::to_string(first) + "-" + std::to_string(last) + " " + cause);
  }};
};

TEST_F(MissingReadings, TellsTheFirstAtOnce) {
  m_missing.Add(900, "silent");
  EXPECT_THAT(Told(), ElementsAre("1 900-900 silent"));
}

TEST_F(MissingReadings, TellsThoseThatFollowTogetherWhenTheMeterAnswers) {
  for (std::uint32_t slot = 900; slot <= 3600; slot += 900) m_missing.Add(slot, "silent");
  EXPECT_THAT(Told(), ElementsAre("1 900-900 silent"));
  m_missing.Settle();
  EXPECT_THAT(Told(), ElementsAre("3 1800-3600 silent"));
  m_missing.Settle();
  EXPECT_THAT(Told(), IsEmpty());
}

TEST_F(MissingReadings, TellsThemWhenTheCauseChanges) {
  for (std::uint32_t slot = 0; slot < 180; slot += 60) m_missing.Add(slot, "silent");
  m_missing.Add(180, "damaged");
  EXPECT_THAT(Told(), ElementsAre("1 0-0 silent", "2 60-120 silent", "1 180-180 damaged"));
}

TEST_F(MissingReadings, TellsThemAfterAnHour) {
  for (std::uint32_t slot = 0; slot <= 3660; slot += 60) m_missing.Add(slot, "silent");
  EXPECT_THAT(Told(), ElementsAre("1 0-0 silent", "61 60-3660 silent"));
  m_missing.Add(3720, "silent");
  EXPECT_THAT(Told(), IsEmpty());
}

TEST_F(MissingReadings, TellsAnewAfterAnAnswer) {
  m_missing.Add(0, "silent");
  m_missing.Settle();
  m_missing.Add(60, "silent");
  EXPECT_THAT(Told(), ElementsAre("1 0-0 silent", "1 60-60 silent"));
}

TEST_F(MissingReadings, TellsEveryOneOnce) {
  unsigned int told = 0;
  cMissingReadings missing(
      [&](unsigned int count, std::uint32_t, std::uint32_t, const std::string&) { told += count; });
  for (std::uint32_t i = 0; i < 10'000; ++i) missing.Add(i * 60, i % 97 < 50 ? "silent" : "damaged");
  missing.Settle();
  EXPECT_EQ(told, 10'000u);
}

}  // namespace
}  // namespace tav::mbus
