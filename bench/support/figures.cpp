// SPDX-License-Identifier: Apache-2.0
#include <bench/support/figures.h>

#include <algorithm>
#include <chrono>

namespace tav::bench {

double Now() { return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count(); }

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

void cRounds::ReportAll(benchmark::State& state, const std::string& name, const std::string& unit,
                        const std::string& ratio, const std::vector<double>& above,
                        const std::vector<double>& below) const {
  const std::string before = name.empty() ? "" : name + "_";
  std::vector<double> ratios;
  for (std::size_t i = 0; i < ours.size(); ++i) ratios.push_back(below[i] != 0 ? above[i] / below[i] : 0);
  Report(state, name, Median(ours), unit);
  Report(state, before + "limit", Median(limit), unit);
  Report(state, before + ratio, Median(ratios), "1");
}

void cRounds::ReportCosts(benchmark::State& state, const std::string& name, const std::string& unit) const {
  ReportAll(state, name, unit, "times_limit", ours, limit);
}

void cRounds::ReportRates(benchmark::State& state, const std::string& name, const std::string& unit) const {
  ReportAll(state, name, unit, "times_limit", limit, ours);
}

void cRounds::ReportParts(benchmark::State& state, const std::string& name, const std::string& unit) const {
  ReportAll(state, name, unit, "part_of_limit", ours, limit);
}

}  // namespace tav::bench
