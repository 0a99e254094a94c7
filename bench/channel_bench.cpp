// SPDX-License-Identifier: Apache-2.0
// Readings between two processes over a channel, against a bare socket that carries the same bytes, in turns.
#include <benchmark/benchmark.h>

#include <bench/channel/raw_link.h>
#include <bench/channel/vorn_link.h>
#include <bench/support/figures.h>
#include <bench/support/placement.h>
#include <tests/support/temp_folder.h>

using namespace tav::bench;

namespace {

constexpr int kRounds = 31;
constexpr int kRoundTrips = 1000;        // of one round
constexpr double kStreamSeconds = 0.03;  // of one round
constexpr unsigned int kWindow = 50;

// What one round of a link has given.
struct cResult {
  double median = 0;
  double p99 = 0;
  double rate = 0;
  double cpu = 0;  // microseconds a message, of both processes
};

double CpuOf(const cLink& link) { return CpuNow() + CpuSeconds(link.GetServer()); }

bool TakeRoundTrips(cLink& link, cResult& result) {
  std::vector<double> times;
  const double cpu = CpuOf(link);
  for (std::uint64_t number = 1; number <= kRoundTrips; ++number) {
    const double start = Now();
    if (!link.RoundTrip(number)) return false;
    times.push_back((Now() - start) * 1e6);
  }
  result.cpu = (CpuOf(link) - cpu) * 1e6 / kRoundTrips;
  result.median = Median(times);
  result.p99 = Percentile(times, 0.99);
  return true;
}

bool TakeStream(cLink& link, cResult& result) {
  const double cpu = CpuOf(link);
  const double start = Now();
  const auto messages = static_cast<double>(link.Stream(kWindow, start + kStreamSeconds));
  if (messages == 0) return false;
  result.rate = messages / (Now() - start);
  result.cpu = (CpuOf(link) - cpu) * 1e6 / messages;
  return true;
}

class cLinks {
 public:
  explicit cLinks(ePlace place) : m_placement(place), m_vorn(m_folder.GetPath()), m_raw(m_folder.GetPath()) {}

  // Rounds of both in turns; the first ones warm up. False when a message was lost.
  template <typename Take, typename Add>
  bool Measure(const Take& take, const Add& add) {
    if (!m_vorn.IsConnected() || !m_raw.IsConnected()) return false;
    for (int round = 0; round < kRounds; ++round) {
      cResult ours, limit;
      if (!take(m_vorn, ours) || !take(m_raw, limit)) return false;
      if (round > 1) add(ours, limit);
    }
    return true;
  }

 private:
  cTempFolder m_folder;
  cPlacement m_placement;
  cVornLink m_vorn;
  cRawLink m_raw;
};

void RoundTrip(benchmark::State& state, ePlace place) {
  cLinks links(place);
  cRounds medians, p99s, cpus;
  const auto add = [&](const cResult& ours, const cResult& limit) {
    medians.Add(ours.median, limit.median);
    p99s.Add(ours.p99, limit.p99);
    cpus.Add(ours.cpu, limit.cpu);
  };
  for (auto _ : state)
    if (!links.Measure(TakeRoundTrips, add)) state.SkipWithError("an answer is missing");
  medians.ReportCosts(state, "", "us");
  p99s.ReportCosts(state, "p99", "us");
  cpus.ReportCosts(state, "cpu", "us");
}
BENCHMARK_CAPTURE(RoundTrip, , ePlace::OneCore)->Name("channel/round_trip/one_core")->Iterations(1);
BENCHMARK_CAPTURE(RoundTrip, , ePlace::Free)->Name("channel/round_trip/free")->Iterations(1);

void Stream(benchmark::State& state, ePlace place) {
  cLinks links(place);
  cRounds rates, cpus;
  const auto add = [&](const cResult& ours, const cResult& limit) {
    rates.Add(ours.rate, limit.rate);
    cpus.Add(ours.cpu, limit.cpu);
  };
  for (auto _ : state)
    if (!links.Measure(TakeStream, add)) state.SkipWithError("a message was lost");
  rates.ReportRates(state, "", "1/s");
  cpus.ReportCosts(state, "cpu", "us");
}
BENCHMARK_CAPTURE(Stream, , ePlace::OneCore)->Name("channel/stream_50/one_core")->Iterations(1);
BENCHMARK_CAPTURE(Stream, , ePlace::Free)->Name("channel/stream_50/free")->Iterations(1);

}  // namespace
