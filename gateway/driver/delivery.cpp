// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/delivery.h>

#include <gateway/driver/unit_driver.h>
#include <tav/service/db_ctrl_protocol.h>

namespace tav {

cDelivery::cDelivery(vorn::cScmService* service, const std::string& driver, std::function<void()> onProgress)
    : cDbCtrlIO(service, driver), m_onProgress(std::move(onProgress)) {}

// The queue sends its front when it can. Whether it did shows in its length: then the message that stood in front is
// noted as handed over.
template <typename Operation>
auto cDelivery::Track(const vorn::cMsg* added, Operation operation) {
  const bool willDrop = added != nullptr && m_queue.size() >= m_queueLimit;
  if (willDrop) ++m_counts.dropped;
  const std::size_t expected = m_queue.size() + (added != nullptr ? 1 : 0) - (willDrop ? 1 : 0);
  vorn::cMsg front;
  if (m_queue.size() > (willDrop ? 1u : 0u))
    front = m_queue[willDrop ? 1 : 0];
  else if (added != nullptr)
    front = *added;
  const auto result = operation();
  if (m_queue.size() < expected) m_handedOver.push_back(front);
  return result;
}

void cDelivery::Deliver(const cMeterRecord& reading) {
  ++m_counts.readings;
  vorn::cMsg msg(db_ctrl::eStoreMeterRec);
  vorn::cUuid id;
  id.Create();
  msg.SetId(id);
  msg.Record().AppendRecordPar(db_ctrl::kMeterRecord, reading.ToRecord());
  Track(&msg, [&] { return StoreMeterRecQueued(msg); });
}

void cDelivery::OnConnect() {
  Track(nullptr, [this] {
    cDbCtrlIO::OnConnect();
    return true;
  });
  m_onProgress();
}

void cDelivery::OnClose() {
  cDbCtrlIO::OnClose();
  if (!m_handedOver.empty()) {
    m_counts.unconfirmed += m_handedOver.size();
    vorn::Trace(DriverUnit(), 4, m_handedOver.size(),
                " readings handed over and not acknowledged when the channel broke; they are handed over again");
    m_queue.insert(m_queue.begin(), m_handedOver.begin(), m_handedOver.end());
    m_handedOver.clear();
    for (; m_queue.size() > m_queueLimit; ++m_counts.dropped) m_queue.pop_front();
  }
  m_onProgress();
}

void cDelivery::Report(const vorn::cRecord& event) {
  vorn::cMsg msg(db_ctrl::eStoreEvent);
  msg.Record() = event;
  Track(&msg, [&] { return StoreEvent(event); });
}

bool cDelivery::DispatchMessage(const vorn::cMsg& msg) {
  std::uint64_t events = 0;
  const bool isRefusal = msg.GetType() == db_ctrl::eStoreMeterRecFailed || msg.GetType() == db_ctrl::eStoreEventFailed;
  if (msg.GetType() == db_ctrl::eMeterRecStored) OnAnswer(m_counts.acknowledged);
  if (msg.GetType() == db_ctrl::eStoreMeterRecFailed) OnAnswer(m_counts.refused);
  if (msg.GetType() == db_ctrl::eEventStored || msg.GetType() == db_ctrl::eStoreEventFailed) OnAnswer(events);
  const bool handled = Track(nullptr, [&] { return cDbCtrlIO::DispatchMessage(msg); });
  if (isRefusal) SendNext();
  m_onProgress();
  return handled;
}

// A refusal sends nothing by itself, and the readings behind it must not wait for the meter's next one.
void cDelivery::SendNext() {
  if (m_queue.empty()) return;
  Track(nullptr, [this] {
    const vorn::cMsg front = m_queue.front();
    if (Send(front) > 0) m_queue.pop_front();
    return true;
  });
}

void cDelivery::OnAnswer(std::uint64_t& count) {
  if (m_handedOver.empty()) return;
  m_handedOver.pop_front();
  ++count;
}

}  // namespace tav
