// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/ehz_driver.h>

#include <sys/timex.h>

#include <algorithm>
#include <csignal>

#include <gateway/driver/input/descriptor_input.h>
#include <gateway/driver/sml/dlms_units.h>
#include <gateway/driver/sml/list_reading.h>
#include <gateway/driver/unit_driver.h>
#include <tav/framework/helper.h>

namespace tav::sml {

namespace {

const std::string kDriver = "ehzif";
const std::string kProtocol = "SML";
constexpr std::size_t kSlice = 256;            // of a waiting input: less than two telegrams
constexpr unsigned int kFirstWaitMs = 500;     // of an input that can wait, for the service to be connected
constexpr unsigned int kSignalWaitMs = 2000;   // for acknowledgements after a signal
constexpr std::size_t kMostMetersKept = 4096;  // whose last storage time is remembered

struct cMoment {
  std::uint32_t seconds;
  cMeterTav::eTimeSource source;
};

// The machine's clock, and whether it is kept by the network.
cMoment Now() {
  timex state{};
  const bool synchronized = adjtimex(&state) != TIME_ERROR;
  return {vorn::cTime::Now().GetSeconds(), synchronized ? cMeterTav::eTsNetworkTime : cMeterTav::eTsRtc};
}

// The meter's own time where it tells one, then that of the input's clock.
cMoment TimeOf(const cSmlList& list, const cByteInput& input) {
  if (const auto meterTime = list.MeterTime()) return {*meterTime, cMeterTav::eTsMeterUtc};
  if (const auto inputTime = input.GetTime()) return {*inputTime, cMeterTav::eTsMeter};
  return Now();
}

}  // namespace

cEhzDriver::cEhzDriver(const cEhzOptions& options, const cObisMap& rules, std::shared_ptr<const vorn::cClock> clock)
    : cScmService(kDriver, options.directory, std::move(clock)),
      m_options(options),
      m_rules(rules),
      m_reader(*this),
      m_feed(m_reader),
      m_delivery(this, kDriver, [this] { OnProgress(); }),
      m_begin(this),
      m_giveUp(this) {
  AddDlmsUnits();
  m_signals.emplace(this, std::initializer_list<int>{SIGTERM, SIGINT}, [this](int signal) { OnSignal(signal); });
  m_input = MakeInput();
  if (!m_input->CanWait()) return;
  m_input->Pause();
  m_begin.Start(kFirstWaitMs, eBegin);
}

cEhzDriver::~cEhzDriver() = default;

int cEhzDriver::Work() {
  Run();
  const cDeliveryCounts& counts = m_delivery.GetCounts();
  if (m_exitCode == eExitOk && (counts.refused != 0 || counts.dropped != 0 || m_delivery.GetOpen() != 0))
    m_exitCode = eExitNotDelivered;
  return m_exitCode;
}

bool cEhzDriver::DispatchMessage(const vorn::cMsg& msg) {
  if (msg.GetType() == eGiveUp) {
    GiveUp();
  } else if (msg.GetType() == eBegin) {
    FeedPending();
  } else if (msg.GetType() == eInputTimer && m_options.simulated) {
    static_cast<cSimulatedInput&>(*m_input).OnTimer();
  } else if (msg.GetType() == eInputTimer) {
    static_cast<cDescriptorInput&>(*m_input).OnTimer();
  }
  return true;
}

std::string cEhzDriver::Summary() const {
  const cSmlCounts& frames = m_reader.GetFrameCounts();
  const cDeliveryCounts& readings = m_delivery.GetCounts();
  const auto number = [](std::uint64_t value) { return static_cast<unsigned long long>(value); };
  return vorn::FormatString(
      "ehzif: frames good=%llu bad=%llu incomplete=%llu skipped-bytes=%llu faults=%llu; readings delivered=%llu "
      "acknowledged=%llu refused=%llu dropped=%llu unconfirmed=%llu open=%llu filtered=%llu skipped=%llu "
      "valueless=%llu",
      number(frames.good), number(frames.bad), number(frames.incomplete), number(frames.skippedBytes),
      number(m_reader.GetMessageCounts().faults), number(readings.readings), number(readings.acknowledged),
      number(readings.refused), number(readings.dropped), number(readings.unconfirmed), number(m_delivery.GetOpen()),
      number(m_counts.filtered), number(m_counts.skipped), number(m_counts.valueless));
}

// ---- input

cInputEvents cEhzDriver::MakeEvents() {
  cInputEvents events;
  events.onBytes = [this](const unsigned char* bytes, std::size_t size) { OnBytes(bytes, size); };
  events.onLost = [this](const std::string& reason) { OnInputLost(reason); };
  events.onOpen = [this] { OnInputOpen(); };
  events.onEnd = [this](const std::string& why) { OnInputEnd(why); };
  return events;
}

std::unique_ptr<cByteInput> cEhzDriver::MakeInput() {
  if (m_options.simulated)
    return std::make_unique<cSimulatedInput>(this, m_options.simulation, MakeEvents(), eInputTimer);
  return std::make_unique<cDescriptorInput>(this, m_options.input, MakeEvents(), eInputTimer);
}

void cEhzDriver::OnBytes(const unsigned char* bytes, std::size_t size) {
  if (m_inputEnded) return;
  if (std::exchange(m_inputLost, false)) ReportInput("input back", {});
  if (!m_input->CanWait()) {
    m_reader.Feed(bytes, size);
    return;
  }
  m_pending.append(reinterpret_cast<const char*>(bytes), size);
  FeedPending();
}

void cEhzDriver::OnProgress() {
  const cDeliveryCounts& counts = m_delivery.GetCounts();
  const std::uint64_t answers = counts.acknowledged + counts.refused;
  if (std::exchange(m_answers, answers) != answers && !m_ending) m_giveUp.Stop();
  FeedPending();
}

// As long as the service keeps up; the rest waits for its answers.
void cEhzDriver::FeedPending() {
  if (!m_input) return;  // called while the delivery is made
  for (; !m_held.empty() && HasRoom(); m_held.pop_front()) m_delivery.Deliver(m_held.front());
  std::size_t at = 0;
  while (at < m_pending.size() && HasRoom()) {
    const std::size_t slice = std::min(kSlice, m_pending.size() - at);
    m_feed.Feed({m_pending.data() + at, slice});
    at += slice;
  }
  m_pending.erase(0, at);
  if (m_inputEnded)
    EndWhenDone();
  else if (m_input->CanWait())
    HoldInput();
}

void cEhzDriver::HoldInput() {
  if (!m_feed.GetFault().empty()) {
    OnInputEnd({});
  } else if (m_pending.empty() && HasRoom()) {
    m_input->Resume();
  } else {
    m_input->Pause();
    if (m_options.once) GiveUpLater();
  }
}

void cEhzDriver::OnInputLost(const std::string& reason) {
  if (m_inputEnded) return;
  vorn::Trace(DriverUnit(), 2, "input lost: ", reason);
  m_reader.Finish();
  if (m_options.once) {
    OnInputEnd(m_inputOpened ? std::string() : reason);
    return;
  }
  m_inputLost = true;
  ReportInput("input lost", reason);
}

void cEhzDriver::OnInputOpen() {
  m_inputOpened = true;
  vorn::Trace(DriverUnit(), 16, "input open: ", [this] { return m_options.input.ToString(); });
}

void cEhzDriver::ReportInput(const char* event, const std::string& reason) {
  vorn::cRecord record;
  record.AppendUIntPar("timestamp", vorn::cTime::Now().GetSeconds());
  record.AppendTextPar("driver", kDriver);
  record.AppendTextPar("interface-name", m_options.interfaceName);
  record.AppendTextPar("event", event);
  if (!reason.empty()) record.AppendTextPar("reason", reason);
  m_delivery.Report(record);
}

void cEhzDriver::OnInputEnd(const std::string& why) {
  if (!why.empty()) FailInput(why);
  m_inputEnded = true;
  FeedPending();
}

void cEhzDriver::FailInput(const std::string& why) {
  if (std::exchange(m_exitCode, eExitInput) != eExitInput) vorn::Trace(DriverUnit(), 2, why);
}

// ---- the end

void cEhzDriver::OnSignal(int signal) {
  vorn::Trace(DriverUnit(), 8, "signal ", signal);
  m_inputEnded = true;  // what still comes in this turn is not taken any more
  m_pending.clear();
  m_held.clear();
  if (std::exchange(m_ending, true) || m_delivery.GetOpen() == 0)
    Stop();
  else
    m_giveUp.Start(kSignalWaitMs, eGiveUp);
}

void cEhzDriver::EndWhenDone() {
  if (m_pending.empty()) m_feed.Finish();
  if (!m_ending && !m_feed.GetFault().empty()) FailInput(m_options.input.ToString() + ": " + m_feed.GetFault());
  if (IsReadToEnd() && m_delivery.GetOpen() == 0)
    Stop();
  else
    GiveUpLater();
}

// Counted from the service's last answer.
void cEhzDriver::GiveUpLater() {
  if (!m_giveUp.IsRunning()) m_giveUp.Start(m_options.waitSeconds * 1000, eGiveUp);
}

void cEhzDriver::GiveUp() {
  vorn::Trace(DriverUnit(), 2, "gave up waiting, ", m_delivery.GetOpen(), " readings are not acknowledged",
              IsReadToEnd() ? "" : " and the input is not read to its end");
  Stop();
}

// ---- readings

void cEhzDriver::OnFrame(const cSmlFrame& frame) {
  if (frame.kind == eFrameGood) return;
  vorn::Trace(DriverUnit(), frame.kind == eFrameBad ? 4 : 8, "frame at byte ", frame.offset, ", ", frame.size,
              " bytes: ", frame.fault);
}

void cEhzDriver::OnFault(const cSmlFrame& frame, const cSmlFault& fault) {
  vorn::Trace(DriverUnit(), 4, "frame at byte ", frame.offset, ": ", [&] { return fault.ToString(); });
}

void cEhzDriver::OnList(const cSmlFrame& frame, const cSmlList& list) {
  const cMoment moment = TimeOf(list, *m_input);
  cMeterRecord reading;
  if (!ToReading(list, kDriver, m_options.medium, moment.source, moment.seconds, reading)) {
    ++m_counts.valueless;
    return;
  }
  reading.SetInterfaceInfo(m_options.interfaceName, kProtocol, {});
  if (m_options.raw) reading.SetRaw(vorn::cData(frame.payload.data(), frame.payload.size()));
  if (m_options.rulesFile.empty()) {
    TakeReading(reading);
    return;
  }
  cMeterRecord filtered;
  reading.ProcessFilter(m_rules, filtered, m_options.keepNames);
  TakeReading(filtered);
}

void cEhzDriver::TakeReading(const cMeterRecord& reading) {
  if (!IsMeterWanted(reading.GetMeterID()) || reading.GetMeasurementEntries().empty())
    ++m_counts.filtered;
  else if (!IsTimeWanted(reading))
    ++m_counts.skipped;
  else if (m_input->CanWait() && !HasRoom())
    m_held.push_back(reading);
  else
    m_delivery.Deliver(reading);
}

bool cEhzDriver::IsMeterWanted(const std::string& meterId) const {
  return m_options.meters.empty() || m_options.meters.count(meterId) != 0;
}

bool cEhzDriver::IsTimeWanted(const cMeterRecord& reading) {
  if (m_options.intervalSeconds == 0) return true;
  const std::uint32_t slot = reading.GetTimestamp() / m_options.intervalSeconds;
  const auto known = m_lastStored.find(reading.GetMeterID());
  if (known != m_lastStored.end() && known->second == slot) return false;
  if (known == m_lastStored.end() && m_lastStored.size() == kMostMetersKept) m_lastStored.clear();
  m_lastStored[reading.GetMeterID()] = slot;
  return true;
}

}  // namespace tav::sml
