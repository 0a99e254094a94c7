// SPDX-License-Identifier: Apache-2.0
#include <bench/support/line_reporter.h>

#include <cstdio>

namespace tav::bench {

namespace {

void Print(const std::string& name, double value, const std::string& unit) {
  std::printf("{\"bench\":\"%s\",\"value\":%.6g,\"unit\":\"%s\"}\n", name.c_str(), value, unit.c_str());
}

// Counters of the bench library itself come without a unit.
std::string UnitOf(const std::string& counter, bool rate) {
  if (counter == "bytes_per_second") return "B/s";
  return rate ? "1/s" : "1";
}

void PrintCounter(const std::string& bench, const std::string& text, const benchmark::Counter& counter) {
  const std::size_t bracket = text.find(" [");
  const std::string name = text.substr(0, bracket);
  const std::string unit = bracket == std::string::npos
                               ? UnitOf(text, (counter.flags & benchmark::Counter::kIsRate) != 0)
                               : text.substr(bracket + 2, text.size() - bracket - 3);
  Print(name.empty() ? bench : bench + "/" + name, counter.value, unit);
}

bool HasOwnFigure(const benchmark::UserCounters& counters) {
  const auto first = counters.lower_bound(" [");
  return first != counters.end() && first->first.rfind(" [", 0) == 0;
}

}  // namespace

void cLineReporter::ReportRuns(const std::vector<Run>& runs) {
  for (const Run& run : runs) ReportRun(run);
  std::fflush(stdout);
}

void cLineReporter::ReportRun(const Run& run) {
  const std::string bench = run.run_name.function_name + (run.run_name.args.empty() ? "" : "/" + run.run_name.args);
  if (run.error_occurred) {
    m_failed = true;
    std::fprintf(stderr, "%s: %s\n", bench.c_str(), run.error_message.c_str());
    return;
  }
  if (!HasOwnFigure(run.counters)) Print(bench, run.GetAdjustedRealTime(), benchmark::GetTimeUnitString(run.time_unit));
  for (const auto& [name, counter] : run.counters) PrintCounter(bench, name, counter);
}

}  // namespace tav::bench
