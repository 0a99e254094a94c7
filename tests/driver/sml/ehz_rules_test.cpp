// SPDX-License-Identifier: Apache-2.0
// The driver by the gateway's rules, which change while it reads.
#include <gtest/gtest.h>

#include <fstream>

#include <tests/driver/sml/ehz_world.h>
#include <tests/support/raw_socket.h>

namespace tav::sml {
namespace {

using testing::Contains;
using testing::Each;
using testing::IsEmpty;
using testing::SizeIs;

constexpr std::uint64_t kImport = PackObis(1, 1, 1, 8, 0);
constexpr std::uint64_t kExport = PackObis(1, 1, 2, 8, 0);
constexpr std::uint64_t kSecondImport = PackObis(1, 2, 1, 8, 0);

class EhzRules : public EhzWorld {
 protected:
  // A service with these rules, from the ID 1 on, and the driver on its line.
  void Start(const std::vector<std::string>& rules) {
    m_obis.Serve();
    for (unsigned long long id = 1; const std::string& rule : rules) m_obis.Set(id++, rule);
    ReadLine();
    Drive();
    ASSERT_TRUE(Await([this] { return m_obis.CountClients() == 1; }));
    Settle();
  }
  void ReadFile(unsigned int telegrams) {
    std::ofstream file(m_folder.File("capture"), std::ios::binary);
    for (unsigned int i = 0; i < telegrams; ++i) file << OrdinaryTelegram();
    file.close();
    TakeInput(m_folder.File("capture"));
  }
};

TEST_F(EhzRules, NameTheValuesAndLeaveOthersOut) {
  Start({"1-0:1.8.0"});
  EXPECT_EQ(Store({kImport, kExport}), "1-0:1.8.0");
}

TEST_F(EhzRules, HoldForTheNextReadingWhenTheyAreChanged) {
  Start({"1-0:1.8.0"});
  EXPECT_EQ(Store({kImport, kExport}), "1-0:1.8.0");
  m_obis.Set(2, "1-0:2.8.0");
  EXPECT_EQ(Store({kImport, kExport}), "1-0:1.8.0 1-0:2.8.0") << "without a restart";
  m_obis.Remove(1);
  EXPECT_EQ(Store({kImport, kExport}), "1-0:2.8.0");
  m_obis.Remove(2);
  EXPECT_EQ(Store({kImport, kExport}), "1-1:1.8.0 1-1:2.8.0") << "a gateway without rules keeps everything";
}

TEST_F(EhzRules, HoldOnWhileTheirServiceIsAwayAndAreAskedForWhenItIsBack) {
  Start({"1-0:1.8.0"});
  m_obis.End();
  EXPECT_EQ(Store({kImport, kExport}), "1-0:1.8.0");
  m_obis.Serve();
  m_obis.Set(1, "1-0:2.8.0");
  ASSERT_TRUE(Await([this] { return m_obis.CountClients() == 1; }));
  Settle();
  EXPECT_EQ(Store({kImport, kExport}), "1-0:2.8.0");
}

TEST_F(EhzRules, KeepTheNamesWhereChannelsWouldBeOne) {
  Start({"1-0:1.8.0"});
  EXPECT_EQ(Store({kImport, kSecondImport, kExport}), "1-1:1.8.0 1-2:1.8.0");
  EXPECT_EQ(Store({kImport, kExport}), "1-0:1.8.0") << "as the others, alone";
}

TEST_F(EhzRules, KeepTheNamesWhenAskedTo) {
  m_options.keepNames = true;
  Start({"1-0:1.8.0"});
  EXPECT_EQ(Store({kImport, kExport}), "1-1:1.8.0");
}

TEST_F(EhzRules, AreNotAskedForWhenNoneAreWanted) {
  m_options.noRules = true;
  m_obis.Serve();
  m_obis.Set(1, "1-0:1.8.0");
  ReadLine();
  Drive();
  EXPECT_EQ(Store({kImport, kExport}), "1-1:1.8.0 1-1:2.8.0");
  EXPECT_EQ(m_obis.CountClients(), 0u);
}

TEST_F(EhzRules, OfAFileHoldInPlaceOfTheGateways) {
  m_options.rulesFile = "rules";
  m_rules.Add(cObisMapEntry(1, "rule", "1-0:2.8.0", ""));
  m_obis.Serve();
  m_obis.Set(1, "1-0:1.8.0");
  ReadLine();
  Drive();
  EXPECT_EQ(Store({kImport, kExport}), "1-0:2.8.0");
  EXPECT_EQ(m_obis.CountClients(), 0u);
}

TEST_F(EhzRules, AreNotMissedWhereThereIsNoSuchService) {
  ReadLine();
  Drive();
  EXPECT_EQ(Store({kImport, kExport}), "1-1:1.8.0 1-1:2.8.0");
}

// ---- inputs that can wait

TEST_F(EhzRules, AreWaitedForByAFile) {
  m_obis.Serve();
  m_obis.Set(1, "1-0:1.8.0");
  m_turnsRules = false;
  ReadFile(3);
  Drive();
  PassTo(499);
  EXPECT_THAT(m_stored, IsEmpty());
  m_turnsRules = true;
  ASSERT_TRUE(PollUntil(*m_driver, [this] {
    Turn();
    return m_stored.size() == 3;
  }));
  EXPECT_THAT(m_stored, Each(std::string("1-0:1.8.0")));
}

TEST_F(EhzRules, AreWaitedForHalfASecondAndNoLonger) {
  {
    cRawSocket left;
    ASSERT_TRUE(left.Listen(vorn::cScmService("left", m_folder.GetPath()).GetSocketPath("obis")));
  }
  ReadFile(1);
  Drive();
  PassTo(499);
  EXPECT_THAT(m_stored, IsEmpty());
  PassTo(500);
  EXPECT_THAT(m_stored, SizeIs(1)) << "nobody has told any";
}

TEST_F(EhzRules, AreNotWaitedForByAMeter) {
  m_obis.Serve();
  m_obis.Set(1, "1-0:1.8.0");
  m_turnsRules = false;
  ReadLine();
  Drive();
  EXPECT_EQ(Store({kImport, kExport}), "1-1:1.8.0 1-1:2.8.0");
  m_turnsRules = true;
  ASSERT_TRUE(Await([this] { return m_obis.CountClients() == 1; }));
  Settle();
  EXPECT_EQ(Store({kImport, kExport}), "1-0:1.8.0");
}

TEST_F(EhzRules, AreNotWaitedForByAFileWhereNobodyHasThem) {
  ReadFile(2);
  Drive();
  EXPECT_THAT(m_stored, SizeIs(2)) << "as soon as readings can be stored";
}

}  // namespace
}  // namespace tav::sml
