// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/device/bus.h>

#include <poll.h>
#include <systemd/sd-bus.h>
#include <time.h>

#include <algorithm>
#include <cstring>

namespace tav::gateway {

namespace {

constexpr std::uint64_t kNever = UINT64_MAX;
constexpr std::uint64_t kLongestMs = 3'600'000;

// Of the clock that sd-bus counts by.
std::uint64_t NowUs() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<std::uint64_t>(now.tv_sec) * 1'000'000 + static_cast<std::uint64_t>(now.tv_nsec) / 1000;
}

int OpenAddress(sd_bus** bus, const std::string& address) {
  int code = sd_bus_new(bus);
  if (code >= 0) code = sd_bus_set_address(*bus, address.c_str());
  if (code >= 0) code = sd_bus_set_bus_client(*bus, 1);
  return code >= 0 ? sd_bus_start(*bus) : code;
}

}  // namespace

void cUnrefSlot::operator()(sd_bus_slot* slot) const { sd_bus_slot_unref(slot); }

void cBus::cClose::operator()(sd_bus* bus) const { sd_bus_close_unref(bus); }

cBus::cBus(cServiceHost* host, const std::string& address, std::function<void(const std::string& fault)> onClosed)
    : m_host(host),
      m_onClosed(std::move(onClosed)),
      m_process(host, [this] { Process(); }),
      m_timeout(host, [this] { Process(); }) {
  Open(address);
}

void cBus::Open(const std::string& address) {
  sd_bus* bus = nullptr;
  const int code = address.empty() ? sd_bus_open_system(&bus) : OpenAddress(&bus, address);
  m_bus.reset(bus);
  if (code < 0) {
    m_error = std::strerror(-code);
    return m_bus.reset();
  }
  m_read.emplace(m_host, sd_bus_get_fd(bus), vorn::cWatch::eEvent::Read, [this] { Process(); });
  Flush();
}

void cBus::Flush() { m_process.Post(); }

void cBus::Process() {
  int code = 0;
  while (m_bus && (code = sd_bus_process(m_bus.get(), nullptr)) > 0) {
  }
  if (!m_bus) return;
  if (code < 0)
    Close(code);
  else
    Prepare();
}

void cBus::Prepare() {
  const int events = sd_bus_get_events(m_bus.get());
  const bool waitsToWrite = events > 0 && (events & POLLOUT) != 0;
  if (!waitsToWrite)
    m_write.reset();
  else if (!m_write)
    m_write.emplace(m_host, sd_bus_get_fd(m_bus.get()), vorn::cWatch::eEvent::Write, [this] { Process(); });
  std::uint64_t until = kNever;
  sd_bus_get_timeout(m_bus.get(), &until);
  m_timeout.Stop();
  if (until == kNever) return;
  const std::uint64_t now = NowUs();
  m_timeout.Start(static_cast<unsigned int>(std::min(until > now ? (until - now) / 1000 + 1 : 0, kLongestMs)));
}

void cBus::Close(int code) {
  m_error = std::strerror(-code);
  m_timeout.Stop();
  m_read.reset();
  m_write.reset();
  m_bus.reset();
  if (m_onClosed) m_onClosed(m_error);
}

}  // namespace tav::gateway
