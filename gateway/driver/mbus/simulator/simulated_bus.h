// SPDX-License-Identifier: Apache-2.0
// cSimulatedBus: a bus of simulated meters behind a pseudo terminal, which a driver opens as any serial device. Answers
// come as late as the meters and the line's rate make them, by the service's clock, unless it is told to be instant.
#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <string>

#include <gateway/driver/mbus/reader/mbus_framer.h>
#include <gateway/driver/mbus/simulator/mbus_bus.h>
#include <gateway/host/task.h>
#include <tav/framework/watch.h>

namespace tav::mbus {

struct cSimulatedBusOptions {
  std::string link;      // where the device stands; replaced when it is there. Empty: nowhere else
  bool instant = false;  // no delay, neither of meters nor of bytes; slow answers are late all the same
  bool echo = false;     // what is sent comes back first
};

class cSimulatedBus {
 public:
  static constexpr unsigned int kPieceMs = 20;  // bytes are handed over that often

  // The bus outlives it.
  cSimulatedBus(gateway::cServiceHost* host, cMBusBus& bus, const cSimulatedBusOptions& options);
  ~cSimulatedBus();
  cSimulatedBus(const cSimulatedBus&) = delete;
  cSimulatedBus& operator=(const cSimulatedBus&) = delete;

  // Why there is no device; empty when there is.
  const std::string& GetError() const { return m_error; }
  // "/dev/pts/3".
  const std::string& GetDevice() const { return m_device; }

  // Bytes that came from the driver, and that went to it.
  std::uint64_t CountTaken() const { return m_taken; }
  std::uint64_t CountGiven() const { return m_given; }

  // What time the meters have; the wall clock unless set.
  std::function<std::uint32_t()> now;
  // Every request that the meters heard as a frame, and what they answer.
  std::function<void(cBytes request, const std::string& answer)> onRequest;

 private:
  struct cPiece {
    std::int64_t due;
    std::string bytes;
  };

  bool Open();
  void OnReadable();
  void Take(const cMBusFrame& request);
  void Answer(const cBusAnswer& answer, std::int64_t after, unsigned int baud);
  void Send(std::int64_t due, const std::string& bytes);
  void OnDue();
  unsigned int ReadBaud() const;

  gateway::cServiceHost* m_host;
  cMBusBus& m_bus;
  cSimulatedBusOptions m_options;
  std::string m_error;
  std::string m_device;
  int m_line = -1;     // our side
  int m_drivers = -1;  // that of the driver, kept open so that the line outlives one
  std::uint64_t m_taken = 0, m_given = 0;
  cMBusFramer m_framer;
  std::deque<cPiece> m_pieces;
  gateway::cTask m_due;
  std::optional<vorn::cWatch> m_watch;
};

}  // namespace tav::mbus
