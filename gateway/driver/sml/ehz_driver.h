// SPDX-License-Identifier: Apache-2.0
// cEhzDriver: the process of the SML driver. Bytes come from an input, go through the reader, become readings, pass the
// rules and the storage interval, and leave through the delivery.
//
// An input that can wait is held back while the service is behind; one that cannot feeds the delivery's bounded queue.
#pragma once

#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include <gateway/driver/delivery.h>
#include <gateway/driver/input/byte_input.h>
#include <gateway/driver/sml/capture_feed.h>
#include <gateway/driver/sml/ehz_options.h>
#include <gateway/driver/sml/sml_reader.h>
#include <tav/framework/scm_service.h>
#include <tav/framework/timer.h>
#include <tav/framework/watch.h>
#include <tav/obis/obis_map.h>

namespace tav::sml {

struct cEhzCounts {
  std::uint64_t filtered = 0;   // readings of which no value passed the rules, or of other meters
  std::uint64_t skipped = 0;    // readings between two storage times
  std::uint64_t valueless = 0;  // lists without a value to store, or without a server id
};

class cEhzDriver : public vorn::cScmService, private cSmlSink {
 public:
  // No clock: cClock::Steady().
  cEhzDriver(const cEhzOptions& options, const cObisMap& rules, std::shared_ptr<const vorn::cClock> clock = nullptr);
  ~cEhzDriver() override;

  // Runs to the end of the input or a signal; the process's exit code.
  int Work();
  bool DispatchMessage(const vorn::cMsg& msg) override;
  // One line: frames, readings and what became of them.
  std::string Summary() const;

 private:
  // The loop's own messages, of timers.
  enum eTimerMessage : unsigned int { eInputTimer = 0x100, eBegin, eGiveUp };

  void OnList(const cSmlFrame& frame, const cSmlList& list) override;
  void OnFault(const cSmlFrame& frame, const cSmlFault& fault) override;
  void OnFrame(const cSmlFrame& frame) override;

  cInputEvents MakeEvents();
  std::unique_ptr<cByteInput> MakeInput();
  void OnBytes(const unsigned char* bytes, std::size_t size);
  void OnProgress();
  void FeedPending();
  void HoldInput();
  void OnInputLost(const std::string& reason);
  void OnInputOpen();
  void OnInputEnd(const std::string& why);
  void FailInput(const std::string& why);
  void OnSignal(int signal);
  void EndWhenDone();
  void GiveUpLater();
  void GiveUp();
  void ReportInput(const char* event, const std::string& reason);
  void TakeReading(const cMeterRecord& reading);
  bool HasRoom() const { return m_delivery.GetOpen() < cDelivery::kWindow; }
  bool IsReadToEnd() const { return m_inputEnded && m_pending.empty() && m_held.empty(); }
  bool IsMeterWanted(const std::string& meterId) const;
  bool IsTimeWanted(const cMeterRecord& reading);

  cEhzOptions m_options;
  cObisMap m_rules;
  cSmlReader m_reader;
  cCaptureFeed m_feed;
  cDelivery m_delivery;
  vorn::cTimer m_begin;
  vorn::cTimer m_giveUp;
  std::unique_ptr<cByteInput> m_input;
  std::optional<vorn::cSignalWatch> m_signals;
  std::string m_pending;            // bytes of an input that waits, not yet read
  std::deque<cMeterRecord> m_held;  // of such an input, read and not delivered: a frame may have many lists
  std::map<std::string, std::uint32_t> m_lastStored;  // meter identifier to the slot of its last stored reading
  cEhzCounts m_counts;
  std::uint64_t m_answers = 0;  // of the service, when we last looked
  bool m_inputOpened = false;   // at least once
  bool m_inputLost = false;     // and reported
  bool m_inputEnded = false;
  bool m_ending = false;  // by a signal
  int m_exitCode = eExitOk;
};

}  // namespace tav::sml
