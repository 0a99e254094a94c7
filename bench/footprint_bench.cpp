// SPDX-License-Identifier: Apache-2.0
// What an idle driver costs a gateway: memory, threads, the time until it is registered; and the size of the libraries.
// The limit is a program of C++ that does nothing but connect and get an answer.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <set>

#include <bench/footprint/library_size.h>
#include <bench/footprint/memory.h>
#include <bench/footprint/starts.h>
#include <bench/support/figures.h>
#include <tests/support/temp_folder.h>

using namespace tav::bench;

namespace {

constexpr int kStarts = 31;
constexpr unsigned int kRestMs = 100;

void DriverStart(benchmark::State& state) {
  const cTempFolder folder;
  cDriverStarts drivers(folder.GetPath());
  cBareStarts bares(folder.GetPath());
  cRounds starts;
  for (auto _ : state)
    for (int round = 0; round < kStarts; ++round) {
      const double ours = drivers.Start();
      const double limit = bares.Start();
      if (ours < 0 || limit < 0) return state.SkipWithError("a program did not come up");
      if (round > 0) starts.Add(ours, limit);
    }
  starts.ReportCosts(state, "", "ms");
}
BENCHMARK(DriverStart)->Name("footprint/driver_start")->Iterations(1);

void IdleDriver(benchmark::State& state) {
  const cTempFolder folder;
  cDriverStarts drivers(folder.GetPath());
  cBareStarts bares(folder.GetPath());
  for (auto _ : state)
    if (drivers.Start() < 0 || bares.Start() < 0) return state.SkipWithError("a program did not come up");
  if (!AwaitRest(drivers.GetDriver(), kRestMs) || !AwaitRest(bares.GetClient(), kRestMs))
    return state.SkipWithError("a program did not come to rest");
  const cMemory ours = MemoryOf(drivers.GetDriver());
  const cMemory limit = MemoryOf(bares.GetClient());
  Report(state, "", ours.resident, "KiB");
  Report(state, "limit", limit.resident, "KiB");
  Report(state, "anonymous", ours.anonymous, "KiB");
  Report(state, "anonymous_limit", limit.anonymous, "KiB");
  Report(state, "threads", ours.threads, "1");
}
BENCHMARK(IdleDriver)->Name("footprint/idle_driver")->Iterations(1);

void Libraries(benchmark::State& state) {
  const cTempFolder folder;
  std::set<std::string> files{VORN_LIBRARY, TAV_LIBRARY};
  for (auto _ : state)
    for (const char* library : {VORN_LIBRARY, TAV_LIBRARY})
      for (const std::string& loaded : LoadedBy(library)) files.insert(std::filesystem::weakly_canonical(loaded));
  double all = 0;
  for (const std::string& file : files) {
    const double size = StrippedSize(file, folder.GetPath());
    if (size < 0) return state.SkipWithError(("the size of '" + file + "' cannot be told").c_str());
    Report(state, std::filesystem::path(file).filename(), size / 1024, "KiB");
    all += size;
  }
  Report(state, "", all / 1024, "KiB");
}
BENCHMARK(Libraries)->Name("footprint/libraries")->Iterations(1);

}  // namespace
