// SPDX-License-Identifier: Apache-2.0
// The requests of tav/service/db_ctrl_io_query.cpp, sent to a real service. The lines of trace are compared letter for
// letter: some name another operation, or lack a blank.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tav/service/db_ctrl_protocol.h>
#include <tav/service/db_ctrl_request.h>
#include <tests/service/db_ctrl_io_fixture.h>

using namespace db_ctrl_io_fixture;
using tav::cDbCtrlRequest;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr const char* kHandleText = "0f0e0d0c-0b0a-0908-0706-050403020100";

vorn::cUuid Handle() {
  vorn::cUuid handle;
  handle.FromString(kHandleText);
  return handle;
}

cDbCtrlRequest Selection() {
  cDbCtrlRequest request;
  request.m_addr = "5";
  request.m_mode = "readings";
  return request;
}

struct cOperation {
  std::function<bool(cDbCtrlIO&, const vorn::cUuid&)> call;
  std::string request;
  std::string progress;
  std::string failure;
};

constexpr const char* kSelection =
    " meter-request record={version uint=2, addr text=5, mode text=readings, fromUTC uint=0, toUTC uint=4294967295, "
    "maxlen uint=100}";

std::vector<cOperation> Operations() {
  const std::string handle = kHandleText;
  return {
      {[](auto& io, auto& tid) { return io.ActivateMeter(tid, "4711", "E", "EMH", "vendor", "0011"); },
       "5104c meterID text=4711 manufactor text=EMH medium text=E vendor text=vendor key text=0011",
       "dbctrl[ActivateMeter] meterId=4711 mfct=EMH medium=E",
       "dbctrl[ActivateMeter] meterID=4711 mfct=EMH medium=E, send failed"},
      {[](auto& io, auto& tid) { return io.SetValve(tid, "4711", "EMH", "G", "closed"); },
       "51049 meterID text=4711 manufactor text=EMH medium text=G valve text=closed",
       "dbctrl[SetMeterValve] meterId=4711 mfct=EMH medium=Gvalve=closed",
       "dbctrl[SetMeterValve] addr=4711 mfct=EMH medium=G valve=closed, send failed"},
      {[](auto& io, auto& tid) { return io.SetTimeDate(tid, "4711", "EMH", "E", 0xFFFFFFFF); },
       "51046 meterID text=4711 manufactor text=EMH medium text=E timestamp uint=4294967295",
       "dbctrl[SetTimeData] meterId=4711 mfct=EMH medium=Etimestamp=4294967295",
       "dbctrl[SetTimeData] meterId=4711 mfct=EMH medium=Etimestamp=4294967295, send failed"},
      {[request = Selection()](auto& io, auto& tid) mutable { return io.GetStoredValues(tid, request); },
       std::string("5100f") + kSelection, "dbctrl[GetStoredValues] addr=5 mode=readings",
       "dbctrl[GetStoredValues] addr=5 mode=readings, send failed"},
      {[request = Selection()](auto& io, auto& tid) mutable { return io.GetLastValues(tid, request); },
       std::string("5100c") + kSelection, "dbctrl[GetLastValues] mode=readings",
       "dbctrl[GetLastValues] mode=readings, send failed"},
      {[request = Selection()](auto& io, auto& tid) mutable { return io.GetMeterStatus(tid, request); },
       std::string("51027") + kSelection, "dbctrl[GetMeterStatus] mode=readings",
       "dbctrl[GetMeterStatus] mode=readings, send failed"},
      {[](auto& io, auto& tid) { return io.FetchStoredValues(tid, Handle(), 20); },
       "51012 handle uuid=" + handle + " count uint=20", "dbctrl[FetchStoredValues] handle=" + handle,
       "dbctrl[FetchStoredValues] handle=" + handle + ", send failed"},
      {[](auto& io, auto& tid) { return io.sqlExec(tid, "tav", "SELECT 1", 3); },
       "51000 db text=tav sql text=SELECT 1 options uint=3", "dbctrl[sqlExec] SELECT 1", "dbctrl[sqlExec] send failed"},
      {[](auto& io, auto& tid) { return io.sqlFetch(tid, Handle(), 20); },
       "51003 handle uuid=" + handle + " count uint=20", "dbctrl[FetchEvents] count=20", "dbctrl[sqlExec] send failed"},
      {[](auto& io, auto& tid) { return io.CloseResult(tid, Handle()); }, "51006 handle uuid=" + handle,
       "dbctrl[CloseResult] handle=" + handle, "dbctrl[CloseResult] handle=" + handle + ", send failed"},
  };
}

class DbCtrlIOQuery : public cDbCtrlIOFixture {
 protected:
  void SetUp() override {
    Connect("");
    Traced();
  }
};

}  // namespace

TEST_F(DbCtrlIOQuery, EveryRequestHasItsNumberParametersAndLineOfProgress) {
  for (const cOperation& operation : Operations()) {
    EXPECT_TRUE(operation.call(*m_io, vorn::cUuid()));
    EXPECT_THAT(Received(), ElementsAre(operation.request));
    EXPECT_THAT(Traced(), ElementsAre("16 " + operation.progress));
  }
}

TEST_F(DbCtrlIOQuery, EveryRequestIsWhatTheProtocolAsksFor) {
  for (const cOperation& operation : Operations()) {
    EXPECT_TRUE(operation.call(*m_io, vorn::cUuid()));
    Settle();
    ASSERT_EQ(m_server->messages.size(), 1u);
    const vorn::cMsg msg = m_server->messages[0];
    m_server->messages.clear();
    const tav::cProtocolMessage* row = tav::db_ctrl::kProtocol.Find(msg.GetType());
    ASSERT_NE(row, nullptr) << operation.request;
    std::string error;
    EXPECT_TRUE(tav::CheckParameters(*row, msg.Record(), error)) << operation.request << ": " << error;
  }
}

