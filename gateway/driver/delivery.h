// SPDX-License-Identifier: Apache-2.0
// cDelivery: hands a driver's readings to the database service and keeps account of every one of them.
//
// A reading is queued, handed over, then acknowledged or refused; or it is dropped when the queue overflows while the
// service is away. What was handed over and not acknowledged when the channel broke is counted, reported and put back
// in front of the queue: the service stores a reading that it has already only once.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <string>

#include <tav/record/meter_record.h>
#include <tav/service/db_ctrl_io.h>

namespace tav {

struct cDeliveryCounts {
  std::uint64_t readings = 0;      // given to Deliver
  std::uint64_t acknowledged = 0;  // the service has them
  std::uint64_t refused = 0;       // the service will not have them, and has said why
  std::uint64_t dropped = 0;       // pushed out of the full queue by newer ones
  std::uint64_t unconfirmed = 0;   // handed over and not acknowledged when a channel broke; handed over again
};

class cDelivery : public cDbCtrlIO {
 public:
  // Most readings under way (queued or handed over) that a source which can wait should cause.
  static constexpr std::size_t kWindow = 40;
  // Put aside; more are only traced.
  static constexpr std::size_t kMostEvents = 1000;

  // onProgress is called after every answer of the service and every change of the connection; onRegistered before it,
  // when the service has taken this driver, after each connection anew.
  cDelivery(vorn::cScmService* service, const std::string& driver, std::function<void()> onProgress,
            std::function<void()> onRegistered = {});

  void Deliver(const cMeterRecord& reading);
  // Hands over an event of the driver. It shares the readings' queue, but takes no room from them: from a full one it
  // is put aside, and goes when there is room.
  void Report(const vorn::cRecord& event);
  const cDeliveryCounts& GetCounts() const { return m_counts; }
  // Readings and events whose fate is open.
  std::size_t GetOpen() const { return m_queue.size() + m_handedOver.size() + m_aside.size(); }

  void OnConnect() override;
  void OnClose() override;
  bool DispatchMessage(const vorn::cMsg& msg) override;

 private:
  template <typename Operation>
  auto Track(const vorn::cMsg* added, Operation operation);
  void PushOut(const vorn::cMsg& msg);
  void PutAside(const vorn::cRecord& event);
  void Queue(const vorn::cRecord& event);
  void OnProgress();
  void Settle(const vorn::cMsg& answer);
  void SendNext();

  std::function<void()> m_onProgress;
  std::function<void()> m_onRegistered;
  std::deque<vorn::cRecord> m_aside;    // events that found no room
  std::deque<vorn::cMsg> m_handedOver;  // and not answered yet, oldest first
  cDeliveryCounts m_counts;
};

}  // namespace tav
