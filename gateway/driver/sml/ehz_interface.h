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
#include <gateway/driver/sml/capture_feed.h>
#include <gateway/driver/sml/ehz_settings.h>
#include <gateway/driver/sml/sml_reader.h>
#include <gateway/host/status_publisher.h>
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

class cEhzInterface;

// The record that tells the service what happened to an interface now; without a reason when that is empty.
vorn::cRecord MakeInterfaceEvent(const std::string& interfaceName, const char* event, const std::string& reason);

// What an interface asks of the driver it belongs to.
class cEhzOwner {
 public:
  // Room for a reading of an input that can wait.
  virtual bool HasRoom() const = 0;
  virtual void Deliver(const cMeterRecord& reading) = 0;
  // A reading has come; light is the interface's for meter data.
  virtual void OnReading(unsigned int light) = 0;
  virtual void Report(const vorn::cRecord& event) = 0;
  // The input waits because there is no room.
  virtual void OnHeld() = 0;
  // Everything of it is read; nothing comes any more.
  virtual void OnEnded() = 0;
  // The input cannot be read; why.
  virtual void OnFailed(const std::string& why) = 0;

 protected:
  ~cEhzOwner() = default;
};

class cEhzInterface : private cSmlSink {
 public:
  // How the process was started; the same for all interfaces.
  struct cMode {
    const cDriverRules* rules = nullptr;
    bool keepNames = false;
    bool once = false;  // the first loss of the input is its end
  };

  // timerType: of the timer message that the owner's DispatchMessage hands to OnTimer. Mode's rules, service and owner
  // outlive the interface.
  cEhzInterface(vorn::cService* service, cEhzSettings settings, const cMode& mode, cEhzOwner& owner,
                unsigned int timerType);
  ~cEhzInterface() override;

  // Takes other settings with the same input.
  void Change(const cEhzSettings& settings);
  // Goes on with what waits, as long as the owner has room.
  void Feed();
  void OnTimer();
  // What is not read yet will not be.
  void Abandon();

  // How it is, for operators; named "interface.value".
  void Collect(gateway::cStatusValues& values) const;
  const cEhzSettings& GetSettings() const { return m_settings; }
  cEhzCounts GetCounts() const;
  bool CanWait() const { return m_input->CanWait(); }
  bool IsEnded() const { return m_ended; }
  bool IsReadToEnd() const { return m_ended && m_pending.empty() && m_held.empty(); }

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
  cEhzOwner& m_owner;
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
