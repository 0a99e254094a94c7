// SPDX-License-Identifier: Apache-2.0
#include <bench/road/load.h>

#include <sys/mman.h>

#include <list>
#include <new>

#include <bench/support/sample_reading.h>
#include <tav/service/db_ctrl_io.h>
#include <tav/service/db_ctrl_protocol.h>

namespace tav::bench {

// One driver, as they are: the library's client does the work.
class cLoad::cDriver : public cDbCtrlIO {
 public:
  cDriver(vorn::cScmService* service, const cLoadShape& shape, unsigned int number, unsigned int time, cTold* told,
          const cChild::Ready& ready)
      : cDbCtrlIO(service, "driver" + std::to_string(number)),
        m_shape(shape),
        m_time(time),
        m_acknowledged(told->acknowledged[number]),
        m_refused(told->refused),
        m_ready(ready),
        m_readings(shape.oneMessage ? shape.window : 1, SampleMeterRecord("1EMH" + std::to_string(number), number)) {}

  bool DispatchMessage(const vorn::cMsg& msg) override {
    const bool known = cDbCtrlIO::DispatchMessage(msg);
    if (msg.GetType() == db_ctrl::eDriverRegistered) {
      m_ready();
      Fill();
    } else if (msg.GetType() != db_ctrl::eMeterRecStored || !msg.Record().IsEmpty()) {
      m_refused = true;  // or stored before: nothing is measured then
    } else {
      m_acknowledged += m_readings.size();
      Fill();
    }
    return known;
  }

 private:
  void Fill() {
    while (m_sent + m_readings.size() <= m_acknowledged + m_shape.window) {
      for (cMeterRecord& reading : m_readings) reading.SetTimeStamp(m_time++, true);
      if (!(m_shape.oneMessage ? StoreMeterRec(m_readings) : StoreMeterRec(m_readings.front()))) m_refused = true;
      m_sent += m_readings.size();
    }
  }

  const cLoadShape m_shape;
  unsigned int m_time;
  std::uint64_t m_sent = 0;
  std::atomic<std::uint64_t>& m_acknowledged;
  std::atomic<bool>& m_refused;
  cChild::Ready m_ready;
  std::list<cMeterRecord> m_readings;  // of one message
};

cLoad::cLoad(const std::string& directory, const cLoadShape& shape, unsigned int time)
    : m_told(new (mmap(nullptr, sizeof(cTold), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0)) cTold()) {
  for (unsigned int number = 0; number < shape.drivers; ++number)
    m_drivers.push_back(std::make_unique<cChild>([&](const cChild::Ready& ready) {
      vorn::cScmService service("driver", directory);
      cDriver driver(&service, shape, number, time, m_told, ready);
      service.Run();
    }));
}

cLoad::~cLoad() {
  m_drivers.clear();
  munmap(m_told, sizeof(cTold));
}

bool cLoad::IsRunning() const {
  for (const auto& driver : m_drivers)
    if (!driver->IsReady()) return false;
  return !m_told->refused;
}

std::uint64_t cLoad::GetAcknowledged() const {
  std::uint64_t all = 0;
  for (const auto& acknowledged : m_told->acknowledged) all += acknowledged;
  return all;
}

double cLoad::GetCpu() const {
  double all = 0;
  for (const auto& driver : m_drivers) all += CpuSeconds(driver->GetPid());
  return all;
}

}  // namespace tav::bench
