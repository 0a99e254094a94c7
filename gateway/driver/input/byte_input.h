// SPDX-License-Identifier: Apache-2.0
// Where a driver's bytes come from: a serial device, a network address, a file, standard input or a simulated meter.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace tav {

// What an input tells its driver, from the loop.
struct cInputEvents {
  std::function<void(const unsigned char* bytes, std::size_t size)> onBytes;
  // The input cannot be opened, or broke, and will be opened again by itself; why. Told once, until bytes come again;
  // those are a new stream.
  std::function<void(const std::string& reason)> onLost;
  // It is open: a connection is made, a device set up.
  std::function<void()> onOpen;
  // There will be nothing more; why is empty when the input simply ended.
  std::function<void(const std::string& why)> onEnd;
};

class cByteInput {
 public:
  virtual ~cByteInput() = default;
  // Whether it waits while paused: a file does, a meter goes on talking.
  virtual bool CanWait() const = 0;
  virtual void Pause() = 0;
  virtual void Resume() = 0;
  // The time of the bytes in seconds since 1970-01-01 UTC, where the input has a clock of its own.
  virtual std::optional<std::uint32_t> GetTime() const { return std::nullopt; }
};

}  // namespace tav
