// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/mbif/mbus_interface.h>

#include <algorithm>
#include <utility>

#include <gateway/driver/mbus/reader/mbus_text.h>
#include <gateway/driver/mbus/simulator/simulated_bus.h>
#include <gateway/driver/unit_driver.h>
#include <tav/framework/helper.h>

namespace tav::mbus {

namespace {

const std::string kProtocol = "MBUS";
constexpr unsigned int kRulesWaitMs = 2000;  // for the gateway's rules before the first reading
constexpr std::uint32_t kLongestSleep = 60;  // seconds: a clock that was set is noticed then
constexpr unsigned int kWakeSlackMs = 200;

}  // namespace

cMBusCounts& cMBusCounts::operator+=(const cMBusCounts& other) {
  due += other.due;
  delivered += other.delivered;
  filtered += other.filtered;
  missing += other.missing;
  incomplete += other.incomplete;
  bytesSent += other.bytesSent;
  bytesReceived += other.bytesReceived;
  content += other.content;
  return *this;
}

cMBusInterface::cMBusInterface(gateway::cServiceHost* host, cMBusSettings settings, const cMode& mode,
                               cInterfaceHost& owner)
    : m_host(host),
      m_settings(std::move(settings)),
      m_mode(mode),
      m_owner(owner),
      m_master(MakeMaster()),
      m_wake(host, [this] { Wake(); }),
      m_next(host, [this] { Next(); }),
      m_begin(host, [this] { Begin(); }) {
  TakeMeters();
  m_begin.Start(kRulesWaitMs);
}

cMBusInterface::~cMBusInterface() { DropMeters(); }

std::unique_ptr<cMBusMaster> cMBusInterface::MakeMaster() {
  cMBusLineSettings line = m_settings.line;
  if (m_settings.simulated) {
    m_bus = std::make_unique<cMBusBus>(
        MakeHouse(m_settings.simulation.meters, m_settings.simulation.seed, line.input.baud));
    m_simulated = std::make_unique<cSimulatedBus>(m_host, *m_bus, cSimulatedBusOptions{});
    line.input.kind = eInputKind::Serial;
    line.input.path = m_simulated->GetDevice();
  }
  auto master = std::make_unique<cMBusMaster>(m_host, line);
  master->onOpen = [this] { OnLineOpen(); };
  master->onLost = [this](const std::string& why) { OnLineLost(why); };
  master->onBytes = [this](bool sent, cBytes bytes) {
    (sent ? m_counts.bytesSent : m_counts.bytesReceived) += bytes.size();
    vorn::Trace(DriverUnit(), 32, m_settings.name, sent ? " > " : " < ", [&] { return HexText(bytes, " "); });
  };
  return master;
}

// ---- meters

void cMBusInterface::TakeMeters() {
  std::vector<unsigned int> intervals;
  for (const cMBusMeter& settings : m_settings.meters) {
    intervals.push_back(settings.intervalSeconds);
    const auto tell = [this, settings](unsigned int count, std::uint32_t first, std::uint32_t last,
                                       const std::string& cause) { TellMissing(settings, count, first, last, cause); };
    m_meters.push_back({settings, {}, cMissingReadings(tell), 0});
  }
  m_schedule = std::make_unique<cPollSchedule>(
      intervals,
      [this](std::size_t meter, std::uint32_t slotBegin, const std::string& cause) { Miss(meter, slotBegin, cause); });
}

// What waits or is under way will not be read: it is not missing, nobody wants it any more.
void cMBusInterface::DropMeters() {
  m_readout.reset();
  m_settled += m_schedule->CountBegun() - m_schedule->CountWaiting() - (m_reading ? 1 : 0);
  m_reading.reset();
  for (cMeter& meter : m_meters) meter.missing.Settle();
  m_meters.clear();
}

void cMBusInterface::Change(const cMBusSettings& settings) {
  const bool sameMeters = settings.meters == m_settings.meters;
  if (!sameMeters) DropMeters();
  m_settings = settings;
  if (sameMeters) return;
  TakeMeters();
  if (m_begun) m_wake.Post();
}

bool cMBusInterface::HasMeter(const std::string& meterId) const {
  return std::any_of(m_meters.begin(), m_meters.end(), [&](const auto& meter) { return meter.settings.id == meterId; });
}

// ---- the schedule

// The rules have come, perhaps, or what was read last is acknowledged.
void cMBusInterface::Feed() {
  if (m_ended) m_owner.OnEnded();
  if (!m_begun && m_mode.rules->IsSettled()) Begin();
}

void cMBusInterface::Begin() {
  if (std::exchange(m_begun, true)) return;
  m_begin.Stop();
  m_wake.Post();
}

void cMBusInterface::Wake() {
  if (m_ended || m_meters.empty()) return;
  const std::uint32_t now = m_mode.now().seconds;
  m_schedule->Advance(now);
  if (!m_mode.once) m_wake.Start(std::min(m_schedule->SecondsToNext(now), kLongestSleep) * 1000, kWakeSlackMs);
  m_next.Post();
}

void cMBusInterface::Next() {
  if (m_ended || m_reading) return;
  m_readout.reset();
  if (m_lost) m_schedule->MissAll("the line is not there: " + m_lostWhy);
  if (!m_open) {
    if (m_lost && m_mode.once && m_begun) End();
    return;
  }
  if (const auto due = m_schedule->Take())
    Read(due->meter, due->slotBegin);
  else if (m_mode.once && m_schedule->CountBegun() != 0)
    End();
}

void cMBusInterface::Read(std::size_t meter, std::uint32_t slotBegin) {
  cMeter& state = m_meters[meter];
  m_reading = {meter, slotBegin};
  m_readout = std::make_unique<cMBusReadout>(
      *m_master, state.link, state.settings.address,
      [this, meter, slotBegin](const cMBusReadoutResult& result) { OnRead(meter, slotBegin, result); });
  m_readout->Start();
}

// ---- readings

// The readout that calls goes with the next turn of the loop.
void cMBusInterface::OnRead(std::size_t meter, std::uint32_t slotBegin, const cMBusReadoutResult& result) {
  m_reading.reset();
  if (result.outcome == eOutcome::Silent && result.frames.empty())
    m_schedule->OnSilent(meter);
  else if (result.outcome != eOutcome::LineLost)
    m_schedule->OnAnswered(meter);
  Take(meter, slotBegin, result);
  m_next.Post();
}

void cMBusInterface::Take(std::size_t meter, std::uint32_t slotBegin, const cMBusReadoutResult& result) {
  cMeter& state = m_meters[meter];
  cMeterRecord reading;
  const cMBusNaming naming{m_mode.rules->Get(), m_mode.keepNames, m_settings.keepUnmapped};
  if (!m_maker.Make(result.frames, state.settings, naming, m_mode.now(), reading))
    return Miss(meter, slotBegin, result.cause.empty() ? "no telegram with values" : result.cause);
  state.missing.Settle();
  const std::string& cause = result.outcome != eOutcome::Answered ? result.cause : m_maker.GetFault();
  if (!cause.empty()) ++m_counts.incomplete;
  if (std::exchange(state.trouble, cause) != cause && !cause.empty())
    Report("reading incomplete", state.settings.Describe() + ": " + cause);
  Deliver(state, reading);
}

void cMBusInterface::Deliver(cMeter& meter, cMeterRecord& reading) {
  ++m_counts.delivered;
  meter.lastReading = reading.GetTimestamp();
  m_owner.OnReading(m_settings.light);
  reading.SetInterfaceInfo(m_settings.name, kProtocol, {});
  if (reading.GetMeasurementEntries().empty())
    ++m_counts.filtered;
  else
    m_owner.Deliver(reading);
}

void cMBusInterface::Miss(std::size_t meter, std::uint32_t slotBegin, const std::string& cause) {
  ++m_counts.missing;
  m_meters[meter].missing.Add(slotBegin, cause);
}

void cMBusInterface::TellMissing(const cMBusMeter& meter, unsigned int count, std::uint32_t first, std::uint32_t last,
                                 const std::string& cause) {
  const std::string span =
      gateway::StatusTime(first) + (count == 1 ? std::string() : " to " + gateway::StatusTime(last));
  const std::string text = std::to_string(count) + (count == 1 ? " reading" : " readings") + " of " + meter.Describe() +
                           ", " + span + ": " + cause;
  vorn::Trace(DriverUnit(), 4, "missing: ", text);
  Report("readings missing", text);
}

// ---- the line

void cMBusInterface::OnLineOpen() {
  m_open = true;
  for (cMeter& meter : m_meters) meter.link.initialised = false;
  if (std::exchange(m_lost, false)) Report("input back", {});
  m_next.Post();
}

void cMBusInterface::OnLineLost(const std::string& why) {
  m_open = false;
  m_lostWhy = why;
  if (!std::exchange(m_lost, true)) {
    vorn::Trace(DriverUnit(), 2, "line lost: ", why);
    Report("input lost", why);
    if (m_mode.once) m_owner.OnFailed(why);
  }
  m_next.Post();
}

void cMBusInterface::Report(const char* event, const std::string& reason) {
  m_owner.Report(MakeInterfaceEvent(kMBusDriver, m_settings.name, event, reason));
}

// ---- the end

void cMBusInterface::End() {
  m_ended = true;
  m_wake.Stop();
  for (cMeter& meter : m_meters) meter.missing.Settle();
  m_owner.OnEnded();
}

void cMBusInterface::Abandon() {
  m_ended = true;
  m_wake.Stop();
  m_readout.reset();
  const std::string cause = "the driver was ended";
  if (const auto reading = std::exchange(m_reading, std::nullopt)) Miss(reading->meter, reading->slotBegin, cause);
  m_schedule->MissAll(cause);
  for (cMeter& meter : m_meters) meter.missing.Settle();
}

// ---- how it is

cMBusCounts cMBusInterface::GetCounts() const {
  cMBusCounts counts = m_counts;
  counts.due = m_settled + m_schedule->CountBegun();
  counts.content = m_maker.GetCounts();
  return counts;
}

void cMBusInterface::Collect(gateway::cStatusValues& values) const {
  const cMBusCounts counts = GetCounts();
  const auto set = [&](const std::string& name, const std::string& value) {
    values.Set(m_settings.name + "." + name, value);
  };
  set("input", m_ended ? "ended" : m_lost ? "lost" : m_open ? "open" : "opening");
  set("bytes-sent", std::to_string(counts.bytesSent));
  set("bytes-received", std::to_string(counts.bytesReceived));
  set("readings-due", std::to_string(counts.due));
  set("readings-missing", std::to_string(counts.missing));
  set("readings-incomplete", std::to_string(counts.incomplete));
  set("values-unmapped", std::to_string(counts.content.unmapped));
  for (std::size_t i = 0; i < m_meters.size(); ++i) {
    const cMeter& meter = m_meters[i];
    const std::string name = meter.settings.id.empty() ? meter.settings.address.ToString() : meter.settings.id;
    if (meter.lastReading != 0) set(name + ".last-reading", gateway::StatusTime(meter.lastReading));
    if (const std::uint32_t since = m_schedule->GetSilentSince(i); since != 0)
      set(name + ".silent-since", gateway::StatusTime(since));
    if (meter.link.answerMs > 0)
      set(name + ".answer-ms", std::to_string(static_cast<unsigned int>(meter.link.answerMs)));
  }
}

}  // namespace tav::mbus
