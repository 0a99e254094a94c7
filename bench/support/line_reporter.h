// SPDX-License-Identifier: Apache-2.0
// cLineReporter: one line of JSON a figure, {"bench":"record/write","value":87.6,"unit":"ns"}.
//
// The time of a benchmark is a figure of its own unless the benchmark reports one of its bare name.
#pragma once

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

namespace tav::bench {

class cLineReporter : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context&) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override;
  // Whether a benchmark could not do its work.
  bool HasFailed() const { return m_failed; }

 private:
  void ReportRun(const Run& run);

  bool m_failed = false;
};

}  // namespace tav::bench
