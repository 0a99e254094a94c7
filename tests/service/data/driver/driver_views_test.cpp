// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/driver/driver_views.h>

#include <tests/service/data/config/config_world.h>

namespace tav::data {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using vorn::cMsg;
using vorn::cRecord;

class DriverViews : public ConfigWorld {
 protected:
  // What a driver was told since the last time: command, interface as it is now, and its meters.
  std::vector<std::string> News(cPeer& driver) {
    Settle();
    std::vector<std::string> news;
    for (const cMsg& msg : driver.GetMessages()) {
      if (msg.GetType() != db_ctrl::eNotifyDriver) continue;
      EXPECT_TRUE(msg.GetId().IsValid());
      const cDbCtrlIODriverNotify notify(msg.Record());
      cInterfaceRecord interface;
      std::string text = notify.m_command + " " + notify.m_interfaceName;
      if (interface.FromRecord(notify.m_content.GetRecordPar("interface-record"))) {
        EXPECT_EQ(interface.name, notify.m_interfaceName);
        text += " " + interface.options;
      }
      for (const cMeterConfig& meter : interface.meters) {
        text += " " + meter.meterID;
        EXPECT_EQ(meter.key, kSecretKey);
        EXPECT_TRUE(meter.collectors.empty());
      }
      news.push_back(text);
    }
    driver.GetMessages().clear();
    return news;
  }
};

TEST_F(DriverViews, ADriverIsToldOfItsInterfacesAndMeters) {
  cPeer& ehzif = Connect("ehzif");
  cPeer& mbif = Connect("mbif");
  Set(Interface("RS232", "a"));
  EXPECT_THAT(News(ehzif), ElementsAre("interface-changed RS232 a"));
  Set(Meter("M1"));
  EXPECT_THAT(News(ehzif), ElementsAre("interface-changed RS232 a M1"));
  Set(Meter("M2"));
  EXPECT_THAT(News(ehzif), ElementsAre("interface-changed RS232 a M1 M2"));
  Set(Interface("RS232", "b"));
  EXPECT_THAT(News(ehzif), ElementsAre("interface-changed RS232 b M1 M2"));
  DeleteMeter("M1");
  EXPECT_THAT(News(ehzif), ElementsAre("interface-changed RS232 b M2"));
  DeleteMeter("M2");
  EXPECT_THAT(News(ehzif), ElementsAre("interface-changed RS232 b"));
  DeleteInterface("RS232");
  EXPECT_THAT(News(ehzif), ElementsAre("interface-deleted RS232"));
  EXPECT_THAT(News(mbif), IsEmpty());
}

TEST_F(DriverViews, TheDriverThatAMeterHasLeftIsToldToo) {
  cPeer& ehzif = Connect("ehzif");
  cPeer& iec = Connect("1107if");
  Set(Interface("RS232", "a"));
  Set(Meter("M1", "RS232", "SML"));
  News(ehzif);
  News(iec);
  Set(Meter("M1", "RS232", "1107"));
  EXPECT_THAT(News(ehzif), ElementsAre("interface-changed RS232 a"));
  EXPECT_THAT(News(iec), ElementsAre("interface-changed RS232 a M1"));
}

TEST_F(DriverViews, AMeterThatMovesConcernsBothInterfaces) {
  cPeer& ehzif = Connect("ehzif");
  Set(Interface("RS232", "a"));
  Set(Interface("SIM", "b"));
  Set(Meter("M1", "RS232"));
  News(ehzif);
  Set(Meter("M1", "SIM"));
  EXPECT_THAT(News(ehzif), UnorderedElementsAre("interface-changed RS232 a", "interface-changed SIM b M1"));
}

TEST_F(DriverViews, WhatIsNoNewsIsNotTold) {
  cPeer& ehzif = Connect("ehzif");
  Set(Interface("RS232"));
  Set(Meter("M1"));
  News(ehzif);
  Set(Interface("RS232"));
  Set(Meter("M1"));
  // Collectors are the service's own business.
  Set(With(Meter("M1"), Collector()));
  Set(Target());
  Set(Template());
  Set(Interface("MBUS"));
  EXPECT_THAT(News(ehzif), IsEmpty());
}

TEST_F(DriverViews, ARefusedChangeIsNotTold) {
  cPeer& ehzif = Connect("ehzif");
  Set(Interface("RS232"));
  News(ehzif);
  cCollectorConfig collector = Collector();
  collector.pushTargetIdx = 5;
  Set(With(Meter("M1"), collector));
  EXPECT_THAT(News(ehzif), IsEmpty());
}

TEST_F(DriverViews, AWholeConfigurationIsToldInterfaceByInterface) {
  Set(Interface("RS232", "a"));
  Set(Interface("SIM", "b"));
  Set(Meter("M1", "SIM"));
  cPeer& ehzif = Connect("ehzif");
  cRecord request;
  request.AppendRecordPar("interface-record", Interface("RS232", "c").ToRecord());
  request.AppendRecordPar("meterconfig-record", Meter("M2").ToRecord());
  request.AppendBoolPar("replace", true);
  AskRaw(db_ctrl::eApplyConfig, request);
  EXPECT_THAT(News(ehzif), ElementsAre("interface-deleted SIM", "interface-changed RS232 c M2"));
}

// It would go on with what it knows for ever: without its connection it has to ask anew.
TEST_F(DriverViews, ADriverThatDoesNotReadLosesItsConnection) {
  Set(Interface("RS232"));
  cRecord request;
  for (int i = 0; i < 400; ++i) {
    cMeterConfig meter = Meter("M" + std::to_string(i));
    meter.interfaceOptions = std::string(1000, 'x');
    request.AppendRecordPar("meterconfig-record", meter.ToRecord());
  }
  request.AppendBoolPar("replace", false);
  ASSERT_EQ(AskRaw(db_ctrl::eApplyConfig, request).GetType(), db_ctrl::eApplyConfig + 1);
  Connect("ehzif");
  const std::unique_ptr<cPeer> deaf = std::move(m_peers.back());
  m_peers.pop_back();
  const auto isTold = testing::Contains(testing::HasSubstr("'ehzif' does not read: its connection is closed"));
  for (int i = 0; i < 40 && !testing::Matches(isTold)(m_trace.GetLines()); ++i)
    Set(Interface("RS232", std::to_string(i)));
  EXPECT_THAT(m_trace.GetLines(), isTold.Times(1));
  const auto said = m_trace.GetLines().size();
  Set(Interface("RS232", "last"));
  EXPECT_EQ(m_trace.GetLines().size(), said);
}

TEST_F(DriverViews, EveryProcessOfADriversNameIsTold) {
  cPeer& one = Connect("ehzif");
  cPeer& two = Connect("ehzif");
  Connect("");
  Set(Interface("SIM", "a"));
  EXPECT_THAT(News(one), ElementsAre("interface-changed SIM a"));
  EXPECT_THAT(News(two), ElementsAre("interface-changed SIM a"));
  Disconnect(one);
  Set(Interface("SIM", "b"));
  EXPECT_THAT(News(two), ElementsAre("interface-changed SIM b"));
}

}  // namespace
}  // namespace tav::data
