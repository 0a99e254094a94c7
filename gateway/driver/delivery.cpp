// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/delivery.h>

#include <algorithm>

#include <gateway/driver/unit_driver.h>
#include <tav/service/db_ctrl_protocol.h>

namespace tav {

namespace {

constexpr int kWarning = 4;

bool IsReading(const vorn::cMsg& msg) { return msg.GetType() == db_ctrl::eStoreMeterRec; }

// The request that a message answers; 0 when it answers none of ours.
unsigned int AnsweredBy(const vorn::cMsg& msg) {
  switch (msg.GetType()) {
    case db_ctrl::eMeterRecStored:
    case db_ctrl::eStoreMeterRecFailed:
      return db_ctrl::eStoreMeterRec;
    case db_ctrl::eEventStored:
    case db_ctrl::eStoreEventFailed:
      return db_ctrl::eStoreEvent;
    default:
      return 0;
  }
}

bool IsRefusal(const vorn::cMsg& msg) {
  return msg.GetType() == db_ctrl::eStoreMeterRecFailed || msg.GetType() == db_ctrl::eStoreEventFailed;
}

}  // namespace

cDelivery::cDelivery(vorn::cScmService* service, const std::string& driver, std::function<void()> onProgress,
                     std::function<void()> onRegistered)
    : cDbCtrlIO(service, driver), m_onProgress(std::move(onProgress)), m_onRegistered(std::move(onRegistered)) {}

// The queue sends its front when it can. Whether it did shows in its length: then the message that stood in front is
// noted as handed over.
template <typename Operation>
auto cDelivery::Track(const vorn::cMsg* added, Operation operation) {
  const bool willDrop = added != nullptr && m_queue.size() >= m_queueLimit;
  if (willDrop) PushOut(m_queue.front());
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

void cDelivery::PushOut(const vorn::cMsg& msg) {
  if (IsReading(msg))
    ++m_counts.dropped;
  else
    PutAside(msg.Record());
}

void cDelivery::PutAside(const vorn::cRecord& event) {
  if (m_aside.size() < kMostEvents)
    m_aside.push_back(event);
  else
    vorn::Trace(DriverUnit(), kWarning, "too many events, not reported: ", [&] { return event.ToString(); });
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

void cDelivery::Report(const vorn::cRecord& event) {
  if (m_queue.size() < m_queueLimit)
    Queue(event);
  else
    PutAside(event);
}

void cDelivery::Queue(const vorn::cRecord& event) {
  vorn::cMsg msg(db_ctrl::eStoreEvent);
  msg.Record() = event;
  Track(&msg, [&] { return StoreEvent(event); });
}

// What was put aside goes as soon as there is room.
void cDelivery::OnProgress() {
  for (; !m_aside.empty() && IsConnected() && m_queue.size() < m_queueLimit; m_aside.pop_front())
    Queue(m_aside.front());
  m_onProgress();
}

// ---- the channel

void cDelivery::OnConnect() {
  Track(nullptr, [this] {
    cDbCtrlIO::OnConnect();
    return true;
  });
  OnProgress();
}

void cDelivery::OnClose() {
  cDbCtrlIO::OnClose();
  if (!m_handedOver.empty()) {
    const auto readings = std::count_if(m_handedOver.begin(), m_handedOver.end(), IsReading);
    m_counts.unconfirmed += static_cast<std::uint64_t>(readings);
    vorn::Trace(DriverUnit(), kWarning, readings,
                " readings handed over and not acknowledged when the channel broke; they are handed over again");
    m_queue.insert(m_queue.begin(), m_handedOver.begin(), m_handedOver.end());
    m_handedOver.clear();
    for (; m_queue.size() > m_queueLimit; m_queue.pop_front()) PushOut(m_queue.front());
  }
  OnProgress();
}

bool cDelivery::DispatchMessage(const vorn::cMsg& msg) {
  if (AnsweredBy(msg) != 0) Settle(msg);
  const bool handled = Track(nullptr, [&] { return cDbCtrlIO::DispatchMessage(msg); });
  if (IsRefusal(msg)) SendNext();
  if (msg.GetType() == db_ctrl::eDriverRegistered && m_onRegistered) m_onRegistered();
  OnProgress();
  return handled;
}

// A reading is known by its identifier, which the answer returns. Events bear none and are answered in their order.
void cDelivery::Settle(const vorn::cMsg& answer) {
  const auto settled = std::find_if(m_handedOver.begin(), m_handedOver.end(), [&](const vorn::cMsg& sent) {
    return sent.GetType() == AnsweredBy(answer) && sent.GetId() == answer.GetId();
  });
  if (settled == m_handedOver.end()) return;
  if (IsReading(*settled)) ++(IsRefusal(answer) ? m_counts.refused : m_counts.acknowledged);
  m_handedOver.erase(settled);
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

}  // namespace tav
