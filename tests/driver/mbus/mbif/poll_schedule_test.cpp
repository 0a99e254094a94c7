// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/mbif/poll_schedule.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

namespace tav::mbus {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::uint32_t kHour = 3600;
constexpr std::uint32_t kBegin = 1'750'000'000 / kHour * kHour;

class PollSchedule : public testing::Test {
 protected:
  void Plan(const std::vector<unsigned int>& intervals) {
    m_schedule = std::make_unique<cPollSchedule>(
        intervals, [this](std::size_t meter, std::uint32_t slotBegin, const std::string& cause) {
          m_missed.push_back(std::to_string(meter) + "@" + std::to_string(slotBegin - kBegin));
          m_cause = cause;
        });
  }
  // The meters that are due, in their order, with the second their slot began.
  std::vector<std::string> Due(std::uint32_t second) {
    m_schedule->Advance(kBegin + second);
    std::vector<std::string> due;
    while (const auto next = m_schedule->Take())
      due.push_back(std::to_string(next->meter) + "@" + std::to_string(next->slotBegin - kBegin));
    return due;
  }
  std::vector<std::string> Missed() { return std::exchange(m_missed, {}); }

  std::unique_ptr<cPollSchedule> m_schedule;
  std::vector<std::string> m_missed;
  std::string m_cause;
};

TEST_F(PollSchedule, HasEveryMeterDueAtOnceAndThenWithEachSlotOfItsInterval) {
  Plan({900, 60});
  EXPECT_THAT(Due(30), ElementsAre("0@0", "1@0"));
  EXPECT_THAT(Due(59), IsEmpty());
  EXPECT_THAT(Due(60), ElementsAre("1@60"));
  EXPECT_THAT(Due(899), ElementsAre("1@840"));
  EXPECT_THAT(Due(900), ElementsAre("0@900", "1@900"));
  EXPECT_THAT(Missed(), IsEmpty());
  EXPECT_EQ(m_schedule->CountBegun(), 6u);
}

TEST_F(PollSchedule, KeepsTheOrderInWhichMetersBecameDue) {
  Plan({100, 60, 60});
  Due(0);
  m_schedule->Advance(kBegin + 60);
  EXPECT_THAT(Due(100), ElementsAre("1@60", "2@60", "0@100"));
}

TEST_F(PollSchedule, TellsAsMissedWhatTheBusHadNoTimeFor) {
  Plan({60, 60});
  m_schedule->Advance(kBegin);
  EXPECT_EQ(m_schedule->Take()->meter, 0u);
  m_schedule->Advance(kBegin + 60);
  EXPECT_THAT(Missed(), ElementsAre("1@0"));
  EXPECT_THAT(m_cause, HasSubstr("busy"));
  EXPECT_THAT(Due(61), ElementsAre("1@60", "0@60"));
}

TEST_F(PollSchedule, LeavesASilentMeterAloneForMoreAndMoreSlotsUpToAnHour) {
  Plan({600});
  std::vector<std::uint32_t> asked;
  for (std::uint32_t second = 0; second < 12 * kHour; second += 600)
    if (!Due(second).empty()) {
      asked.push_back(second / 600);
      m_schedule->OnSilent(0);
    }
  EXPECT_THAT(std::vector<std::uint32_t>(asked.begin(), asked.begin() + 7), ElementsAre(0, 1, 3, 7, 14, 21, 28));
  EXPECT_EQ(Missed().size() + asked.size(), m_schedule->CountBegun());
  EXPECT_THAT(m_cause, HasSubstr("not asked, as it has not answered since 2025-06-15T"));
  EXPECT_EQ(m_schedule->GetSilentSince(0), kBegin);
}

TEST_F(PollSchedule, AsksAMeterThatAnswersAgainInEverySlot) {
  Plan({600});
  for (std::uint32_t slot = 0; slot < 4; ++slot)
    if (!Due(slot * 600).empty()) m_schedule->OnSilent(0);
  m_schedule->OnAnswered(0);
  EXPECT_EQ(m_schedule->GetSilentSince(0), 0u);
  EXPECT_THAT(Due(2400), ElementsAre("0@2400"));
  m_schedule->OnSilent(0);
  EXPECT_THAT(Due(3000), ElementsAre("0@3000")) << "the first silence leaves nothing out";
}

TEST_F(PollSchedule, NeverLeavesOutASlotOfAnHourOrMore) {
  Plan({7200});
  for (std::uint32_t slot = 0; slot < 20; ++slot) {
    EXPECT_FALSE(Due(slot * 7200).empty()) << slot;
    m_schedule->OnSilent(0);
  }
  EXPECT_THAT(Missed(), IsEmpty());
}

TEST_F(PollSchedule, MissesAllThatWaitsForACause) {
  Plan({60, 60});
  m_schedule->Advance(kBegin);
  m_schedule->MissAll("the line is not there");
  EXPECT_THAT(Missed(), ElementsAre("0@0", "1@0"));
  EXPECT_EQ(m_cause, "the line is not there");
  EXPECT_EQ(m_schedule->CountWaiting(), 0u);
  EXPECT_THAT(Due(60), ElementsAre("0@60", "1@60"));
}

TEST_F(PollSchedule, TakesAClockThatWasSetForOneSlot) {
  Plan({60});
  EXPECT_THAT(Due(0), ElementsAre("0@0"));
  EXPECT_THAT(Due(1'000'000), ElementsAre("0@999960"));
  m_schedule->Advance(kBegin);
  EXPECT_THAT(Due(0), ElementsAre("0@0")) << "back as well";
  EXPECT_THAT(Missed(), IsEmpty());
}

TEST_F(PollSchedule, TellsTheSecondsToTheNextSlotOfAnyMeter) {
  Plan({900, 60});
  EXPECT_EQ(m_schedule->SecondsToNext(kBegin), 60u);
  EXPECT_EQ(m_schedule->SecondsToNext(kBegin + 59), 1u);
  EXPECT_EQ(m_schedule->SecondsToNext(kBegin + 61), 59u);
}

}  // namespace
}  // namespace tav::mbus
