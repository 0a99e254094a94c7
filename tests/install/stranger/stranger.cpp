// SPDX-License-Identifier: Apache-2.0
// A gateway process in small: a database control service that keeps one reading in memory, and a driver that hands it
// one, both on one loop over a real socket; clients of services that are away, and a page. Prints the reading; the exit
// status says whether it arrived.
#include <cstdio>
#include <string>

#include <tav/framework/scm_server.h>
#include <tav/framework/scm_service.h>
#include <tav/record/meter_record.h>
#include <tav/service/db_ctrl_io.h>
#include <tav/service/db_ctrl_protocol.h>
#include <tav/tav.h>

namespace {

class cKeeper : public vorn::cScmServer {
 public:
  explicit cKeeper(vorn::cScmService* service) : cScmServer(service, "data") {}

  bool DispatchMessage(const vorn::cMsg& msg) override {
    vorn::cMsg answer;
    answer.SetId(msg.GetId());
    if (msg.GetType() == tav::db_ctrl::eRegisterDriver) {
      answer.SetType(tav::db_ctrl::eDriverRegistered);
    } else if (msg.GetType() == tav::db_ctrl::eStoreMeterRec) {
      m_stored = m_reading.FromRecord(msg.Record().GetRecordPar("meter-record"));
      answer.SetType(tav::db_ctrl::eMeterRecStored);
    } else {
      return false;
    }
    return msg.GetReplyChannel()->Send(answer) == 1;
  }

  bool HasStored() const { return m_stored; }
  const tav::cMeterRecord& GetReading() const { return m_reading; }

 private:
  tav::cMeterRecord m_reading;
  bool m_stored = false;
};

// What clients know by themselves is there without a service; what they ask of one is not taken.
bool UseAbsentServices(vorn::cScmService& process) {
  tav::cObisProxy obis(&process);
  tav::cStatusProxy status(&process);
  obis.map.Set(tav::cObisMapEntry(1, "Energy", "1-0:1.8.0", "protocol=dlms"));
  status.SingleSet("stranger.value", tav::cMeterTav::ObisName("1-0:1.8.0", obis.map));
  std::printf("%s\n", status.ToString().c_str());
  return tav::cUiCtrlIO(&process).WAN_On() + tav::cTcmIO(&process).WanUp() + tav::cGsmIO(&process).Stop() == 0 &&
         status.ToString() == "stranger.value=Energy";
}

// A page in a session, of a front end that is away: what it says goes nowhere, messages come to it all the same.
class cGreeting : public tav::cHttpPage {
 public:
  using cHttpPage::cHttpPage;
  bool Process(tav::cHttpRequest& request) override { return HttpOutput(0, request.GetFromQueryString("name")); }
  bool OnMessage(vorn::cMsg&) override { return ++m_messages < 2; }

 private:
  int m_messages = 0;
};

bool ServeAPage(vorn::cScmService& process) {
  tav::cHttpIO web(&process, "web", nullptr);
  vorn::cUuid sid;
  sid.Create();
  tav::cHttpSession session(sid, &process, 600);
  tav::HttpSessions.Set(sid, &session);
  cGreeting page(&process);
  tav::cHttpRequest request;
  session.Run(request, &page);
  vorn::cMsg msg(tav::http::ePageTimeout);
  msg.SetId(sid);
  const bool more = tav::httpDisptachBySID(msg) && !tav::httpDisptachBySID(msg);
  tav::HttpSessions.Remove(sid);
  return more && session.GetPage() == nullptr && !web.HoldsRegistration();
}

}  // namespace

int main(int, char** argv) {
  vorn::cScmService process("stranger", argv[1]);
  cKeeper keeper(&process);
  if (!keeper.IsListening()) {
    std::fprintf(stderr, "%s\n", keeper.GetError().c_str());
    return 1;
  }
  if (!UseAbsentServices(process)) {
    std::fprintf(stderr, "a client without its service went wrong\n");
    return 1;
  }
  if (!ServeAPage(process)) {
    std::fprintf(stderr, "a page without its front end went wrong\n");
    return 1;
  }
  tav::cDbCtrlIO db(&process, "stranger");

  tav::cMeterRecord reading("stranger", "TAV", "E", "12345678", "1", "", 1393675200, tav::cMeterTav::eTsMeter, 1);
  reading.AddMeasurementEntry(
      tav::cMeasurementEntry("1-0:1.8.0", "1234.5", "kWh", 1393675200, tav::cMeterTav::eTsMeter));
  std::printf("%s\n", reading.ToString().c_str());
  db.StoreMeterRec(reading);

  for (int turns = 0; turns < 500 && !keeper.HasStored(); ++turns) process.Poll(10);
  if (!keeper.HasStored() || keeper.GetReading().GetMeterID() != "12345678") {
    std::fprintf(stderr, "the reading did not arrive\n");
    return 1;
  }
  std::puts("stored");
  return 0;
}
