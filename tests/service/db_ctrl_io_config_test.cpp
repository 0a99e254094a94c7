// SPDX-License-Identifier: Apache-2.0
// The requests of tav/service/db_ctrl_io_config.cpp, sent to a real service.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tav/config/interface_record.h>
#include <tav/config/meter_config.h>
#include <tav/config/meter_template.h>
#include <tav/config/push_target.h>
#include <tav/service/db_ctrl_protocol.h>
#include <tests/service/db_ctrl_io_fixture.h>

using namespace db_ctrl_io_fixture;
using tav::cInterfaceRecord;
using tav::cMeterConfig;
using tav::cMeterTemplate;
using tav::cPushTarget;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

cMeterConfig Meter() {
  cMeterConfig meter;
  meter.SetIdentification("4711", "5", "E", "EMH");
  meter.SetKey("00112233");
  return meter;
}

cInterfaceRecord Interface() { return cInterfaceRecord("RS485", "baud=9600", true); }

cPushTarget Target() {
  cPushTarget target;
  target.configure(7, "portal", "https", "example.net", "gate", "secret", "in", 10, 60, true, true, true);
  return target;
}

cMeterTemplate Template() {
  cMeterTemplate preset;
  preset.name = "heat";
  preset.meterConfig = Meter();
  preset.pushConfig = Target();
  return preset;
}

// "{its parameters}" as Received() shows a nested record.
std::string Nested(const vorn::cRecord& record) {
  vorn::cRecord outer;
  outer.AppendRecordPar("", record);
  return Parameters(outer)[0].substr(std::string(" record=").size());
}

struct cOperation {
  std::string name;  // as the line of a failed send has it
  std::function<bool(cDbCtrlIO&, vorn::cUuid&)> call;
  std::function<bool(cDbCtrlIO&)> withoutId;
  std::string request;
};

std::vector<cOperation> Operations() {
  return {
      {"GetMeter", [](auto& io, auto& tid) { return io.GetMeter(tid, "5"); }, [](auto& io) { return io.GetMeter("5"); },
       "51070 addr text=5"},
      {"SetMeter", [](auto& io, auto& tid) { return io.SetMeter(tid, Meter()); },
       [](auto& io) { return io.SetMeter(Meter()); }, "51073 meterconfig-record record=" + Nested(Meter().ToRecord())},
      {"DeleteMeter", [](auto& io, auto& tid) { return io.DeleteMeter(tid, "4711", "E", "EMH"); },
       [](auto& io) { return io.DeleteMeter("4711", "E", "EMH"); },
       "51076 meter-id text=4711 medium text=E manufactor text=EMH"},
      {"GetInterface", [](auto& io, auto& tid) { return io.GetInterface(tid, "RS485", true, false); },
       [](auto& io) { return io.GetInterface("RS485", true, false); },
       "51064 name text=RS485 with-meters bool=true with-loggers bool=false"},
      {"DelInterface", [](auto& io, auto& tid) { return io.DeleteInterface(tid, "RS485"); },
       [](auto& io) { return io.DeleteInterface("RS485"); }, "5106a name text=RS485"},
      {"GetPushTarget", [](auto& io, auto& tid) { return io.GetPushTarget(tid, "portal"); },
       [](auto& io) { return io.GetPushTarget("portal"); }, "5108e name text=portal"},
      {"SetPushTarget", [target = Target()](auto& io, auto& tid) mutable { return io.SetPushTarget(tid, target); },
       [target = Target()](auto& io) mutable { return io.SetPushTarget(target); },
       "51091 pushtarget-record record=" + Nested(Target().ToRecord())},
      {"DelPushTarget", [](auto& io, auto& tid) { return io.DeletePushTarget(tid, 0x100000001, "portal"); },
       [](auto& io) { return io.DeletePushTarget(0x100000001, "portal"); },
       "51094 idx uint64=4294967297 name text=portal"},
      {"GetMeterTemplate", [](auto& io, auto& tid) { return io.GetMeterTemplate(tid, "heat"); },
       [](auto& io) { return io.GetMeterTemplate("heat"); }, "51190 name text=heat"},
      {"SetMeterTemplate", [](auto& io, auto& tid) { return io.SetMeterTemplate(tid, Template()); },
       [](auto& io) { return io.SetMeterTemplate(Template()); },
       "51193 metertemplate-record record=" + Nested(Template().ToRecord())},
      {"DeleteMeterTemplate", [](auto& io, auto& tid) { return io.DeleteMeterTemplate(tid, 42, "heat"); },
       [](auto& io) { return io.DeleteMeterTemplate(42, "heat"); }, "51196 idx uint64=42 name text=heat"},
  };
}

