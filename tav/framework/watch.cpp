// SPDX-License-Identifier: Apache-2.0
#include <tav/framework/watch.h>

#include <fcntl.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <asio.hpp>
#include <csignal>
#include <map>
#include <optional>
#include <vector>

#include "detail/alarm.h"
#include "detail/loop.h"

namespace vorn {

namespace detail {

class cWatchState : public std::enable_shared_from_this<cWatchState> {
 public:
  cWatchState(const std::shared_ptr<cLoop>& loop, cWatch::eEvent event, std::function<void()> onReady)
      : m_loop(loop), m_event(event), m_onReady(std::move(onReady)), m_alarm(loop->GetAlarms(), [this] { Ready(); }) {}

  void Start(int descriptor) {
    // A duplicate, so that two watches of one descriptor do not meet in the kernel's set.
    const int own = fcntl(descriptor, F_DUPFD_CLOEXEC, 0);
    std::error_code error;
    m_descriptor.emplace(m_loop->GetIo());
    m_descriptor->assign(own, error);
    if (error) {
      if (own >= 0) close(own);
      m_descriptor.reset();
    }
    Arm();
  }
  void Stop() {
    m_stopped = true;
    m_alarm.Stop();
    m_descriptor.reset();
  }

 private:
  void Arm() {
    if (m_stopped) return;
    if (!m_descriptor) {
      m_alarm.Start(0);
      return;
    }
    const auto event = m_event == cWatch::eEvent::Read ? asio::posix::descriptor_base::wait_read
                                                       : asio::posix::descriptor_base::wait_write;
    m_descriptor->async_wait(event, [self = shared_from_this()](const std::error_code& error) {
      if (!error) {
        self->Ready();
      } else if (error != asio::error::operation_aborted) {
        self->m_descriptor.reset();  // nothing the kernel can wait for
        self->Arm();
      }
    });
  }
  void Ready() {
    const auto self = shared_from_this();  // it may be ended from within
    if (m_stopped) return;
    if (m_loop->MustKeep()) {
      // Asked again once the call that everybody waits for is over.
      m_loop->Keep([self] { self->Arm(); });
      return;
    }
    m_onReady();
    Arm();
  }

  std::shared_ptr<cLoop> m_loop;
  cWatch::eEvent m_event;
  std::function<void()> m_onReady;
  std::optional<asio::posix::stream_descriptor> m_descriptor;
  cAlarm m_alarm;  // for what cannot be waited for
  bool m_stopped = false;
};

}  // namespace detail

cWatch::cWatch(cService* service, int descriptor, eEvent event, std::function<void()> onReady)
    : m_state(std::make_shared<detail::cWatchState>(service->GetLoop(), event, std::move(onReady))) {
  m_state->Start(descriptor);
}

cWatch::~cWatch() { m_state->Stop(); }

namespace {

// How many watches a signal has, and whether it was blocked before the first: watches may end in any order.
struct cBlocked {
  unsigned int watches = 0;
  bool before = false;
};

std::map<int, cBlocked>& BlockedSignals() {
  static auto* blocked = new std::map<int, cBlocked>;
  return *blocked;
}

void SetBlocked(int signal, bool block) {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, signal);
  pthread_sigmask(block ? SIG_BLOCK : SIG_UNBLOCK, &set, nullptr);
}

void Block(int signal) {
  cBlocked& blocked = BlockedSignals()[signal];
  if (blocked.watches++ != 0) return;
  sigset_t present;
  pthread_sigmask(SIG_SETMASK, nullptr, &present);
  blocked.before = sigismember(&present, signal) == 1;
  SetBlocked(signal, true);
}

void Unblock(int signal) {
  cBlocked& blocked = BlockedSignals()[signal];
  if (--blocked.watches == 0 && !blocked.before) SetBlocked(signal, false);
}

}  // namespace

struct cSignalWatch::cState {
  int descriptor = -1;
  std::vector<int> signals;
  std::optional<cWatch> watch;
};

cSignalWatch::cSignalWatch(cService* service, std::initializer_list<int> signals,
                           std::function<void(int signal)> onSignal)
    : m_state(std::make_unique<cState>()) {
  m_state->signals = signals;
  sigset_t set;
  sigemptyset(&set);
  for (const int signal : signals) {
    sigaddset(&set, signal);
    Block(signal);
  }
  const int descriptor = m_state->descriptor = signalfd(-1, &set, SFD_NONBLOCK | SFD_CLOEXEC);
  m_state->watch.emplace(service, descriptor, cWatch::eEvent::Read, [descriptor, onSignal = std::move(onSignal)] {
    signalfd_siginfo info{};
    while (read(descriptor, &info, sizeof info) == static_cast<ssize_t>(sizeof info))
      onSignal(static_cast<int>(info.ssi_signo));
  });
}

cSignalWatch::~cSignalWatch() {
  m_state->watch.reset();
  if (m_state->descriptor >= 0) close(m_state->descriptor);
  for (const int signal : m_state->signals) Unblock(signal);
}

}  // namespace vorn
