// SPDX-License-Identifier: Apache-2.0
// cService: the loop of a thread. Sockets, timers, watches and posted messages of everything bound to it are handled by
// Run or Poll, one after the other, on the thread that calls them; nothing here may be used from another thread.
//
// A message that came over a channel is offered to the owner of that channel first, then to DispatchMessage; posted and
// timer messages go to DispatchMessage directly. What is sent in one turn is written when the turn ends.
#pragma once

#include <memory>

#include <tav/framework/clock.h>
#include <tav/framework/export.h>
#include <tav/framework/msg.h>

namespace vorn {

namespace detail {
class cLoop;
}

class VORN_API cService {
 public:
  // No clock: cClock::Steady().
  explicit cService(std::shared_ptr<const cClock> clock = nullptr);
  virtual ~cService();
  cService(const cService&) = delete;
  cService& operator=(const cService&) = delete;

  // Handles what comes until Stop is called.
  void Run();
  // Ends Run after the handler that calls it; a Stop before Run ends it at once.
  void Stop();
  // Handles what is ready, waits at most that long for the first of it; true when it handled something.
  bool Poll(unsigned int milliseconds);
  // Queues a message to this service. Posted messages are dispatched in order, behind everything that is ready now.
  void Post(const cMsg& msg);

  // Everything no proxy or server consumed. True: handled.
  virtual bool DispatchMessage(const cMsg& msg);

  // Sends a message and waits for the answer of that type on that channel, with the request's identifier when it has a
  // valid one. Whatever else arrives meanwhile is kept and dispatched later, in order. A message of type 0 when the
  // time is over, the channel breaks or refuses; at once for a null or closed channel. A service that runs on the
  // caller's own loop cannot answer meanwhile. The last two arguments are reserved.
  cMsg SendSyncMsg(const std::shared_ptr<cScmChannel>& channel, const cMsg& msg, unsigned int timeoutMs,
                   unsigned int replyType, unsigned int = 0, unsigned int = 0);

  const cClock& GetClock() const;

  // Of the framework's own parts.
  const std::shared_ptr<detail::cLoop>& GetLoop() const { return m_loop; }

 private:
  std::shared_ptr<detail::cLoop> m_loop;
  bool m_stopped = false;
};

}  // namespace vorn
