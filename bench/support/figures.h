// SPDX-License-Identifier: Apache-2.0
// What a benchmark reports, and how a figure is held against its limit.
//
// A slow minute of the machine slows everything that is measured in it. So a thing and its limit are measured in turns,
// in many short rounds; reported are the medians, and the median of the rounds' ratios.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>
#include <vector>

#include <tests/support/allocations.h>

namespace tav::bench {

// Seconds since some moment, of a clock that never jumps.
double Now();
// Seconds of CPU that this process has used.
double CpuNow();

// 0 for no values at all.
double Percentile(std::vector<double> values, double part);
inline double Median(std::vector<double> values) { return Percentile(std::move(values), 0.5); }

// A figure of a benchmark: one line of output "<benchmark>/<name>", of the bare benchmark when the name is empty.
void Report(benchmark::State& state, const std::string& name, double value, const std::string& unit);

// One value a round.
struct cRounds {
  std::vector<double> ours;
  std::vector<double> limit;

  void Add(double our, double limiting) {
    ours.push_back(our);
    limit.push_back(limiting);
  }
  // Median of the part of the limit that is reached.
  double GetPart() const;

  // "<name>", "<name>_limit" and the ratio of both, which is 1 at the limit.
  // Of costs (less is better): how many times the limit.
  void ReportCosts(benchmark::State& state, const std::string& name, const std::string& unit) const;
  // Of rates (more is better): how many times faster the limit is.
  void ReportRates(benchmark::State& state, const std::string& name, const std::string& unit) const;
  // The same, but the ratio is the part of the limit that is reached.
  void ReportParts(benchmark::State& state, const std::string& name, const std::string& unit) const;

 private:
  void ReportAll(benchmark::State& state, const std::string& name, const std::string& unit,
                 const std::string& ratioName, double ratio) const;
};

// ---- work of nanoseconds to microseconds, in time of the CPU: what others do meanwhile does not count

constexpr int kTimedRounds = 101;
constexpr double kTimedRound = 0.001;  // seconds

template <typename Work>
double SecondsOf(const Work& work, std::uint64_t times) {
  const double start = CpuNow();
  for (std::uint64_t i = 0; i < times; ++i) work();
  return CpuNow() - start;
}

// How often a round calls the work.
template <typename Work>
std::uint64_t TimesOf(const Work& work) {
  std::uint64_t times = 1;
  while (SecondsOf(work, times) < kTimedRound) times *= 2;
  return times;
}

// Times both and reports nanoseconds of one of the items that a call deals with.
template <typename Ours, typename Limit>
void CompareTimes(benchmark::State& state, const Ours& ours, const Limit& limit, double ourItems = 1,
                  double limitItems = 1) {
  const std::uint64_t ourTimes = TimesOf(ours);
  const std::uint64_t limitTimes = TimesOf(limit);
  cRounds rounds;
  for (auto _ : state)
    for (int i = 0; i < kTimedRounds; ++i)
      rounds.Add(SecondsOf(ours, ourTimes) * 1e9 / (static_cast<double>(ourTimes) * ourItems),
                 SecondsOf(limit, limitTimes) * 1e9 / (static_cast<double>(limitTimes) * limitItems));
  rounds.ReportCosts(state, "", "ns");
}

// Reports how often the allocator is asked for memory for an item, once the work has been done for a while.
template <typename Work>
void CountAllocations(benchmark::State& state, const Work& work, std::uint64_t times = 1000, double items = 1) {
  SecondsOf(work, times);
  const cAllocations allocations;
  SecondsOf(work, times);
  Report(state, "allocations", static_cast<double>(allocations.Get()) / (static_cast<double>(times) * items), "calls");
}

}  // namespace tav::bench
