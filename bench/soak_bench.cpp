// SPDX-License-Identifier: Apache-2.0
// Two hundred clients of the status and OBIS services that change, remove, break and come back for half a minute: what
// the gateway's memory does meanwhile, and how long it takes until all know the same.
#include <benchmark/benchmark.h>

#include <bench/footprint/memory.h>
#include <bench/support/child.h>
#include <bench/support/figures.h>
#include <tests/support/soak_world.h>
#include <tests/support/temp_folder.h>

using namespace tav::bench;

namespace {

constexpr unsigned int kClients = 200;
constexpr unsigned int kPerSecond = 300;
constexpr int kRounds = 10;
constexpr std::chrono::seconds kRound{3};

void Soak(benchmark::State& state) {
  const cTempFolder folder;
  const cChild gateway({TAV_GATEWAY, "run", "--no-web", "--dir", folder.GetPath(), "--trace", "2"});
  cSoakWorld world(folder.GetPath(), kClients, 4711);
  if (!gateway.IsReady() || !world.Connect() || !world.WarmUp())
    return state.SkipWithError("the clients do not all connect, or do not agree");
  std::vector<double> resident;
  std::vector<double> converged;
  const double cpu = CpuSeconds(gateway.GetPid());
  for (auto _ : state)
    for (int round = 0; round < kRounds; ++round) {
      world.Churn(kRound, kPerSecond);
      const double end = Now();
      if (!world.Converge()) return state.SkipWithError("the copies do not become equal");
      converged.push_back((Now() - end) * 1000);
      resident.push_back(MemoryOf(gateway.GetPid()).resident);
    }
  const double seconds = kRounds * static_cast<double>(kRound.count());
  Report(state, "changes", static_cast<double>(world.GetCounts().changes), "1");
  Report(state, "breaks", static_cast<double>(world.GetCounts().breaks), "1");
  Report(state, "converged", Median(converged), "ms");
  Report(state, "converged_worst", Percentile(converged, 1), "ms");
  Report(state, "resident_first", resident.front(), "KiB");
  Report(state, "resident_middle", resident[resident.size() / 2], "KiB");
  Report(state, "resident_last", resident.back(), "KiB");
  Report(state, "gateway_cpu", (CpuSeconds(gateway.GetPid()) - cpu) / seconds * 100, "%");
}
BENCHMARK(Soak)->Name("soak/200_clients")->Iterations(1)->Unit(benchmark::kSecond);

}  // namespace
