// SPDX-License-Identifier: Apache-2.0
// cEhzInterface: one open interface of the SML driver. Bytes come from its input, go through the reader, become
// readings, pass the rules and the storage interval, and leave through the owner.
//
// An input that can wait is held back while the owner has no room; one that cannot goes on.
#pragma once

#include <deque>
#include <map>
#include <memory>
#include <string>

#include <gateway/driver/driver_rules.h>
#include <gateway/driver/input/byte_input.h>
#include <gateway/driver/open_interface.h>
#include <gateway/driver/sml/capture_feed.h>
#include <gateway/driver/sml/ehz_settings.h>
#include <gateway/driver/sml/sml_reader.h>
#include <tav/record/meter_record.h>

namespace tav::sml {

struct cEhzCounts {
  std::uint64_t filtered = 0;   // readings of which no value passed the rules, or of other meters
  std::uint64_t skipped = 0;    // readings between two storage times
  std::uint64_t valueless = 0;  // lists without a value to store, or without a server id
  cSmlCounts frames;
  std::uint64_t faults = 0;  // messages within good frames

  cEhzCounts& operator+=(const cEhzCounts& other);
};

class cEhzInterface : public cOpenInterface, private cSmlSink {
 public:
  // How the process was started; the same for all interfaces.
  struct cMode {
    const cDriverRules* rules = nullptr;
    bool keepNames = false;
    bool once = false;  // the first loss of the input is its end
  };

  // timerType: of the timer message that the owner's DispatchMessage hands to OnTimer. Mode's rules, service and owner
  // outlive the interface.
  cEhzInterface(vorn::cService* service, cEhzSettings settings, const cMode& mode, cInterfaceHost& owner,
                unsigned int timerType);
  ~cEhzInterface() override;

  // Takes other settings with the same input.
  void Change(const cEhzSettings& settings);
  std::string Describe() const override { return m_settings.DescribeInput(); }
  void Feed() override;
  void OnTimer() override;
  void Abandon() override;
  void Collect(gateway::cStatusValues& values) const override;
  bool CanWait() const override { return m_input->CanWait(); }
  bool IsReadToEnd() const override { return m_ended && m_pending.empty() && m_held.empty(); }

  const cEhzSettings& GetSettings() const { return m_settings; }
  cEhzCounts GetCounts() const;
  bool IsEnded() const { return m_ended; }

 private:
  void OnList(const cSmlFrame& frame, const cSmlList& list) override;
  void OnFault(const cSmlFrame& frame, const cSmlFault& fault) override;
  void OnFrame(const cSmlFrame& frame) override;

  cInputEvents MakeEvents();
  std::unique_ptr<cByteInput> MakeInput(vorn::cService* service, unsigned int timerType);
  void OnBytes(const unsigned char* bytes, std::size_t size);
  void Hold();
  void Finish();
  void OnInputLost(const std::string& reason);
  void OnInputOpen();
  void OnInputEnd(const std::string& why);
  void ReportInput(const char* event, const std::string& reason);
  bool MakeReading(const cSmlList& list, cMeterRecord& reading) const;
  void NoteRead(const std::string& meterId, std::uint32_t time);
  void TakeReading(const cMeterRecord& reading, const cEhzMeter& meter);
  bool IsTimeWanted(const cMeterRecord& reading, unsigned int intervalSeconds);

  cEhzSettings m_settings;
  cMode m_mode;
  cInterfaceHost& m_owner;
  cSmlReader m_reader;
  cCaptureFeed m_feed;
  std::unique_ptr<cByteInput> m_input;
  std::string m_pending;            // bytes of an input that waits, not yet read
  std::deque<cMeterRecord> m_held;  // of such an input, read and not delivered: a frame may have many lists
  std::map<std::string, std::uint32_t> m_lastStored;  // meter identifier to the slot of its last stored reading
  std::map<std::string, std::uint32_t> m_lastRead;    // to the time of its last reading
  cEhzCounts m_counts;
  bool m_opened = false;  // at least once
  bool m_lost = false;    // and reported
  bool m_ended = false;
  bool m_abandoned = false;
};

}  // namespace tav::sml
