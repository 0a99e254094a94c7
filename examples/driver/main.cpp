// SPDX-License-Identifier: Apache-2.0
// The smallest driver: reads a meter every second and stores the reading through the database control service.
//
//   tav-gateway data --dir /tmp/gateway &
//   example-driver /tmp/gateway
#include <csignal>
#include <string>

#include <tav/framework/helper.h>
#include <tav/framework/scm_service.h>
#include <tav/framework/time.h>
#include <tav/framework/timer.h>
#include <tav/framework/watch.h>
#include <tav/record/meter_record.h>
#include <tav/service/db_ctrl_io.h>

class cExampleDriver : public vorn::cScmService {
 public:
  explicit cExampleDriver(const std::string& directory)
      : cScmService("example-driver", directory), m_data(this, "example-driver"), m_second(this) {
    m_second.Start(0, kRead);
  }

  // Timer messages come here, as does what the service answers to questions of our own.
  bool DispatchMessage(const vorn::cMsg& msg) override {
    if (msg.GetType() != kRead) return false;
    m_second.Start(1000, kRead);
    m_data.StoreMeterRec(ReadMeter());  // waits in the queue while the service is away
    return true;
  }

 private:
  static constexpr unsigned int kRead = 1;

  // A real driver talks to its meter here.
  tav::cMeterRecord ReadMeter() {
    const unsigned int now = vorn::cTime::Now().GetSeconds();
    tav::cMeterRecord reading("example-driver", "TAV", "E", "1TAV0000000001", "1", "ok", now, tav::cMeterTav::eTsRtc,
                              vorn::GetOSC());
    reading.SetInterfaceInfo("EXAMPLE", "none", {});
    const std::string energy = std::to_string(++m_wattHours);
    reading.AddMeasurementEntry(tav::cMeasurementEntry("1-0:1.8.0", energy, "Wh", now, tav::cMeterTav::eTsRtc));
    return reading;
  }

  tav::cDbCtrlIO m_data;
  vorn::cTimer m_second;
  unsigned int m_wattHours = 0;
};

int main(int argc, char** argv) {
  cExampleDriver driver(argc > 1 ? argv[1] : "");
  const vorn::cSignalWatch end(&driver, {SIGTERM, SIGINT}, [&driver](int) { driver.Stop(); });
  driver.Run();
}