// Like the others but for its lines of trace.
cOperation SetInterfaceOperation() {
  return {"SetInterface", [](auto& io, auto& tid) { return io.SetInterface(tid, Interface()); },
          [](auto& io) { return io.SetInterface(Interface()); },
          "51067 interface-record record=" + Nested(Interface().ToRecord())};
}

std::vector<cOperation> AllOperations() {
  std::vector<cOperation> all = Operations();
  all.push_back(SetInterfaceOperation());
  return all;
}

class DbCtrlIOConfig : public cDbCtrlIOFixture {
 protected:
  void SetUp() override {
    Connect("");
    Traced();
  }
  // The one message that arrived; one of type 0 when there is another number of them.
  vorn::cMsg TakeMessage() {
    Settle();
    const std::vector<vorn::cMsg> messages = std::move(m_server->messages);
    m_server->messages.clear();
    return messages.size() == 1 ? messages.front() : vorn::cMsg();
  }
};

}  // namespace

TEST_F(DbCtrlIOConfig, EveryRequestHasItsNumberAndParameters) {
  for (const cOperation& operation : AllOperations()) {
    vorn::cUuid tid;
    EXPECT_TRUE(operation.call(*m_io, tid));
    EXPECT_THAT(Received(), ElementsAre(operation.request));
  }
  EXPECT_THAT(Traced(), IsEmpty()) << "and no line of progress";
}

TEST_F(DbCtrlIOConfig, EveryRequestIsWhatTheProtocolAsksFor) {
  for (const cOperation& operation : AllOperations()) {
    EXPECT_TRUE(operation.withoutId(*m_io));
    const vorn::cMsg msg = TakeMessage();
    const tav::cProtocolMessage* row = tav::db_ctrl::kProtocol.Find(msg.GetType());
    ASSERT_NE(row, nullptr) << operation.name;
    std::string error;
    EXPECT_TRUE(tav::CheckParameters(*row, msg.Record(), error)) << operation.name << ": " << error;
  }
}

TEST_F(DbCtrlIOConfig, CreatesAnIdentifierThatIsNotValidForTheCallerToKnow) {
  for (const cOperation& operation : AllOperations()) {
    vorn::cUuid tid;
    EXPECT_TRUE(operation.call(*m_io, tid));
    EXPECT_TRUE(tid.IsValid()) << operation.name;
    EXPECT_EQ(TakeMessage().GetId(), tid) << operation.name;
  }
}

TEST_F(DbCtrlIOConfig, KeepsAValidIdentifier) {
  for (const cOperation& operation : AllOperations()) {
    vorn::cUuid tid;
    tid.Create();
    const vorn::cUuid before = tid;
    EXPECT_TRUE(operation.call(*m_io, tid));
    EXPECT_EQ(tid, before) << operation.name;
    EXPECT_EQ(TakeMessage().GetId(), before) << operation.name;
  }
}

TEST_F(DbCtrlIOConfig, WithoutIdentifierTheRequestHasAFreshOne) {
  for (const cOperation& operation : AllOperations()) {
    EXPECT_TRUE(operation.withoutId(*m_io));
    const vorn::cMsg first = TakeMessage();
    EXPECT_TRUE(operation.withoutId(*m_io));
    const vorn::cMsg second = TakeMessage();
    EXPECT_TRUE(first.GetId().IsValid()) << operation.name;
    EXPECT_TRUE(second.GetId().IsValid()) << operation.name;
    EXPECT_NE(first.GetId(), second.GetId()) << operation.name;
    vorn::cUuid tid;
    EXPECT_TRUE(operation.call(*m_io, tid));
    const vorn::cMsg withId = TakeMessage();
    EXPECT_EQ(first.GetType(), withId.GetType()) << operation.name;
    EXPECT_EQ(first.Record(), withId.Record()) << operation.name;
  }
}

TEST_F(DbCtrlIOConfig, TheAnswerGoesToTheOwningServiceUnderTheIdentifier) {
  vorn::cUuid tid;
  ASSERT_TRUE(m_io->GetMeter(tid, ""));
  vorn::cMsg answer(0x51071);
  answer.SetId(tid);
  ASSERT_EQ(m_server->GetChannels().front()->Send(answer), 1);
  Settle();
  ASSERT_EQ(m_near.messages.size(), 1u);
  EXPECT_EQ(m_near.messages[0].GetType(), 0x51071u);
  EXPECT_EQ(m_near.messages[0].GetId(), tid);
}

// ---- what is left out

