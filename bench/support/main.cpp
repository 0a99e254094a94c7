// SPDX-License-Identifier: Apache-2.0
// The main function of every benchmark: the options of Google Benchmark, and one line of JSON a figure unless one of
// its own formats is asked for.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <sstream>
#include <string_view>

#include <bench/support/line_reporter.h>

namespace {

// A program that hangs is ended, and its children with it.
constexpr unsigned int kMostSeconds = 300;

}  // namespace

int main(int argc, char** argv) {
  const bool formatted = std::any_of(
      argv, argv + argc, [](std::string_view argument) { return argument.substr(0, 18) == "--benchmark_format"; });
  alarm(kMostSeconds);
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  if (formatted) return benchmark::RunSpecifiedBenchmarks() == 0;
  tav::bench::cLineReporter reporter;
  // A filter is given to every program; that it fits none of this one's benchmarks is nothing to complain about.
  std::ostringstream complaints;
  reporter.SetErrorStream(&complaints);
  benchmark::RunSpecifiedBenchmarks(&reporter);
  return reporter.HasFailed() ? 1 : 0;
}
