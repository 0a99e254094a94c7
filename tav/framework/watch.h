// SPDX-License-Identifier: Apache-2.0
// cWatch and cSignalWatch: other file descriptors and signals on a service's loop. Watched while the object lives.
#pragma once

#include <functional>
#include <initializer_list>
#include <memory>

#include <tav/framework/export.h>
#include <tav/framework/service.h>

namespace vorn {

namespace detail {
class cWatchState;
}

// Calls a function from the loop whenever a descriptor (socket, serial device, pipe, epoll set) is ready. A descriptor
// that the kernel cannot wait for (a regular file) counts as always ready.
class VORN_API cWatch {
 public:
  enum class eEvent { Read, Write };

  // Does not own the descriptor; end the watch before closing it.
  cWatch(cService* service, int descriptor, eEvent event, std::function<void()> onReady);
  ~cWatch();
  cWatch(const cWatch&) = delete;
  cWatch& operator=(const cWatch&) = delete;

 private:
  std::shared_ptr<detail::cWatchState> m_state;
};

// Calls a function with the number of each signal that arrives, from the loop. The signals are blocked for other use
// while the object lives; create it before any thread.
class VORN_API cSignalWatch {
 public:
  cSignalWatch(cService* service, std::initializer_list<int> signals, std::function<void(int signal)> onSignal);
  ~cSignalWatch();
  cSignalWatch(const cSignalWatch&) = delete;
  cSignalWatch& operator=(const cSignalWatch&) = delete;

 private:
  struct cState;
  std::unique_ptr<cState> m_state;
};

}  // namespace vorn
