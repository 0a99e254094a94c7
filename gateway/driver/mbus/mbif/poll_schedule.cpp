// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/mbif/poll_schedule.h>

#include <algorithm>

#include <gateway/host/status_publisher.h>

namespace tav::mbus {

cPollSchedule::cPollSchedule(const std::vector<unsigned int>& intervals, Missed onMissed)
    : m_onMissed(std::move(onMissed)) {
  for (const unsigned int interval : intervals) m_meters.emplace_back().interval = std::max(interval, 1u);
}

void cPollSchedule::Advance(std::uint32_t utc) {
  for (std::size_t i = 0; i < m_meters.size(); ++i) {
    const std::uint32_t slot = utc / m_meters[i].interval;
    if (m_meters[i].slot != slot) Begin(i, slot);
  }
}

// A clock that was set is in another slot; how many lie between tells nothing.
void cPollSchedule::Begin(std::size_t meter, std::uint32_t slot) {
  cMeter& state = m_meters[meter];
  if (state.waits) Miss(meter, "the bus was busy with other meters until the next one was due");
  state.slot = slot;
  ++m_begun;
  if (state.skip > 0) {
    --state.skip;
    Miss(meter, "not asked, as it has not answered since " + gateway::StatusTime(state.silentSince));
  } else if (!state.waits) {
    state.waits = true;
    m_waiting.push_back(meter);
  }
}

void cPollSchedule::Miss(std::size_t meter, const std::string& cause) {
  m_onMissed(meter, *m_meters[meter].slot * m_meters[meter].interval, cause);
}

std::optional<cPollSchedule::cDue> cPollSchedule::Take() {
  if (m_waiting.empty()) return std::nullopt;
  const std::size_t meter = m_waiting.front();
  m_waiting.pop_front();
  m_meters[meter].waits = false;
  return cDue{meter, *m_meters[meter].slot * m_meters[meter].interval};
}

void cPollSchedule::OnAnswered(std::size_t meter) {
  m_meters[meter].silent = m_meters[meter].skip = 0;
  m_meters[meter].silentSince = 0;
}

// After the second slot without an answer one is left out, then three, then seven.
void cPollSchedule::OnSilent(std::size_t meter) {
  cMeter& state = m_meters[meter];
  if (state.silent++ == 0) state.silentSince = *state.slot * state.interval;
  const unsigned int most = kLongestSkip / state.interval;
  const unsigned int doubled = state.silent > 12 ? most : (1u << (state.silent - 1)) - 1;
  state.skip = std::min(doubled, most);
}

void cPollSchedule::MissAll(const std::string& cause) {
  for (const std::size_t meter : m_waiting) {
    m_meters[meter].waits = false;
    Miss(meter, cause);
  }
  m_waiting.clear();
}

std::uint32_t cPollSchedule::SecondsToNext(std::uint32_t utc) const {
  std::uint32_t least = ~0u;
  for (const cMeter& meter : m_meters) least = std::min(least, meter.interval - utc % meter.interval);
  return least;
}

}  // namespace tav::mbus
