// SPDX-License-Identifier: Apache-2.0
// cBus: a connection to a D-Bus on a service's loop. What it carries is asked and answered with libsystemd's functions
// (systemd/sd-bus.h) on Get().
//
// When it breaks later, it calls back once and cannot be used any more.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <gateway/host/task.h>
#include <tav/framework/watch.h>

struct sd_bus;
struct sd_bus_slot;

namespace tav::gateway {

// A call that is not answered yet, or a match: given up when it dies.
struct cUnrefSlot {
  void operator()(sd_bus_slot* slot) const;
};
using cBusSlot = std::unique_ptr<sd_bus_slot, cUnrefSlot>;

class cBus {
 public:
  // address: of the bus; empty: the system bus. Ask IsOpen for the outcome. onClosed: it broke later, and
  // why; not to end this object from within.
  cBus(cServiceHost* host, const std::string& address, std::function<void(const std::string& fault)> onClosed);

  bool IsOpen() const { return m_bus != nullptr; }
  // Why it is not open.
  const std::string& GetError() const { return m_error; }
  sd_bus* Get() const { return m_bus.get(); }
  // Behind each use of Get() that sends.
  void Flush();

 private:
  struct cClose {
    void operator()(sd_bus* bus) const;
  };

  void Open(const std::string& address);
  void Process();
  void Prepare();
  void Close(int code);

  cServiceHost* m_host;
  std::function<void(const std::string& fault)> m_onClosed;
  std::string m_error;
  std::unique_ptr<sd_bus, cClose> m_bus;
  std::optional<vorn::cWatch> m_read;
  std::optional<vorn::cWatch> m_write;  // while something waits to be written
  cTask m_process;
  cTask m_timeout;
};

}  // namespace tav::gateway
