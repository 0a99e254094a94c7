// SPDX-License-Identifier: Apache-2.0
#include "loop.h"

#include <algorithm>
#include <chrono>

#include "socket_channel.h"

namespace vorn::detail {

namespace {

constexpr int kMostHandlers = 256;  // that posted messages wait for: twice what the kernel reports at a time

}  // namespace

cLoop::cLoop(std::shared_ptr<const cClock> clock) : m_alarms(clock ? std::move(clock) : cClock::Steady()) {}

cLoop::~cLoop() = default;

std::int64_t cLoop::GetWait(std::int64_t waitMs) const {
  if (!m_posted.empty() && m_syncDepth == 0) return 0;
  const std::int64_t alarm = m_alarms.GetWait();
  if (alarm < 0) return waitMs;
  return waitMs < 0 ? alarm : std::min(alarm, waitMs);
}

std::size_t cLoop::WaitForIo(std::int64_t waitMs) {
  if (waitMs < 0) return m_io.run_one();
  if (waitMs == 0) return m_io.poll_one();
  return m_io.run_one_for(std::chrono::milliseconds(waitMs));
}

bool cLoop::Turn(std::int64_t waitMs) {
  FlushDirty();
  bool handled = DrainKept();
  if (WaitForIo(handled ? 0 : GetWait(waitMs)) != 0) handled = true;
  if (m_alarms.Fire() != 0) handled = true;
  if (DispatchPosted()) handled = true;
  if (DrainKept()) handled = true;
  FlushDirty();
  return handled;
}

bool cLoop::DrainKept() {
  bool handled = false;
  // A call may make a synchronous call of its own, which keeps more.
  while (m_syncDepth == 0 && !m_kept.empty()) {
    const std::function<void()> call = std::move(m_kept.front());
    m_kept.pop_front();
    call();
    handled = true;
  }
  return handled;
}

bool cLoop::DispatchPosted() {
  if (m_posted.empty() || m_syncDepth != 0) return false;
  // Peers that keep answering each other are ready without end: they take turns with what is posted.
  for (int handlers = 0; handlers < kMostHandlers && m_io.poll_one() != 0; ++handlers) {
  }
  m_alarms.Fire();
  DrainKept();
  // Only those that are there now: one that posts itself again takes turns with everything else.
  for (std::size_t left = m_posted.size(); left != 0 && !m_posted.empty(); --left) {
    const std::function<void()> call = std::move(m_posted.front());
    m_posted.pop_front();
    Deliver(call);
  }
  return true;
}

void cLoop::FlushDirty() {
  while (!m_dirty.empty()) {
    std::vector<std::shared_ptr<cSocketChannel>> dirty;
    dirty.swap(m_dirty);
    for (const auto& channel : dirty) channel->Flush();
    if (m_dirty.empty()) {  // keep the capacity
      dirty.clear();
      m_dirty.swap(dirty);
    }
  }
}

void cLoop::Register(const std::shared_ptr<cSocketChannel>& channel) {
  m_channels.erase(std::remove_if(m_channels.begin(), m_channels.end(),
                                  [](const std::weak_ptr<cSocketChannel>& known) { return known.expired(); }),
                   m_channels.end());
  m_channels.push_back(channel);
}

void cLoop::CloseAll() {
  for (const auto& known : m_channels)
    if (const auto channel = known.lock()) channel->Abandon();
  m_channels.clear();
  m_dirty.clear();
  m_kept.clear();
  m_posted.clear();
  // What was under way has been cancelled; its handlers hold the last references and want to be run.
  m_io.poll();
}

cMsg cLoop::WaitForReply(const std::shared_ptr<cSocketChannel>& channel, unsigned int timeoutMs, unsigned int replyType,
                         const cUuid& id) {
  // By the machine's clock: a clock that is moved by hand stands still during this call.
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
  cSyncWait wait;
  wait.channel = channel.get();
  wait.replyType = replyType;
  wait.id = id;
  m_syncWaits.push_back(&wait);
  ++m_syncDepth;
  FlushDirty();
  channel->HandleFrames();  // perhaps called from within the handler of one of its messages, with more behind it
  while (!wait.done && channel->IsOpen()) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
    if (left.count() <= 0) break;
    channel->WaitAndRead(static_cast<int>(left.count()));
  }
  --m_syncDepth;
  m_syncWaits.erase(std::find(m_syncWaits.begin(), m_syncWaits.end(), &wait));
  return wait.done ? wait.reply : cMsg(0);
}

bool cLoop::TakeReply(const cSocketChannel& channel, const cMsg& msg) {
  for (cSyncWait* wait : m_syncWaits) {
    if (wait->done || wait->channel != &channel || wait->replyType != msg.GetType()) continue;
    if (wait->id.IsValid() && wait->id != msg.GetId()) continue;
    wait->reply = msg;
    wait->done = true;
    return true;
  }
  return false;
}

}  // namespace vorn::detail