TEST_F(DbCtrlIOQuery, SendsTheIdentifierAsItIs) {
  vorn::cUuid valid;
  valid.Create();
  for (const vorn::cUuid& tid : {vorn::cUuid(), valid})
    for (const cOperation& operation : Operations()) {
      EXPECT_TRUE(operation.call(*m_io, tid));
      Settle();
      ASSERT_EQ(m_server->messages.size(), 1u);
      EXPECT_EQ(m_server->messages[0].GetId(), tid) << operation.request;
      m_server->messages.clear();
    }
}

TEST_F(DbCtrlIOQuery, ARefusedRequestIsTracedAndNotSentLater) {
  CutWire();
  Traced();
  for (const cOperation& operation : Operations()) {
    EXPECT_FALSE(operation.call(*m_io, vorn::cUuid()));
    EXPECT_THAT(Traced(), ElementsAre("16 " + operation.progress, "2 " + operation.failure));
  }
  Reconnect();
  EXPECT_THAT(Received(), IsEmpty());
  EXPECT_THAT(m_io->m_queue, IsEmpty());
}

TEST_F(DbCtrlIOQuery, TracesAtTheLevelsOfProgressAndFailureOnly) {
  CutWire();
  Traced();
  const struct {
    int level;
    std::size_t lines;
  } kCases[] = {{1, 0}, {2, 1}, {15, 1}, {16, 2}};
  for (const auto& c : kCases) {
    const cTraceLevel level("UnitTAV", c.level);
    for (const cOperation& operation : Operations()) {
      EXPECT_FALSE(operation.call(*m_io, vorn::cUuid()));
      EXPECT_EQ(Traced().size(), c.lines) << operation.request;
    }
  }
}

TEST_F(DbCtrlIOQuery, AnActivationWithoutVendorAndKeyHasExactlyThreeTexts) {
  const vorn::cUuid tid;
  m_io->ActivateMeter(tid, "4711", "E", "EMH", "", "");
  m_io->ActivateMeter(tid, "4711", "E", "EMH", "vendor", "");
  m_io->ActivateMeter(tid, "4711", "E", "EMH", "", "0011");
  m_io->ActivateMeter(tid, "", "", "", "", "");
  EXPECT_THAT(Received(), ElementsAre("5104c meterID text=4711 manufactor text=EMH medium text=E",
                                      "5104c meterID text=4711 manufactor text=EMH medium text=E vendor text=vendor",
                                      "5104c meterID text=4711 manufactor text=EMH medium text=E key text=0011",
                                      "5104c meterID text= manufactor text= medium text="));
}

TEST_F(DbCtrlIOQuery, TheKeyOfAnActivationStandsInNoLine) {
  m_io->ActivateMeter(vorn::cUuid(), "4711", "E", "EMH", "", "SECRET");
  CutWire();
  m_io->ActivateMeter(vorn::cUuid(), "4711", "E", "EMH", "", "SECRET");
  for (const std::string& line : m_trace.GetLines()) EXPECT_EQ(line.find("SECRET"), std::string::npos) << line;
}

TEST_F(DbCtrlIOQuery, EmptyTextsOfValveTimeAndSqlAreSent) {
  const vorn::cUuid tid;
  m_io->SetValve(tid, "", "", "", "");
  m_io->SetTimeDate(tid, "", "", "", 0);
  m_io->sqlExec(tid, "", "", 0);
  EXPECT_THAT(Received(), ElementsAre("51049 meterID text= manufactor text= medium text= valve text=",
                                      "51046 meterID text= manufactor text= medium text= timestamp uint=0",
                                      "51000 db text= sql text= options uint=0"));
}

TEST_F(DbCtrlIOQuery, AResultThatIsNotValidIsNotClosed) {
  EXPECT_FALSE(m_io->CloseResult(vorn::cUuid(), vorn::cUuid()));
  EXPECT_THAT(Received(), IsEmpty());
  EXPECT_THAT(Traced(), IsEmpty());
}

TEST_F(DbCtrlIOQuery, AResultThatIsNotValidIsAskedForAllTheSame) {
  EXPECT_TRUE(m_io->FetchStoredValues(vorn::cUuid(), vorn::cUuid(), 0));
  EXPECT_TRUE(m_io->sqlFetch(vorn::cUuid(), vorn::cUuid(), 0));
  const std::string nil = vorn::cUuid().ToString();
  EXPECT_THAT(Received(),
              ElementsAre("51012 handle uuid=" + nil + " count uint=0", "51003 handle uuid=" + nil + " count uint=0"));
}

TEST_F(DbCtrlIOQuery, ALargeCountIsTracedAsSignedAndSentAsItIs) {
  m_io->sqlFetch(vorn::cUuid(), Handle(), 0xFFFFFFFF);
  EXPECT_THAT(Traced(), ElementsAre("16 dbctrl[FetchEvents] count=-1"));
  EXPECT_THAT(Received(), ElementsAre(std::string("51003 handle uuid=") + kHandleText + " count uint=4294967295"));
}

TEST_F(DbCtrlIOQuery, TheAnswerGoesToTheOwningService) {
  vorn::cUuid tid;
  tid.Create();
  m_io->sqlExec(tid, "", "SELECT 1", 0);
  vorn::cMsg answer(0x51002);
  answer.SetId(tid);
  answer.Record() = Because("no");
  ASSERT_EQ(m_server->GetChannels().front()->Send(answer), 1);
  Settle();
  ASSERT_EQ(m_near.messages.size(), 1u);
  EXPECT_EQ(m_near.messages[0].GetId(), tid);
}
