// SPDX-License-Identifier: Apache-2.0
// The driver without an input of its own: it lives by the configuration that the service tells it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <set>

#include <gateway/driver/sml/ehz_driver.h>
#include <tav/service/db_ctrl_protocol.h>
#include <tests/support/captured_trace.h>
#include <tests/support/scm_world.h>

namespace tav::sml {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using vorn::cMsg;

const std::string kFirst = "0A015441560000000001";  // the simulation's meters
const std::string kSecond = "0A015441560000000002";

// The driver and a service that knows the configuration, on one loop. Time stands still until it is moved.
class EhzConfigured : public testing::Test {
 protected:
  void SetUp() override {
    m_options.directory = m_folder.GetPath();
    m_options.configured = true;
  }
  void TearDown() override { m_server.reset(); }

  static vorn::cRecord Interface(const std::string& name, const std::string& options,
                                 const std::vector<std::string>& meters, bool enabled = true) {
    vorn::cRecord record = cInterfaceRecord(name, options, enabled).ToRecord();
    for (const std::string& id : meters) {
      cMeterConfig meter;
      meter.SetIdentification(id, "", "E", "");
      meter.SetInterfaceOptions(name, "SML", "");
      record.AppendRecordPar("meterconfig-record", meter.ToRecord());
    }
    return record;
  }

  void Start(const std::vector<vorn::cRecord>& interfaces) {
    m_interfaces = interfaces;
    m_driver = std::make_unique<cEhzDriver>(m_options, m_rules, m_clock);
    Serve();
    Connect(1);
  }
  void Serve() {
    m_server = std::make_unique<cRecordingServer>(m_driver.get(), "data");
    m_server->onMessage = [this](const cMsg& msg) { OnMessage(msg); };
  }
  // Until the driver has asked for its interfaces so many times.
  void Connect(std::size_t times) {
    ASSERT_TRUE(PollUntil(*m_driver, [&] {
      if (m_asked.size() < times) m_clock->Advance(10);
      return m_asked.size() == times;
    }));
    Pass(0);
  }
  void OnMessage(const cMsg& msg) {
    cMsg answer(msg.GetType() + 1);
    answer.SetId(msg.GetId());
    if (msg.GetType() == db_ctrl::eGetInterface) {
      m_asked.push_back(msg.Record());
      for (const vorn::cRecord& each : m_interfaces) answer.Record().AppendRecordPar("interface-record", each);
    } else if (msg.GetType() == db_ctrl::eStoreMeterRec) {
      cMeterRecord reading;
      EXPECT_TRUE(reading.FromRecord(msg.Record().GetRecordPar("meter-record")));
      m_stored.insert(reading.GetMeterID());
    } else if (msg.GetType() == db_ctrl::eStoreEvent) {
      m_events.push_back(msg.Record().GetTextPar("event") + ": " + msg.Record().GetTextPar("reason"));
    } else if (msg.GetType() != db_ctrl::eRegisterDriver) {
      m_answers.push_back(msg);
      return;
    }
    msg.GetReplyChannel()->Send(answer);
  }
  void Pass(unsigned int milliseconds) {
    m_clock->Advance(milliseconds);
    PollUntilIdle(*m_driver);
  }
  // The meters whose readings arrive within a period of the simulation.
  std::set<std::string> Stored() {
    m_stored.clear();
    Pass(2000);
    return m_stored;
  }

  // The driver's answer to a notification: empty when it has done it, else the reason.
  std::string Notify(const std::string& interface, const std::string& command, const vorn::cRecord& content = {}) {
    cMsg msg(db_ctrl::eNotifyDriver);
    vorn::cUuid id;
    id.Create();
    msg.SetId(id);
    msg.Record().AppendTextPar("interface-name", interface);
    msg.Record().AppendTextPar("command", command);
    msg.Record().AppendRecordPar("content", content);
    m_answers.clear();
    EXPECT_EQ(m_server->GetChannels().front()->Send(msg), 1);
    EXPECT_TRUE(PollUntil(*m_driver, [this] { return !m_answers.empty(); }));
    EXPECT_EQ(m_answers.front().GetId(), id);
    return m_answers.front().GetType() == db_ctrl::eDriverDone ? "" : m_answers.front().Record().GetTextPar("reason");
  }
  std::string Change(const vorn::cRecord& interface) {
    vorn::cRecord content;
    content.AppendRecordPar("interface-record", interface);
    return Notify(interface.GetTextPar("name"), "interface-changed", content);
  }
  static vorn::cRecord OfMeter(const std::string& meter) {
    vorn::cRecord content;
    content.AppendTextPar("meterID", meter);
    return content;
  }

  cTempFolder m_folder;
  cEhzOptions m_options;
  cObisMap m_rules;
  std::shared_ptr<vorn::cManualClock> m_clock = std::make_shared<vorn::cManualClock>();
  std::unique_ptr<cEhzDriver> m_driver;
  std::unique_ptr<cRecordingServer> m_server;
  std::vector<vorn::cRecord> m_interfaces;
  std::vector<vorn::cRecord> m_asked;
  std::set<std::string> m_stored;
  std::vector<std::string> m_events;
  std::vector<cMsg> m_answers;
  cCapturedTrace m_trace;
};

}  // namespace

