// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/query/result_table.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tests/support/scm_world.h>
#include <tests/support/temp_folder.h>

namespace tav::data {
namespace {

using testing::HasSubstr;

class cSized final : public cResult {
 public:
  explicit cSized(std::size_t bytes) : m_bytes(bytes) {}
  bool Fetch(cTables&, cResultPage&) override { return true; }
  std::size_t GetBytes() const override { return m_bytes; }

 private:
  std::size_t m_bytes;
};

class ResultTable : public testing::Test {
 protected:
  // Channels are only told apart.
  static const vorn::cScmChannel* Channel(std::uintptr_t number) {
    return reinterpret_cast<const vorn::cScmChannel*>(number * 16);
  }
  std::optional<vorn::cUuid> Add(std::uintptr_t channel, std::size_t bytes = 0) {
    cResultTable::cHeld held;
    held.result = std::make_unique<cSized>(bytes);
    return m_table.Add(Channel(channel), std::move(held), m_reason);
  }
  void Pass(unsigned int milliseconds) {
    m_clock->Advance(milliseconds);
    PollUntilIdle(m_host);
  }

  cTempFolder m_folder;
  std::shared_ptr<vorn::cManualClock> m_clock = std::make_shared<vorn::cManualClock>();
  gateway::cServiceHost m_host{"result-test", m_folder.GetPath(), m_clock};
  cResultTable m_table{&m_host};
  std::string m_reason;
};

TEST_F(ResultTable, AHandleIsKnownToItsOwnerOnly) {
  const auto handle = Add(1);
  ASSERT_TRUE(handle);
  EXPECT_TRUE(handle->IsValid());
  EXPECT_NE(m_table.Find(Channel(1), *handle), nullptr);
  EXPECT_EQ(m_table.Find(Channel(2), *handle), nullptr);
  EXPECT_FALSE(m_table.Release(Channel(2), *handle));
  EXPECT_TRUE(m_table.Release(Channel(1), *handle));
  EXPECT_FALSE(m_table.Release(Channel(1), *handle));
  EXPECT_EQ(m_table.Find(Channel(1), vorn::cUuid()), nullptr);
}

TEST_F(ResultTable, AClosedChannelReleasesItsResultsAndNoOthers) {
  Add(1);
  Add(1);
  const auto other = Add(2);
  m_table.ReleaseAll(Channel(1));
  EXPECT_EQ(m_table.GetCount(), 1u);
  EXPECT_NE(m_table.Find(Channel(2), *other), nullptr);
}

TEST_F(ResultTable, ReleasesWhatNobodyAsksFor) {
  const auto forgotten = Add(1);
  const auto used = Add(1);
  Pass(cResultTable::kIdle - 1);
  EXPECT_EQ(m_table.GetCount(), 2u);
  EXPECT_NE(m_table.Find(Channel(1), *used), nullptr);
  Pass(60'000);
  EXPECT_EQ(m_table.Find(Channel(1), *forgotten), nullptr);
  EXPECT_EQ(m_table.GetCount(), 1u);
  Pass(cResultTable::kIdle + 60'000);
  EXPECT_EQ(m_table.GetCount(), 0u);
  Add(1);
  Pass(cResultTable::kIdle + 60'000);
  EXPECT_EQ(m_table.GetCount(), 0u);
}

TEST_F(ResultTable, AChannelHoldsABoundedNumber) {
  std::optional<vorn::cUuid> last;
  for (std::size_t i = 0; i < cResultTable::kMaxOfChannel; ++i) ASSERT_TRUE(last = Add(1));
  EXPECT_FALSE(Add(1));
  EXPECT_EQ(m_reason, "this client holds 16 results, the most there may be: close one");
  EXPECT_TRUE(Add(2));
  m_table.Release(Channel(1), *last);
  EXPECT_TRUE(Add(1));
}

TEST_F(ResultTable, AllTogetherHoldABoundedNumber) {
  for (std::size_t i = 0; i < cResultTable::kMaxOfAll; ++i) ASSERT_TRUE(Add(1 + i / cResultTable::kMaxOfChannel));
  EXPECT_FALSE(Add(1000));
  EXPECT_THAT(m_reason, HasSubstr("hold 1024 results"));
}

TEST_F(ResultTable, RowsInMemoryAreBounded) {
  const auto half = Add(1, cResultTable::kMaxBytes / 2);
  EXPECT_TRUE(Add(2, cResultTable::kMaxBytes / 2));
  EXPECT_FALSE(Add(3, 1));
  EXPECT_THAT(m_reason, HasSubstr("more than 67108864 bytes"));
  m_table.Release(Channel(1), *half);
  EXPECT_TRUE(Add(3, 1));
}

}  // namespace
}  // namespace tav::data
