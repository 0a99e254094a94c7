// SPDX-License-Identifier: Apache-2.0
// cDescriptorInput: an input behind a file descriptor, read in blocks on the loop. A live one (device, connection) that
// breaks is opened again, after 100 ms first and up to 10 s later; only bytes make it a working one, so that a peer
// that hangs up at once is not asked ten times a second. A live one can be written, too.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include <tav/framework/timer.h>
#include <tav/framework/watch.h>

#include <gateway/driver/input/byte_input.h>
#include <gateway/driver/input/descriptor_writer.h>
#include <gateway/driver/input/input_opener.h>

namespace tav {

class cDescriptorInput : public cByteInput {
 public:
  static constexpr unsigned int kFirstBackOffMs = 100;
  static constexpr unsigned int kLongestBackOffMs = 10000;

  // Opens with the first turn of the loop. reopenType: the type of the timer message that the owner's DispatchMessage
  // hands to OnTimer.
  cDescriptorInput(vorn::cService* service, cInputSpec spec, cInputEvents events, unsigned int reopenType);
  ~cDescriptorInput() override;
  cDescriptorInput(const cDescriptorInput&) = delete;
  cDescriptorInput& operator=(const cDescriptorInput&) = delete;

  bool CanWait() const override { return !m_spec.IsLive(); }
  void Pause() override;
  void Resume() override;
  void OnTimer() { Open(); }

  // Connected, not only on the way.
  bool IsOpen() const { return m_open; }
  // To the device or peer; nothing while it is not open. Who asks is told of the next loss, whatever was told before.
  void Write(std::string_view bytes);
  // Takes what has come up to now, without waiting for the loop's turn.
  void ReadNow();
  // Of a serial device, from now on.
  void SetBaud(unsigned int baud);

 private:
  void Open();
  void OnConnected();
  void Listen();
  void OnReadable();
  void Lose(const std::string& reason);
  void Close();

  vorn::cService* m_service;
  cInputSpec m_spec;
  cInputEvents m_events;
  unsigned int m_reopenType;
  vorn::cTimer m_reopen;
  unsigned int m_backOff = kFirstBackOffMs;
  unsigned int m_attempt = 0;  // connections that failed
  int m_descriptor = -1;
  int m_flags = 0;  // of the descriptor when it was opened
  bool m_open = false;
  bool m_paused = false;
  bool m_lossReported = false;  // and no byte came since
  std::optional<vorn::cWatch> m_watch;
  cDescriptorWriter m_writer;
};

}  // namespace tav
