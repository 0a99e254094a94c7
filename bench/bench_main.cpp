// SPDX-License-Identifier: Apache-2.0
// The main function of every benchmark: Google Benchmark's options, and one line of JSON a figure as its output.
#include <benchmark/benchmark.h>

#include <cstdio>

namespace {

class cLineReporter : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }

  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.error_occurred) {
        std::printf(R"({"name":"%s","error":"%s"})", run.benchmark_name().c_str(), run.error_message.c_str());
      } else {
        std::printf(R"({"name":"%s","ns":%.1f,"cpu_ns":%.1f)", run.benchmark_name().c_str(), NanosecondsOf(run, false),
                    NanosecondsOf(run, true));
        for (const auto& [name, counter] : run.counters) std::printf(R"(,"%s":%g)", name.c_str(), counter.value);
        std::printf("}");
      }
      std::printf("\n");
    }
    std::fflush(stdout);
  }

 private:
  static double NanosecondsOf(const Run& run, bool cpu) {
    const double time = cpu ? run.GetAdjustedCPUTime() : run.GetAdjustedRealTime();
    return time / benchmark::GetTimeUnitMultiplier(run.time_unit) * 1e9;
  }
};

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  cLineReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  return 0;
}
