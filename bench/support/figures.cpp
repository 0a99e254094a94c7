// SPDX-License-Identifier: Apache-2.0
#include <bench/support/figures.h>

#include <time.h>

#include <algorithm>
#include <chrono>
#include <utility>

namespace tav::bench {

namespace {

double MedianRatio(const std::vector<double>& above, const std::vector<double>& below) {
  std::vector<double> ratios;
  for (std::size_t i = 0; i < above.size(); ++i) ratios.push_back(below[i] != 0 ? above[i] / below[i] : 0);
  return Median(std::move(ratios));
}

}  // namespace

double Now() { return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count(); }

double CpuNow() {
  timespec used{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
  return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) / 1e9;
}

double Percentile(std::vector<double> values, double part) {
  if (values.empty()) return 0;
  const auto at = values.begin() + static_cast<std::ptrdiff_t>(part * static_cast<double>(values.size() - 1) + 0.5);
  std::nth_element(values.begin(), at, values.end());
  return *at;
}

// The reporter takes name and unit apart again.
void Report(benchmark::State& state, const std::string& name, double value, const std::string& unit) {
  state.counters[name + " [" + unit + "]"] = value;
}

double cRounds::GetPart() const { return MedianRatio(ours, limit); }

void cRounds::ReportAll(benchmark::State& state, const std::string& name, const std::string& unit,
                        const std::string& ratioName, double ratio) const {
  const std::string before = name.empty() ? "" : name + "_";
  Report(state, name, Median(ours), unit);
  Report(state, before + "limit", Median(limit), unit);
  Report(state, before + ratioName, ratio, "1");
}

void cRounds::ReportCosts(benchmark::State& state, const std::string& name, const std::string& unit) const {
  ReportAll(state, name, unit, "times_limit", MedianRatio(ours, limit));
}

void cRounds::ReportRates(benchmark::State& state, const std::string& name, const std::string& unit) const {
  ReportAll(state, name, unit, "times_limit", MedianRatio(limit, ours));
}

void cRounds::ReportParts(benchmark::State& state, const std::string& name, const std::string& unit) const {
  ReportAll(state, name, unit, "part_of_limit", GetPart());
}

}  // namespace tav::bench
