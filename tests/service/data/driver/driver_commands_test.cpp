// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/driver/driver_commands.h>

#include <tests/service/data/config/config_world.h>

namespace tav::data {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using vorn::cMsg;
using vorn::cRecord;
using vorn::cUuid;

class DriverCommands : public ConfigWorld {
 protected:
  void SetUp() override {
    ConfigWorld::SetUp();
    Set(Interface());
    Set(Meter());
  }

  // Asks and does not wait.
  cUuid Send(const Request& request) {
    cUuid tid;
    tid.Create();
    EXPECT_TRUE(request(m_user->io, tid));
    Settle();
    return tid;
  }
  cUuid SendValve(const std::string& meterId = "M1") {
    return Send([&](cDbCtrlIO& io, cUuid& tid) { return io.SetValve(tid, meterId, "EMH", "E", "closed"); });
  }
  std::string ReasonOfValve(const std::string& meterId, const std::string& mfct, const std::string& medium) {
    const cMsg answer = Ask([&](cDbCtrlIO& io, cUuid& tid) {
      tid.Create();
      return io.SetValve(tid, meterId, mfct, medium, "closed");
    });
    EXPECT_EQ(answer.GetType(), db_ctrl::eSetValve + 2);
    return Reason(answer);
  }
  // What a driver was told, oldest first.
  static std::vector<cMsg> Told(cPeer& driver) {
    std::vector<cMsg> told;
    for (const cMsg& msg : driver.GetMessages())
      if (msg.GetType() == db_ctrl::eNotifyDriver) told.push_back(msg);
    return told;
  }
  void Reply(cPeer& driver, const cMsg& told, unsigned int type, const cRecord& record) {
    cMsg answer(type);
    answer.SetId(told.GetId());
    answer.Record() = record;
    EXPECT_EQ(driver.io.Send(answer), 1);
    Settle();
  }
  bool HasAnswer(const cUuid& tid) {
    for (const cMsg& msg : m_user->GetMessages())
      if (msg.GetId() == tid) return true;
    return false;
  }
};

// ---- there and back

TEST_F(DriverCommands, TellTheDriverOfTheMeterAndBringItsAnswerBack) {
  cPeer& driver = Connect("ehzif");
  cPeer& other = Connect("mbif");
  const cUuid tid = SendValve();
  ASSERT_EQ(Told(driver).size(), 1u);
  EXPECT_TRUE(Told(other).empty());
  const cMsg told = Told(driver)[0];
  EXPECT_TRUE(told.GetId().IsValid());
  EXPECT_FALSE(told.GetId() == tid);
  const cDbCtrlIODriverNotify notify(told.Record());
  EXPECT_EQ(notify.m_interfaceName, "RS232");
  EXPECT_EQ(notify.m_command, "set-valve");
  EXPECT_THAT(Parameters(notify.m_content),
              ElementsAre("meterID text=M1", "manufactor text=EMH", "medium text=E", "valve text=closed"));
  EXPECT_FALSE(HasAnswer(tid));
  cRecord content;
  content.AppendTextPar("position", "closed");
  cRecord done;
  done.AppendRecordPar("content", content);
  Reply(driver, told, db_ctrl::eDriverDone, done);
  const cMsg answer = AnswerTo(*m_user, tid);
  EXPECT_EQ(answer.GetType(), db_ctrl::eValveSet);
  EXPECT_EQ(answer.Record().GetRecordPar("content"), content);
  EXPECT_EQ(m_server->CountCommands(), 0u);
}

TEST_F(DriverCommands, CarryWhatEachCommandNeeds) {
  cPeer& driver = Connect("ehzif");
  Send([](cDbCtrlIO& io, cUuid& tid) { return io.ActivateMeter(tid, "M1", "E", "EMH", "Vendor", kSecretKey); });
  Send([](cDbCtrlIO& io, cUuid& tid) { return io.ActivateMeter(tid, "M1", "", "", "", ""); });
  Send([](cDbCtrlIO& io, cUuid& tid) { return io.SetTimeDate(tid, "M1", "EMH", "E", 1'700'000'000); });
  const auto told = Told(driver);
  ASSERT_EQ(told.size(), 3u);
  const std::string meter = "meterID text=M1, manufactor text=EMH, medium text=E";
  EXPECT_THAT(Parameters(told[0].Record()),
              ElementsAre("interface-name text=RS232", "command text=activate-meter",
                          "content record={" + meter + ", vendor text=Vendor, key text=" + kSecretKey + "}"));
  EXPECT_THAT(Parameters(told[1].Record()), ElementsAre("interface-name text=RS232", "command text=activate-meter",
                                                        "content record={" + meter + "}"));
  EXPECT_THAT(Parameters(told[2].Record()), ElementsAre("interface-name text=RS232", "command text=set-time-date",
                                                        "content record={" + meter + ", timestamp uint=1700000000}"));
}

TEST_F(DriverCommands, AnswerUnderTheNumberOfTheRequest) {
  cPeer& driver = Connect("ehzif");
  const cUuid activated =
      Send([](cDbCtrlIO& io, cUuid& tid) { return io.ActivateMeter(tid, "M1", "E", "EMH", "", ""); });
  const cUuid set = Send([](cDbCtrlIO& io, cUuid& tid) { return io.SetTimeDate(tid, "M1", "EMH", "E", 1); });
  // In another order than they were asked.
  Reply(driver, Told(driver)[1], db_ctrl::eDriverDone, {});
  Reply(driver, Told(driver)[0], db_ctrl::eDriverDone, {});
  EXPECT_EQ(AnswerTo(*m_user, activated).GetType(), db_ctrl::eMeterActivated);
  EXPECT_EQ(AnswerTo(*m_user, set).GetType(), db_ctrl::eTimeDateSet);
  EXPECT_TRUE(AnswerTo(*m_user, set).Record().IsEmpty());
}

TEST_F(DriverCommands, ADriversFailureIsARefusal) {
  cPeer& driver = Connect("ehzif");
  for (const char* reason : {"the valve is stuck", ""}) {
    const cUuid tid = SendValve();
    cRecord failed;
    failed.AppendTextPar("reason", reason);
    Reply(driver, Told(driver).back(), db_ctrl::eDriverFailed, failed);
    const cMsg answer = AnswerTo(*m_user, tid);
    EXPECT_EQ(answer.GetType(), db_ctrl::eSetValve + 2);
    EXPECT_EQ(Reason(answer), "driver 'ehzif': " + std::string(*reason != '\0' ? reason : "failed"));
  }
}

TEST_F(DriverCommands, GoToTheDriverThatRegisteredLast) {
  cPeer& old = Connect("ehzif");
  cPeer& young = Connect("ehzif");
  SendValve();
  EXPECT_TRUE(Told(old).empty());
  EXPECT_EQ(Told(young).size(), 1u);
  Disconnect(young);
  SendValve();
  EXPECT_EQ(Told(old).size(), 1u);
}

// ---- refused at once

TEST_F(DriverCommands, RefuseWhatHasNoDriver) {
  EXPECT_EQ(ReasonOfValve("M1", "EMH", "E"), "driver 'ehzif' is not registered");
  Set(Interface("LAB"));
  Set(Meter("M2", "LAB", "SML"));
  EXPECT_EQ(ReasonOfValve("M2", "", ""), "no driver serves protocol 'SML' on interface 'LAB'");
}

TEST_F(DriverCommands, RefuseAMeterThatIsNotMeantAlone) {
  Connect("ehzif");
  cMeterConfig gas = Meter();
  gas.medium = "G";
  Set(gas);
  EXPECT_EQ(ReasonOfValve("M9", "", ""), "meter 'M9' is not there");
  EXPECT_EQ(ReasonOfValve("M1", "XYZ", ""), "meter 'M1' manufactor 'XYZ' is not there");
  EXPECT_THAT(ReasonOfValve("M1", "", ""), HasSubstr("meter 'M1' may be any of"));
  EXPECT_EQ(ReasonOfValve("", "", ""), "no meter is named");
}

TEST_F(DriverCommands, AreBounded) {
  Connect("ehzif");
  for (std::size_t i = 0; i < cDriverCommands::kMaxWaiting; ++i) SendValve();
  EXPECT_EQ(m_server->CountCommands(), cDriverCommands::kMaxWaiting);
  EXPECT_EQ(ReasonOfValve("M1", "", ""), "too many commands wait for drivers");
}

TEST_F(DriverCommands, TakeTextsAsLongAsAMetersAndNoLonger) {
  cPeer& driver = Connect("ehzif");
  const auto activate = [&](std::size_t bytes) {
    return Send([&](cDbCtrlIO& io, cUuid& tid) {
      return io.ActivateMeter(tid, "M1", "E", "EMH", "", std::string(bytes, 'k'));
    });
  };
  activate(255);
  EXPECT_EQ(Told(driver).size(), 1u);
  EXPECT_EQ(Reason(AnswerTo(*m_user, activate(256))), "parameter \"key\" has 256 bytes, at most 255 are taken");
}

// ---- no answer

TEST_F(DriverCommands, RefuseWhenTheDriverGoesAway) {
  cPeer& driver = Connect("ehzif");
  const cUuid tid = SendValve();
  Disconnect(driver);
  EXPECT_EQ(Reason(AnswerTo(*m_user, tid)), "driver 'ehzif' ended before it answered");
  EXPECT_EQ(ReasonOfValve("M1", "", ""), "driver 'ehzif' is not registered");
}

TEST_F(DriverCommands, RefuseWhenTheDriverTakesTooLong) {
  cPeer& driver = Connect("ehzif");
  const cUuid first = SendValve();
  m_clock->Advance(10'000);
  const cUuid second = SendValve();
  m_clock->Advance(cDriverCommands::kPatience - 10'000 - 1);
  Settle();
  EXPECT_FALSE(HasAnswer(first));
  m_clock->Advance(1);
  const cMsg answer = AnswerTo(*m_user, first);
  EXPECT_EQ(answer.GetType(), db_ctrl::eSetValve + 2);
  EXPECT_EQ(Reason(answer), "driver 'ehzif' did not answer within 30 seconds");
  EXPECT_FALSE(HasAnswer(second));
  m_clock->Advance(10'000);
  EXPECT_EQ(Reason(AnswerTo(*m_user, second)), "driver 'ehzif' did not answer within 30 seconds");
  // What comes too late is nobody's.
  const std::size_t before = m_user->GetMessages().size();
  Reply(driver, Told(driver)[0], db_ctrl::eDriverDone, {});
  EXPECT_EQ(m_user->GetMessages().size(), before);
}

TEST_F(DriverCommands, ARequesterThatIsGoneHarmsNothing) {
  cPeer& driver = Connect("ehzif");
  SendValve();
  SendValve();
  Disconnect(*m_user);
  Reply(driver, Told(driver)[0], db_ctrl::eDriverDone, {});
  m_clock->Advance(cDriverCommands::kPatience);
  Settle();
  EXPECT_EQ(m_server->CountCommands(), 0u);
  m_user = &Connect("");
  EXPECT_EQ(GetMeters().size(), 1u);
}

TEST_F(DriverCommands, OnlyTheDriverThatWasAskedMayAnswer) {
  cPeer& driver = Connect("ehzif");
  cPeer& stranger = Connect("mbif");
  const cUuid tid = SendValve();
  Reply(stranger, Told(driver)[0], db_ctrl::eDriverDone, {});
  EXPECT_FALSE(HasAnswer(tid));
  Reply(driver, Told(driver)[0], db_ctrl::eDriverDone, {});
  EXPECT_EQ(AnswerTo(*m_user, tid).GetType(), db_ctrl::eValveSet);
}

TEST_F(DriverCommands, AFailureThatNobodyWaitsForIsTraced) {
  cPeer& driver = Connect("ehzif");
  cRecord failed;
  failed.AppendTextPar("reason", "no such device");
  Reply(driver, cMsg(), db_ctrl::eDriverFailed, failed);
  EXPECT_THAT(m_trace.GetLines(), testing::Contains("UnitData 4 driver 'ehzif' failed: no such device"));
}

TEST_F(DriverCommands, AnswersOfDriversAreNeverAnswered) {
  cPeer& driver = Connect("ehzif");
  for (const unsigned int type : {db_ctrl::eDriverDone, db_ctrl::eDriverFailed}) Reply(driver, cMsg(), type, {});
  EXPECT_TRUE(driver.GetMessages().empty());
}

}  // namespace
}  // namespace tav::data