TEST_F(DbCtrlIOConfig, EmptyTextsOfQuestionsAreLeftOut) {
  m_io->GetMeter("");
  m_io->GetPushTarget("");
  m_io->GetMeterTemplate("");
  m_io->GetInterface("", false, true);
  EXPECT_THAT(Received(), ElementsAre("51070", "5108e", "51190", "51064 with-meters bool=false with-loggers bool=true"))
      << "both switches of an interface always go";
}

TEST_F(DbCtrlIOConfig, EachEmptyTextOfAMeterToDeleteIsLeftOut) {
  m_io->DeleteMeter("", "", "");
  m_io->DeleteMeter("4711", "", "");
  m_io->DeleteMeter("", "E", "");
  m_io->DeleteMeter("", "", "EMH");
  EXPECT_THAT(Received(),
              ElementsAre("51076", "51076 meter-id text=4711", "51076 medium text=E", "51076 manufactor text=EMH"));
}

TEST_F(DbCtrlIOConfig, TheOtherDeletionsSendAnEmptyName) {
  m_io->DeleteInterface("");
  m_io->DeletePushTarget(0, "");
  m_io->DeleteMeterTemplate(0xFFFFFFFFFFFFFFFF, "");
  EXPECT_THAT(Received(), ElementsAre("5106a name text=", "51094 idx uint64=0 name text=",
                                      "51196 idx uint64=18446744073709551615 name text="));
}

TEST_F(DbCtrlIOConfig, AnInvalidMeterIsSentAllTheSame) {
  EXPECT_TRUE(m_io->SetMeter(cMeterConfig()));
  EXPECT_THAT(Received(), ElementsAre("51073 meterconfig-record record=" + Nested(cMeterConfig().ToRecord())));
}

TEST_F(DbCtrlIOConfig, AnInvalidInterfaceIsNotSent) {
  vorn::cUuid tid;
  EXPECT_FALSE(m_io->SetInterface(tid, cInterfaceRecord()));
  EXPECT_FALSE(m_io->SetInterface(cInterfaceRecord()));
  EXPECT_FALSE(tid.IsValid());
  EXPECT_THAT(Received(), IsEmpty());
  EXPECT_THAT(Traced(), ElementsAre("2 dbctrl[SetInterface] invalid InterfaceRecord",
                                    "2 dbctrl[SetInterface] invalid InterfaceRecord"));
}

TEST_F(DbCtrlIOConfig, OfAnInvalidPushTargetTheRequestIsSentWithoutIt) {
  cPushTarget target = Target();
  target.host = "";
  vorn::cUuid tid;
  EXPECT_TRUE(m_io->SetPushTarget(tid, target));
  EXPECT_EQ(target.error, "missing host");
  EXPECT_THAT(Received(), ElementsAre("51091"));
  EXPECT_THAT(Traced(), IsEmpty());
}

// ---- what cannot be sent

TEST_F(DbCtrlIOConfig, ARefusedRequestIsTracedWhole) {
  for (const cOperation& operation : Operations()) {
    vorn::cUuid tid;
    ASSERT_TRUE(operation.call(*m_io, tid));
    const std::string message = TakeMessage().ToString();
    CutWire();
    Traced();
    EXPECT_FALSE(operation.call(*m_io, tid));
    EXPECT_THAT(Traced(), ElementsAre("2 dbctrl[" + operation.name + "] send failed, msg=" + message));
    EXPECT_FALSE(operation.withoutId(*m_io)) << operation.name;
    EXPECT_EQ(Traced().size(), 1u);
    Reconnect();
    EXPECT_THAT(Received(), IsEmpty()) << "it is not sent later";
  }
  EXPECT_THAT(m_io->m_queue, IsEmpty());
}

TEST_F(DbCtrlIOConfig, ARefusedInterfaceIsTracedWithoutTheMessage) {
  CutWire();
  Traced();
  vorn::cUuid tid;
  EXPECT_FALSE(m_io->SetInterface(tid, Interface()));
  EXPECT_TRUE(tid.IsValid());
  EXPECT_FALSE(m_io->SetInterface(Interface()));
  EXPECT_THAT(Traced(), ElementsAre("2 dbctrl[SetInterface] send failed", "2 dbctrl[SetInterface] send failed"));
}

TEST_F(DbCtrlIOConfig, AFullChannelRefusesTooAndSaysNothingBelowTheLevel) {
  Congest();
  Traced();
  const cTraceLevel level("UnitTAV", 1);
  for (const cOperation& operation : AllOperations()) {
    vorn::cUuid tid;
    EXPECT_FALSE(operation.call(*m_io, tid)) << operation.name;
    EXPECT_TRUE(tid.IsValid());
  }
  EXPECT_FALSE(m_io->SetInterface(cInterfaceRecord()));
  EXPECT_THAT(Traced(), IsEmpty());
}
