// SPDX-License-Identifier: Apache-2.0
// The promise that matters most: what was acknowledged is there, whenever the process dies.
#include <map>
#include <random>

#include <tests/tav_gateway/process_fixture.h>

namespace tav::gateway {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kRounds = 15;
#else
constexpr int kRounds = 100;
#endif

class Killed : public GatewayProcess {
 protected:
  // Keeps a few readings under way until the time is over; always at least one was handed over.
  void Stream(std::int64_t microseconds) {
    const auto now = [] {
      timespec time{};
      clock_gettime(CLOCK_MONOTONIC, &time);
      return std::int64_t{time.tv_sec} * 1'000'000 + time.tv_nsec / 1000;
    };
    const std::int64_t end = now() + microseconds;
    do {
      while (m_sent.size() - m_driver->m_acknowledged.size() - m_lost < 8) {
        m_sent[m_driver->StoreOne(Reading(m_number))] = m_number;
        ++m_number;
      }
      m_service->Poll(1);
    } while (now() < end);
  }
  // What was under way when the process died is not acknowledged any more.
  void CountLost() { m_lost = m_sent.size() - m_driver->m_acknowledged.size(); }

  std::map<vorn::cUuid, unsigned int> m_sent;
  std::size_t m_lost = 0;
  unsigned int m_number = 0;
};

TEST_F(Killed, AHundredTimesItLosesNoAcknowledgedReading) {
  std::mt19937 random(5);
  Start();
  Connect();
  for (int round = 0; round < kRounds; ++round) {
    Stream(random() % 30'000);
    m_process->Signal(SIGKILL);
    ASSERT_EQ(m_process->Wait(), 128 + SIGKILL) << Said();
    ASSERT_TRUE(Await([this] { return !m_driver->IsConnected(); }));
    m_driver->m_queue.clear();
    CountLost();
    Start();
    ASSERT_TRUE(AwaitRegistration()) << round << Said();
  }
  m_process->Signal(SIGTERM);
  ASSERT_EQ(m_process->Wait(), eExitDone) << Said();

  EXPECT_EQ(Ask("PRAGMA integrity_check"), "ok");
  EXPECT_EQ(Ask("SELECT count(*) FROM (SELECT 1 FROM value GROUP BY meter, time HAVING count(*)<>3)"), "0");
  EXPECT_EQ(Ask("SELECT (SELECT count(*) FROM value) - (SELECT total(count) FROM series)"), "0.0");
  // All of them in one walk: a look for each would walk as many times.
  std::map<std::pair<std::int64_t, std::string>, int> stored;
  SQLite::Database database(Directory() + "/tav.db", SQLite::OPEN_READONLY);
  SQLite::Statement all(database,
                        "SELECT time, value, count(*) FROM reading_values WHERE meter='1EMH00123' GROUP BY 1, 2");
  while (all.executeStep())
    stored[{all.getColumn(0).getInt64(), all.getColumn(1).getString()}] = all.getColumn(2).getInt();
  for (const vorn::cUuid& id : m_driver->m_acknowledged) {
    const unsigned int number = m_sent.at(id);
    const auto found = stored.find({kNoon + number, std::to_string(number) + ".5"});
    ASSERT_NE(found, stored.end()) << number;
    EXPECT_EQ(found->second, 3) << number;
  }
  RecordProperty("acknowledged", static_cast<int>(m_driver->m_acknowledged.size()));
  EXPECT_GT(m_driver->m_acknowledged.size(), static_cast<std::size_t>(kRounds));
}

}  // namespace
}  // namespace tav::gateway