TEST_F(EhzConfigured, AsksForAllInterfacesWithTheirMetersOnceItIsRegistered) {
  Start({});
  ASSERT_EQ(m_asked.size(), 1u);
  EXPECT_FALSE(m_asked[0].GetPar("name").IsValid());
  EXPECT_TRUE(m_asked[0].GetBoolPar("with-meters"));
  EXPECT_FALSE(m_asked[0].GetBoolPar("with-loggers"));
  EXPECT_THAT(Stored(), IsEmpty());
}

TEST_F(EhzConfigured, OpensWhatIsEnabledAndHasAMeterOfItsOwn) {
  Start({Interface("SIM", "meters=3", {kFirst, kSecond})});
  EXPECT_THAT(Stored(), ElementsAre(kFirst, kSecond)) << "the third is not configured";
}

TEST_F(EhzConfigured, LeavesClosedWhatIsDisabledOrOfOthers) {
  vorn::cRecord others = cInterfaceRecord("MBUS", "input=sim", true).ToRecord();
  cMeterConfig meter;
  meter.SetIdentification(kFirst, "", "", "");
  meter.SetInterfaceOptions("MBUS", "MBUS", "");
  others.AppendRecordPar("meterconfig-record", meter.ToRecord());
  Start({Interface("SIM", "", {kFirst}, false), others, Interface("RS232", "input=sim", {})});
  EXPECT_THAT(Stored(), IsEmpty());
}

TEST_F(EhzConfigured, ServesSeveralInterfacesAtOnce) {
  Start({Interface("SIM", "", {kFirst}), Interface("RS232", "input=sim,meters=2", {kSecond})});
  EXPECT_THAT(Stored(), ElementsAre(kFirst, kSecond));
}

TEST_F(EhzConfigured, ServesTheNamedInterfaceOnly) {
  m_options.interfaceName = "RS232";
  Start({Interface("SIM", "", {kFirst}), Interface("RS232", "input=sim,meters=2", {kSecond})});
  EXPECT_THAT(Stored(), ElementsAre(kSecond));
}

TEST_F(EhzConfigured, FollowsAChangeWithoutARestart) {
  Start({Interface("SIM", "meters=2", {kFirst})});
  EXPECT_THAT(Stored(), ElementsAre(kFirst));
  EXPECT_EQ(Change(Interface("SIM", "meters=2", {kFirst, kSecond})), "");
  EXPECT_THAT(Stored(), ElementsAre(kFirst, kSecond)) << "another meter";
  EXPECT_EQ(Change(Interface("SIM", "meters=1", {kFirst, kSecond})), "");
  EXPECT_THAT(Stored(), ElementsAre(kFirst)) << "another input";
  EXPECT_EQ(Change(Interface("SIM", "meters=1", {kFirst}, false)), "");
  EXPECT_THAT(Stored(), IsEmpty()) << "disabled";
  EXPECT_EQ(Change(Interface("SIM", "meters=1", {kFirst})), "");
  EXPECT_THAT(Stored(), ElementsAre(kFirst)) << "enabled again";
  EXPECT_EQ(Change(Interface("SIM", "meters=1", {})), "");
  EXPECT_THAT(Stored(), IsEmpty()) << "its last meter is gone";
}

TEST_F(EhzConfigured, ClosesADeletedInterface) {
  Start({Interface("SIM", "", {kFirst})});
  EXPECT_EQ(Notify("SIM", "interface-deleted"), "");
  EXPECT_THAT(Stored(), IsEmpty());
  EXPECT_EQ(Notify("SIM", "interface-deleted"), "") << "it is not there, as was wanted";
}

TEST_F(EhzConfigured, SaysWhatIsWrongWithAConfigurationAndGoesOnWithTheOthers) {
  Start({Interface("SIM", "meters=none", {kFirst}), Interface("RS232", "input=sim", {kFirst})});
  EXPECT_THAT(Stored(), ElementsAre(kFirst));
  const std::string fault = "interface 'SIM': option 'meters': 'none' is no number from 1 to 1000";
  EXPECT_THAT(m_events, ElementsAre("interface refused: " + fault));
  EXPECT_THAT(m_trace.GetLines(), testing::Contains("UnitDriver 2 " + fault));
  EXPECT_EQ(Change(Interface("SIM", "meters=none", {kFirst})), fault);
  EXPECT_EQ(Change(Interface("SIM", "meters=1", {kFirst})), "");
}

TEST_F(EhzConfigured, ClosesAnInterfaceWhoseNewConfigurationIsWrong) {
  Start({Interface("SIM", "", {kFirst})});
  EXPECT_NE(Change(Interface("SIM", "period=0", {kFirst})), "");
  EXPECT_THAT(Stored(), IsEmpty());
}

