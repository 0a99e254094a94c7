// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/status/status_set.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tests/support/parameters.h>

namespace tav::gateway {
namespace {

using testing::ElementsAre;
using Values = std::vector<std::pair<std::string, std::string>>;

// A set, and processes that are told apart by their numbers.
class StatusSet : public testing::Test {
 protected:
  static vorn::cRecord Record(const Values& values) {
    vorn::cRecord record;
    for (const auto& [name, value] : values) record.AppendTextPar(name, value);
    return record;
  }
  // A client that brings its copy; what it lacks goes to m_missing.
  std::uint64_t Come(const std::string& process, unsigned int pid, const Values& copy) {
    const std::uint64_t client = m_set.Join(process, pid);
    m_missing = vorn::cRecord();
    EXPECT_EQ(m_set.Take(client, Record(copy), m_now, m_missing), "");
    return client;
  }
  void Change(std::uint64_t client, const Values& values) {
    EXPECT_EQ(m_set.Change(client, Record(values), m_now), "");
  }
  // The service ends, and starts anew with what it had written.
  void Restart() {
    const cStatusSet::Values written = m_set.GetValues();
    m_set = cStatusSet();
    for (const auto& [name, value] : written) m_set.Restore(name, value, 0);
    m_set.SetIsRunning([](unsigned int pid) { return pid < 100; });
  }
  std::string Known(const std::string& name) const {
    const auto known = m_set.GetValues().find(name);
    return known != m_set.GetValues().end() ? known->second.value : "none";
  }
  bool IsConnected(const std::string& name) const { return m_set.GetValues().at(name).client != 0; }

  cStatusSet m_set;
  cStatusMoment m_now;
  vorn::cRecord m_missing;
};

// Every process carries the values of all: the one that they belong to knows them best.
TEST_F(StatusSet, ABystandersCopyDoesNotTakeAValueFromItsWriter) {
  for (const bool writerFirst : {true, false}) {
    m_set = cStatusSet();
    Come("driver", 1, {{"x", "old"}});
    Restart();
    if (writerFirst) Come("driver", 1, {{"x", "new"}});
    Come("page", 2, {{"x", "old"}});
    if (!writerFirst) Come("driver", 1, {{"x", "new"}});
    EXPECT_EQ(Known("x"), "new");
    EXPECT_TRUE(IsConnected("x"));
  }
}

TEST_F(StatusSet, ABystanderMayKnowAValueBetterThanTheFile) {
  Come("driver", 1, {{"x", "written"}});
  Restart();
  Come("page", 2, {{"x", "later"}});
  EXPECT_EQ(Known("x"), "later");
  EXPECT_FALSE(IsConnected("x")) << "it is still the driver's";
  Come("driver", 1, {{"x", "latest"}});
  EXPECT_EQ(Known("x"), "latest");
}

TEST_F(StatusSet, ANamesakeThatRunsBesideTheWriterIsABystander) {
  Come("driver", 1, {{"x", "1"}});
  Restart();
  Come("driver", 2, {{"x", "1"}});
  EXPECT_FALSE(IsConnected("x"));
  Come("driver", 1, {{"x", "2"}});
  EXPECT_EQ(Known("x"), "2");
}

TEST_F(StatusSet, ASuccessorInheritsFromAProcessThatHasEnded) {
  Come("driver", 100, {{"x", "1"}, {"y", "1"}});
  Restart();
  Come("driver", 1, {{"x", "2"}});
  EXPECT_EQ(Known("x"), "2");
  EXPECT_TRUE(IsConnected("x"));
  EXPECT_FALSE(IsConnected("y")) << "it has not said so";
}

TEST_F(StatusSet, WhoSetsAValueIsItsWriterWhoeverThatWasBefore) {
  const auto driver = Come("driver", 1, {{"x", "1"}});
  const auto page = Come("page", 2, {});
  EXPECT_THAT(Parameters(m_missing), ElementsAre("x text=1"));
  Change(page, {{"x", "2"}});
  EXPECT_EQ(m_set.GetValues().at("x").process, "page");
  EXPECT_TRUE(m_set.Tell(driver));
  EXPECT_TRUE(m_set.Tell(page)) << "both may cross each other from now on";
}

TEST_F(StatusSet, AWriterIsNotToldItsOwnValues) {
  const auto driver = Come("driver", 1, {});
  const auto page = Come("page", 2, {});
  Change(driver, {{"x", "1"}});
  EXPECT_FALSE(m_set.Tell(driver));
  const auto telling = m_set.Tell(page);
  ASSERT_TRUE(telling);
  EXPECT_FALSE(telling->replace);
  EXPECT_THAT(Parameters(telling->values), ElementsAre("x text=1"));
  m_set.Told();
  EXPECT_FALSE(m_set.HasNews());
  EXPECT_FALSE(m_set.Tell(page));
}

TEST_F(StatusSet, WhatAClientSaysBeforeItConfirmsAReplacementIsReplacedOnceMore) {
  const auto driver = Come("driver", 1, {{"x", "1"}});
  const auto page = Come("page", 2, {});
  vorn::cRecord removal;
  removal.AppendTextPar("x", nullptr);
  EXPECT_EQ(m_set.Change(driver, removal, m_now), "");
  EXPECT_FALSE(m_set.Tell(driver));
  EXPECT_TRUE(m_set.Tell(page)->replace);
  m_set.Told();
  Change(page, {{"y", "1"}});
  m_set.Told();
  m_set.Replaced(page);
  const auto again = m_set.Tell(page);
  ASSERT_TRUE(again);
  EXPECT_TRUE(again->replace);
  EXPECT_THAT(Parameters(again->values), ElementsAre("y text=1"));
  m_set.Told();
  m_set.Replaced(page);
  EXPECT_FALSE(m_set.Tell(page));
}

TEST_F(StatusSet, NamesThatAreNewAreToBeWrittenSoon) {
  const auto driver = Come("driver", 1, {{"x", "1"}});
  EXPECT_TRUE(m_set.TakeAdded());
  Change(driver, {{"x", "2"}});
  EXPECT_FALSE(m_set.TakeAdded());
  Change(driver, {{"y", "2"}});
  EXPECT_TRUE(m_set.TakeAdded());
}

TEST_F(StatusSet, TakesAsManyValuesAsItsLimit) {
  Values many;
  for (std::size_t i = 0; i < cStatusSet::kMaxValues; ++i) many.emplace_back("n" + std::to_string(i), "");
  const auto driver = Come("driver", 1, many);
  EXPECT_EQ(m_set.Change(driver, Record({{"one more", ""}}), m_now), "there would be more than 10000 status values");
  Change(driver, {{"n0", "v"}});
  EXPECT_EQ(m_set.GetValues().size(), cStatusSet::kMaxValues);
}

}  // namespace
}  // namespace tav::gateway
