// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/profile/collector_list.h>

#include <tests/service/data/store_fixture.h>

namespace tav::data {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class CollectorList : public StoreFixture {
 protected:
  void SetUp() override {
    Open();
    Execute("INSERT INTO interface VALUES('SIM', '', 1)");
    Execute("INSERT INTO meter_config VALUES(1, 'M', 'E', 'EMH', '', '', '', 'SIM', 'SML', '', 0, 1)");
  }
  void Execute(const std::string& sql) {
    const cFault fault = m_store->Write([&](cTables& tables) { tables.database.exec(sql); });
    ASSERT_FALSE(fault) << fault.text;
  }
  // Writes the meter's only collector anew, under another number.
  void SetCollector(const std::string& event, int count, const std::string& obisIds) {
    Execute("DELETE FROM collector");
    Execute("INSERT INTO collector VALUES(" + std::to_string(++m_number) + ", 1, '1', 1, " + std::to_string(count) +
            ", 1, '" + event + "', '" + obisIds + "', NULL, '', 0, 0, 0)");
  }
  bool Update() {
    bool changed = false;
    m_store->Write([&](cTables& tables) { changed = cCollectorList(tables.database).Update(); });
    return changed;
  }
  // Something that was logged.
  void Log() {
    Execute("UPDATE profile SET logged=900");
    Execute("INSERT OR IGNORE INTO profile_value VALUES((SELECT id FROM profile), 900, 1, 5, 16, 1)");
  }
  std::string Logged() { return One("SELECT logged||' '||(SELECT count(*) FROM profile_value) FROM profile"); }

  int m_number = 0;
};

TEST_F(CollectorList, TakesACollectorOver) {
  SetCollector("15min", 3, "1-0:1.8.0");
  EXPECT_TRUE(Update());
  EXPECT_EQ(One("SELECT meter_id||medium||mfct||addr||active||event_type||distance_rp||count_rp||obis_ids||logged "
                "FROM profile"),
            "MEEMH1115min131-0:1.8.00");
}

TEST_F(CollectorList, ACollectorThatIsWrittenAnewIsTheSame) {
  SetCollector("15min", 0, "1-0:1.8.0");
  Update();
  Log();
  EXPECT_FALSE(Update());
  SetCollector("15min", 0, "1-0:1.8.0");
  EXPECT_FALSE(Update());
  EXPECT_EQ(Logged(), "900 1");
}

TEST_F(CollectorList, ChangesAreLoggedAgainAndOnlyAnotherEventDropsRows) {
  SetCollector("15min", 0, "1-0:1.8.0");
  Update();
  Log();
  SetCollector("15min", 9, "1-0:1.8.0");
  EXPECT_TRUE(Update());
  EXPECT_EQ(Logged(), "0 1");
  Log();
  SetCollector("15min", 9, "1-0:2.8.0");
  EXPECT_TRUE(Update());
  EXPECT_EQ(Logged(), "0 1");
  Log();
  SetCollector("hour", 9, "1-0:2.8.0");
  EXPECT_TRUE(Update());
  EXPECT_EQ(Logged(), "0 0");
}

TEST_F(CollectorList, AProfileWithoutACollectorGoes) {
  SetCollector("15min", 0, "1-0:1.8.0");
  Update();
  Log();
  Execute("DELETE FROM meter_config");
  EXPECT_TRUE(Update());
  EXPECT_EQ(One("SELECT count(*)+(SELECT count(*) FROM profile_value) FROM profile"), "0");
}

TEST_F(CollectorList, SplitsIdentifiers) {
  EXPECT_THAT(cCollectorList::SplitObis(" 1-0:1.8.0 ,1-0:2.8.0,, ,x y"), ElementsAre("1-0:1.8.0", "1-0:2.8.0", "x y"));
  EXPECT_THAT(cCollectorList::SplitObis(""), IsEmpty());
}

}  // namespace
}  // namespace tav::data
