// SPDX-License-Identifier: Apache-2.0
// cLoop: what stands behind a cService. One turn: wait for a first event, handle what is ready, then what was posted,
// then write what was sent. Everything that reaches user code goes through Deliver, so that a synchronous call can keep
// it for later.
#pragma once

#include <asio.hpp>
#include <deque>
#include <functional>
#include <memory>
#include <vector>

#include <tav/framework/msg.h>

#include "alarm.h"

namespace vorn::detail {

class cSocketChannel;

class cLoop : public std::enable_shared_from_this<cLoop> {
 public:
  explicit cLoop(std::shared_ptr<const cClock> clock);
  ~cLoop();

  asio::io_context& GetIo() { return m_io; }
  cAlarms& GetAlarms() { return m_alarms; }

  // One turn; waits at most so many milliseconds, negative: without end. True when something was handled.
  bool Turn(std::int64_t waitMs);
  // Whether a call into user code has to wait: a synchronous call is under way, or others wait already.
  bool MustKeep() const { return m_syncDepth != 0 || !m_kept.empty(); }
  void Keep(std::function<void()> call) { m_kept.push_back(std::move(call)); }
  // Runs a call into user code now, or keeps it in order.
  template <typename Call>
  void Deliver(Call&& call) {
    if (MustKeep())
      Keep(std::forward<Call>(call));
    else
      call();
  }
  // Behind everything that is ready now.
  void Post(std::function<void()> call) { m_posted.push_back(std::move(call)); }

  // A channel has output to write at the end of the turn.
  void MarkDirty(std::shared_ptr<cSocketChannel> channel) { m_dirty.push_back(std::move(channel)); }
  void FlushDirty();

  // The open channels, to be closed when the service ends.
  void Register(const std::shared_ptr<cSocketChannel>& channel);
  void CloseAll();

  // Waits for the answer of one request; see cService::SendSyncMsg. Only that channel is read meanwhile: what the
  // others have to say waits in their sockets.
  cMsg WaitForReply(const std::shared_ptr<cSocketChannel>& channel, unsigned int timeoutMs, unsigned int replyType,
                    const cUuid& id);
  // Takes a message that a synchronous call waits for.
  bool TakeReply(const cSocketChannel& channel, const cMsg& msg);

 private:
  struct cSyncWait {
    const cSocketChannel* channel = nullptr;
    unsigned int replyType = 0;
    cUuid id;
    bool done = false;
    cMsg reply;
  };

  std::int64_t GetWait(std::int64_t waitMs) const;
  std::size_t WaitForIo(std::int64_t waitMs);
  bool DrainKept();
  bool DispatchPosted();

  asio::io_context m_io{ASIO_CONCURRENCY_HINT_UNSAFE};
  asio::executor_work_guard<asio::io_context::executor_type> m_work{m_io.get_executor()};
  cAlarms m_alarms;
  std::deque<std::function<void()>> m_kept;
  std::deque<std::function<void()>> m_posted;
  std::vector<std::shared_ptr<cSocketChannel>> m_dirty;
  std::vector<std::weak_ptr<cSocketChannel>> m_channels;
  std::vector<cSyncWait*> m_syncWaits;
  unsigned int m_syncDepth = 0;
};

}  // namespace vorn::detail