TEST_F(EhzConfigured, RefusesARecordThatIsNoInterface) {
  Start({});
  EXPECT_EQ(Notify("SIM", "interface-changed"), "interface 'SIM': its record cannot be read, it is empty");
  vorn::cRecord content, nameless;
  nameless.AppendUIntPar("version", 1);
  content.AppendRecordPar("interface-record", nameless);
  EXPECT_EQ(Notify("SIM", "interface-changed", content),
            "interface 'SIM': its record cannot be read, missing interface name");
}

TEST_F(EhzConfigured, AsksAnewAfterEachConnectionAndDropsWhatIsGone) {
  Start({Interface("SIM", "", {kFirst}), Interface("RS232", "input=sim", {kFirst})});
  m_interfaces = {Interface("RS232", "input=sim,meters=2", {kSecond})};
  m_server.reset();
  Pass(0);
  Serve();
  Connect(2);
  EXPECT_THAT(Stored(), ElementsAre(kSecond));
}

TEST_F(EhzConfigured, GoesOnWithItsInterfacesWhileTheServiceIsAway) {
  Start({Interface("SIM", "period=60", {kFirst})});
  m_server.reset();
  for (int i = 0; i < 5; ++i) Pass(60000);
  EXPECT_THAT(m_driver->Summary(), HasSubstr("dropped=0"));
  Serve();
  Connect(2);
  EXPECT_TRUE(PollUntil(*m_driver, [this] { return m_driver->Summary().find("open=0") != std::string::npos; }));
  EXPECT_THAT(m_stored, ElementsAre(kFirst));
}

TEST_F(EhzConfigured, TakesAConfiguredMeterIntoOperationAndCanDoNoMore) {
  Start({Interface("SIM", "", {kFirst})});
  EXPECT_EQ(Notify("SIM", "activate-meter", OfMeter(kFirst)), "");
  EXPECT_EQ(Notify("SIM", "activate-meter", OfMeter(kSecond)),
            "meter '" + kSecond + "' is not configured for interface 'SIM'");
  EXPECT_EQ(Notify("SIM", "set-valve", OfMeter(kFirst)),
            "meter '" + kFirst + "' only sends: ehzif cannot do 'set-valve'");
  EXPECT_EQ(Notify("SIM", "set-time-date", OfMeter(kFirst)),
            "meter '" + kFirst + "' only sends: ehzif cannot do 'set-time-date'");
  EXPECT_EQ(Notify("RS232", "activate-meter", OfMeter(kFirst)), "interface 'RS232' is not open");
}

TEST_F(EhzConfigured, SumsUpOverAllItsInterfacesAlsoThoseClosed) {
  Start({Interface("SIM", "", {kFirst})});
  Stored();
  Notify("SIM", "interface-deleted");
  Change(Interface("RS232", "input=sim", {kFirst}));
  Stored();
  EXPECT_THAT(m_driver->Summary(), HasSubstr("frames good=4")) << "two of each: one at once, one a period later";
}

TEST_F(EhzConfigured, StoresInTheIntervalOfTheMeter) {
  vorn::cRecord record = cInterfaceRecord("SIM", "interval=86400,period=60", true).ToRecord();
  cMeterConfig meter;
  meter.SetIdentification(kFirst, "", "E", "");
  meter.SetInterfaceOptions("SIM", "SML", "");
  record.AppendRecordPar("meterconfig-record", meter.ToRecord());
  Start({record});
  for (int i = 0; i < 3; ++i) Pass(60000);
  EXPECT_THAT(m_driver->Summary(), HasSubstr("delivered=1"));
}

TEST_F(EhzConfigured, EndsOnASignalWhenAllIsAcknowledged) {
  Start({Interface("SIM", "", {kFirst})});
  Stored();
  raise(SIGTERM);
  EXPECT_EQ(m_driver->Work(), eExitOk);
}

TEST_F(EhzConfigured, TracesAServiceThatDoesNotKnowTheRequest) {
  m_driver = std::make_unique<cEhzDriver>(m_options, m_rules, m_clock);
  m_server = std::make_unique<cRecordingServer>(m_driver.get(), "data");
  bool refused = false;
  m_server->onMessage = [&](const cMsg& msg) {
    const bool asked = msg.GetType() == db_ctrl::eGetInterface;
    cMsg answer(msg.GetType() + (asked ? 2 : 1));
    answer.SetId(msg.GetId());
    if (asked) answer.Record().AppendTextPar("reason", "too old");
    msg.GetReplyChannel()->Send(answer);
    refused = refused || asked;
  };
  ASSERT_TRUE(PollUntil(*m_driver, [&] {
    if (!refused) m_clock->Advance(10);
    return refused;
  }));
  PollUntilIdle(*m_driver);
  EXPECT_THAT(m_trace.GetLines(), testing::Contains("UnitDriver 2 the configuration was refused: too old"));
}

}  // namespace tav::sml
