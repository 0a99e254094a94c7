// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/ehz_interface.h>

#include <algorithm>
#include <utility>

#include <gateway/driver/input/descriptor_input.h>
#include <gateway/driver/moment.h>
#include <gateway/driver/sml/list_reading.h>
#include <gateway/driver/unit_driver.h>

namespace tav::sml {

namespace {

const std::string kProtocol = "SML";
constexpr std::size_t kSlice = 256;            // of a waiting input: less than two telegrams
constexpr std::size_t kMostMetersKept = 4096;  // whose last storage time is remembered
constexpr std::size_t kMostMetersTold = 256;   // whose last reading is told to operators

// The meter's own time where it tells one, then that of the input's clock.
cMoment TimeOf(const cSmlList& list, const cByteInput& input) {
  if (const auto meterTime = list.MeterTime()) return {*meterTime, cMeterTav::eTsMeterUtc};
  if (const auto inputTime = input.GetTime()) return {*inputTime, cMeterTav::eTsMeter};
  return cMoment::Now();
}

}  // namespace

cEhzCounts& cEhzCounts::operator+=(const cEhzCounts& other) {
  filtered += other.filtered;
  skipped += other.skipped;
  valueless += other.valueless;
  frames.good += other.frames.good;
  frames.bad += other.frames.bad;
  frames.incomplete += other.frames.incomplete;
  frames.skippedBytes += other.frames.skippedBytes;
  faults += other.faults;
  return *this;
}

cEhzInterface::cEhzInterface(vorn::cService* service, cEhzSettings settings, const cMode& mode, cInterfaceHost& owner,
                             unsigned int timerType)
    : m_settings(std::move(settings)),
      m_mode(mode),
      m_owner(owner),
      m_reader(*this),
      m_feed(m_reader),
      m_input(MakeInput(service, timerType)) {
  if (m_input->CanWait()) m_input->Pause();
}

cEhzInterface::~cEhzInterface() = default;

cEhzCounts cEhzInterface::GetCounts() const {
  cEhzCounts counts = m_counts;
  counts.frames = m_reader.GetFrameCounts();
  counts.faults = m_reader.GetMessageCounts().faults;
  return counts;
}

void cEhzInterface::Change(const cEhzSettings& settings) {
  m_settings = settings;
  std::erase_if(m_lastRead, [this](const auto& read) { return m_settings.Find(read.first) == nullptr; });
}

void cEhzInterface::Collect(gateway::cStatusValues& values) const {
  const cEhzCounts counts = GetCounts();
  const auto set = [&](const std::string& name, const std::string& value) {
    values.Set(m_settings.name + "." + name, value);
  };
  set("input", m_ended ? "ended" : m_lost ? "lost" : m_opened ? "open" : "opening");
  set("frames-good", std::to_string(counts.frames.good));
  set("frames-bad", std::to_string(counts.frames.bad));
  set("frames-incomplete", std::to_string(counts.frames.incomplete));
  set("readings-filtered", std::to_string(counts.filtered));
  for (const auto& [meter, time] : m_lastRead) set(meter + ".last-reading", gateway::StatusTime(time));
}

// ---- input

cInputEvents cEhzInterface::MakeEvents() {
  cInputEvents events;
  events.onBytes = [this](const unsigned char* bytes, std::size_t size) { OnBytes(bytes, size); };
  events.onLost = [this](const std::string& reason) { OnInputLost(reason); };
  events.onOpen = [this] { OnInputOpen(); };
  events.onEnd = [this](const std::string& why) { OnInputEnd(why); };
  return events;
}

std::unique_ptr<cByteInput> cEhzInterface::MakeInput(vorn::cService* service, unsigned int timerType) {
  if (m_settings.simulated)
    return std::make_unique<cSimulatedInput>(service, m_settings.simulation, MakeEvents(), timerType);
  return std::make_unique<cDescriptorInput>(service, m_settings.input, MakeEvents(), timerType);
}

void cEhzInterface::OnTimer() {
  if (m_settings.simulated)
    static_cast<cSimulatedInput&>(*m_input).OnTimer();
  else
    static_cast<cDescriptorInput&>(*m_input).OnTimer();
}

void cEhzInterface::OnBytes(const unsigned char* bytes, std::size_t size) {
  if (m_ended) return;
  m_opened = true;
  if (std::exchange(m_lost, false)) ReportInput("input back", {});
  if (!m_input->CanWait()) {
    m_reader.Feed(bytes, size);
    return;
  }
  m_pending.append(reinterpret_cast<const char*>(bytes), size);
  Feed();
}

// As long as the service keeps up; the rest waits for its answers.
void cEhzInterface::Feed() {
  for (; !m_held.empty() && m_owner.HasRoom(); m_held.pop_front()) m_owner.Deliver(m_held.front());
  std::size_t at = 0;
  while (at < m_pending.size() && m_owner.HasRoom()) {
    const std::size_t slice = std::min(kSlice, m_pending.size() - at);
    m_feed.Feed({m_pending.data() + at, slice});
    at += slice;
  }
  m_pending.erase(0, at);
  if (m_ended)
    Finish();
  else if (m_input->CanWait())
    Hold();
}

void cEhzInterface::Hold() {
  if (!m_feed.GetFault().empty()) {
    OnInputEnd({});
  } else if (m_pending.empty() && m_owner.HasRoom()) {
    m_input->Resume();
  } else {
    m_input->Pause();
    m_owner.OnHeld();
  }
}

void cEhzInterface::Finish() {
  if (m_pending.empty()) m_feed.Finish();
  if (!m_abandoned && !m_feed.GetFault().empty())
    m_owner.OnFailed(m_settings.DescribeInput() + ": " + m_feed.GetFault());
  m_owner.OnEnded();
}

void cEhzInterface::Abandon() {
  m_ended = m_abandoned = true;  // what still comes in this turn is not taken any more
  m_pending.clear();
  m_held.clear();
}

void cEhzInterface::OnInputLost(const std::string& reason) {
  if (m_ended) return;
  vorn::Trace(DriverUnit(), 2, "input lost: ", reason);
  m_reader.Finish();
  if (m_mode.once) {
    OnInputEnd(m_opened ? std::string() : reason);
    return;
  }
  m_lost = true;
  ReportInput("input lost", reason);
}

void cEhzInterface::OnInputOpen() {
  m_opened = true;
  vorn::Trace(DriverUnit(), 16, "input open: ", [this] { return m_settings.DescribeInput(); });
}

void cEhzInterface::ReportInput(const char* event, const std::string& reason) {
  m_owner.Report(MakeInterfaceEvent(kEhzDriver, m_settings.name, event, reason));
}

void cEhzInterface::OnInputEnd(const std::string& why) {
  if (!why.empty()) m_owner.OnFailed(why);
  m_ended = true;
  Feed();
}

// ---- readings

void cEhzInterface::OnFrame(const cSmlFrame& frame) {
  if (frame.kind == eFrameGood) return;
  vorn::Trace(DriverUnit(), frame.kind == eFrameBad ? 4 : 8, "frame at byte ", frame.offset, ", ", frame.size,
              " bytes: ", frame.fault);
}

void cEhzInterface::OnFault(const cSmlFrame& frame, const cSmlFault& fault) {
  vorn::Trace(DriverUnit(), 4, "frame at byte ", frame.offset, ": ", [&] { return fault.ToString(); });
}

void cEhzInterface::OnList(const cSmlFrame& frame, const cSmlList& list) {
  cMeterRecord reading;
  if (!MakeReading(list, reading)) {
    ++m_counts.valueless;
    return;
  }
  const cEhzMeter* const meter = m_settings.Find(reading.GetMeterID());
  if (meter == nullptr) {
    ++m_counts.filtered;
    return;
  }
  m_owner.OnReading(m_settings.light);
  NoteRead(reading.GetMeterID(), reading.GetTimestamp());
  reading.SetInterfaceInfo(m_settings.name, kProtocol, {});
  if (meter->raw) reading.SetRaw(vorn::cData(frame.payload.data(), frame.payload.size()));
  const cObisMap* const rules = m_mode.rules->Get();
  TakeReading(rules != nullptr ? FilterReading(reading, *rules, m_mode.keepNames) : reading, *meter);
}

void cEhzInterface::NoteRead(const std::string& meterId, std::uint32_t time) {
  if (m_lastRead.size() < kMostMetersTold || m_lastRead.count(meterId) != 0) m_lastRead[meterId] = time;
}

// A meter of another medium is known only by what the list says.
bool cEhzInterface::MakeReading(const cSmlList& list, cMeterRecord& reading) const {
  const cMoment moment = TimeOf(list, *m_input);
  const std::string& usual = m_settings.others.medium;
  if (!ToReading(list, kEhzDriver, usual, moment.source, moment.seconds, reading)) return false;
  const cEhzMeter* const meter = m_settings.Find(reading.GetMeterID());
  if (meter == nullptr || meter->medium == usual) return true;
  reading = cMeterRecord();
  return ToReading(list, kEhzDriver, meter->medium, moment.source, moment.seconds, reading);
}

void cEhzInterface::TakeReading(const cMeterRecord& reading, const cEhzMeter& meter) {
  if (reading.GetMeasurementEntries().empty())
    ++m_counts.filtered;
  else if (!IsTimeWanted(reading, meter.intervalSeconds))
    ++m_counts.skipped;
  else if (m_input->CanWait() && !m_owner.HasRoom())
    m_held.push_back(reading);
  else
    m_owner.Deliver(reading);
}

bool cEhzInterface::IsTimeWanted(const cMeterRecord& reading, unsigned int intervalSeconds) {
  if (intervalSeconds == 0) return true;
  const std::uint32_t slot = reading.GetTimestamp() / intervalSeconds;
  const auto known = m_lastStored.find(reading.GetMeterID());
  if (known != m_lastStored.end() && known->second == slot) return false;
  if (known == m_lastStored.end() && m_lastStored.size() == kMostMetersKept) m_lastStored.clear();
  m_lastStored[reading.GetMeterID()] = slot;
  return true;
}

}  // namespace tav::sml
