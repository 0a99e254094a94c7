// SPDX-License-Identifier: Apache-2.0
// What the driver tells about itself: status values, and the light that flashes for a reading.
#include <gtest/gtest.h>

#include <tav/framework/time.h>
#include <tests/driver/sml/ehz_world.h>

namespace tav::sml {
namespace {

using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

constexpr std::uint64_t kImport = PackObis(1, 0, 1, 8, 0);

class EhzStatus : public EhzWorld {
 protected:
  void Start() {
    ReadLine();
    Drive();
  }
};

TEST_F(EhzStatus, NamesEveryValue) {
  Start();
  Store({kImport});
  PassToStatus();
  std::vector<std::string> names = {"ehzif-RS232.RS232." + kMeter + ".last-reading"};
  for (const char* name : {"RS232.frames-bad", "RS232.frames-good", "RS232.frames-incomplete", "RS232.input",
                           "RS232.readings-filtered", "connection", "queue", "readings", "readings-acknowledged",
                           "readings-dropped", "readings-refused", "rules", "started", "version"})
    names.push_back(std::string("ehzif-RS232.") + name);
  EXPECT_THAT(ValueNames(), ElementsAreArray(names));
}

TEST_F(EhzStatus, TellsHowTheDriverIs) {
  m_obis.Serve();
  m_obis.Set(1, "1-0:1.8.0");
  m_obis.Set(2, "1-0:2.8.0");
  Start();
  ASSERT_TRUE(Await([this] { return m_obis.CountClients() == 1; }));
  Settle();
  Store({kImport});
  Store({kImport});
  PassToStatus();
  EXPECT_EQ(Value("ehzif-RS232.connection"), "connected");
  EXPECT_EQ(Value("ehzif-RS232.queue"), "0");
  EXPECT_EQ(Value("ehzif-RS232.readings"), "2");
  EXPECT_EQ(Value("ehzif-RS232.readings-acknowledged"), "2");
  EXPECT_EQ(Value("ehzif-RS232.readings-refused"), "0");
  EXPECT_EQ(Value("ehzif-RS232.readings-dropped"), "0");
  EXPECT_EQ(Value("ehzif-RS232.rules"), "2");
}

TEST_F(EhzStatus, ShowsThatTheServiceIsAway) {
  Start();
  Store({kImport});
  m_data.reset();
  ASSERT_TRUE(m_line->Write(OrdinaryTelegram()));
  ASSERT_TRUE(AwaitStatus([this] {
    return Value("ehzif-RS232.connection") == "waiting for the service" && Value("ehzif-RS232.queue") == "1";
  }));
  EXPECT_EQ(Value("ehzif-RS232.readings-acknowledged"), "1");
}

TEST_F(EhzStatus, TellsHowAnInterfaceIs) {
  m_options.meters = {"another"};
  Start();
  std::string bad = OrdinaryTelegram();
  bad[30] = static_cast<char>(bad[30] ^ 1);
  ASSERT_TRUE(m_line->Write(OrdinaryTelegram() + bad + OrdinaryTelegram().substr(0, 100) + OrdinaryTelegram()));
  ASSERT_TRUE(AwaitStatus([this] { return Value("ehzif-RS232.RS232.frames-good") == "2"; }));
  EXPECT_EQ(Value("ehzif-RS232.RS232.frames-bad"), "1");
  EXPECT_EQ(Value("ehzif-RS232.RS232.frames-incomplete"), "1");
  EXPECT_EQ(Value("ehzif-RS232.RS232.readings-filtered"), "2");
  EXPECT_THAT(ValueNames(), Not(Contains(HasSubstr("last-reading")))) << "its meter is not wanted";
}

TEST_F(EhzStatus, TellsTheTimeOfAMetersLastReading) {
  Start();
  Store({kImport});
  PassToStatus();
  EXPECT_EQ(Value("ehzif-RS232.RS232." + kMeter + ".last-reading"), "2024-01-12T04:11:44Z");
}

TEST_F(EhzStatus, ShowsALostInputAndItsReturn) {
  Start();
  Store({kImport});
  PassToStatus();
  EXPECT_EQ(Value("ehzif-RS232.RS232.input"), "open");
  m_line->Vanish();
  ASSERT_TRUE(AwaitStatus([this] { return Value("ehzif-RS232.RS232.input") == "lost"; }));
  m_line = std::make_unique<cPseudoLine>(m_folder.File("line"));
  Pass(10'000);
  Store({kImport});
  PassToStatus();
  EXPECT_EQ(Value("ehzif-RS232.RS232.input"), "open");
}

TEST_F(EhzStatus, ShowsAnInputThatIsNotThere) {
  TakeInput("/dev/ttyOfNobody");
  Drive();
  PassToStatus();
  EXPECT_EQ(Value("ehzif-RS232.RS232.input"), "lost");
}

TEST_F(EhzStatus, TellsOfEveryConfiguredInterface) {
  Configure({Interface("SIM", "", {kFirst}), Interface("RS232", "input=sim,meters=2", {kFirst, kSecond})});
  Drive();
  Pass(2'000);
  PassToStatus();
  EXPECT_EQ(Value("ehzif.SIM.input"), "open");
  EXPECT_EQ(Value("ehzif.RS232.input"), "open");
  EXPECT_THAT(Value("ehzif.SIM." + kFirst + ".last-reading"), StartsWith("20"));
  EXPECT_THAT(Value("ehzif.RS232." + kSecond + ".last-reading"), StartsWith("20"));
  EXPECT_EQ(Value("ehzif.SIM." + kSecond + ".last-reading"), "none");
}

TEST_F(EhzStatus, RemovesWhatIsNotConfiguredAnyMore) {
  Configure({Interface("SIM", "meters=2", {kFirst, kSecond}), Interface("RS232", "input=sim", {kFirst})});
  Drive();
  Pass(2'000);
  PassToStatus();
  ASSERT_NE(Value("ehzif.SIM." + kSecond + ".last-reading"), "none");
  Notify(Interface("SIM", "meters=2", {kFirst}));
  Notify(Interface("RS232", "input=sim", {}));
  PassToStatus();
  EXPECT_EQ(Value("ehzif.SIM." + kSecond + ".last-reading"), "none") << "the meter";
  EXPECT_NE(Value("ehzif.SIM." + kFirst + ".last-reading"), "none");
  EXPECT_EQ(Value("ehzif.RS232.input"), "none") << "the interface";
}

TEST_F(EhzStatus, BringsItsValuesToAServiceThatComesBack) {
  Start();
  m_status.reset();
  m_values.clear();
  Store({kImport});
  m_status = std::make_unique<cRecordingServer>(m_driver.get(), "status");
  m_status->onMessage = [this](const vorn::cMsg& msg) { OnStatus(msg); };
  ASSERT_TRUE(AwaitStatus([this] { return Value("ehzif-RS232.readings-acknowledged") == "1"; }));
  EXPECT_NE(Value("ehzif-RS232.started"), "none");
}

// ---- the light

TEST_F(EhzStatus, FlashesTheFirstLightForAReading) {
  Start();
  Store({kImport});
  EXPECT_THAT(Flashes(), ElementsAre(unsigned{cUiCtrlIO::eLedMeter1}));
}

TEST_F(EhzStatus, FlashesForReadingsBetweenTwoStorageTimesToo) {
  m_options.intervalSeconds = 900;
  Start();
  Store({kImport});
  Flashes();
  Pass(1'000);
  ASSERT_TRUE(m_line->Write(Telegram({{kImport, "", "7262026565A0BC00", "621E", "52FF", "6201", ""}})));
  std::vector<unsigned int> flashes;
  ASSERT_TRUE(Await([&] { return !(flashes = Flashes()).empty(); }));
  EXPECT_THAT(m_stored, testing::SizeIs(1));
}

TEST_F(EhzStatus, FlashesTheLightThatAnInterfaceNames) {
  Configure({Interface("SIM", "light=2", {kFirst}), Interface("RS232", "input=sim,light=0", {kFirst})});
  Drive();
  Flashes();
  Pass(2'000);
  EXPECT_THAT(m_stored, Not(IsEmpty()));
  const std::vector<unsigned int> second = Flashes();
  EXPECT_THAT(second, Not(IsEmpty()));
  EXPECT_THAT(second, Each(unsigned{cUiCtrlIO::eLedMeter2}));
  Notify(Interface("SIM", "light=1", {kFirst}));
  Flashes();
  Pass(2'000);
  EXPECT_THAT(Flashes(), Contains(unsigned{cUiCtrlIO::eLedMeter1}));
}

TEST_F(EhzStatus, FlashesNotForAMeterThatIsNotWanted) {
  Configure({Interface("SIM", "meters=2", {"0A015441560000000009"})});
  Drive();
  Pass(2'000);
  EXPECT_THAT(Flashes(), IsEmpty());
}

}  // namespace
}  // namespace tav::sml
