// SPDX-License-Identifier: Apache-2.0
// The road of a reading: from drivers, each a process, through tav-gateway to committed rows, acknowledged; against
// bare SQLite that writes the same rows in transactions of the same size. All on one core: that is what it costs.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <bench/road/bare_store.h>
#include <bench/road/load.h>
#include <bench/support/figures.h>
#include <bench/support/placement.h>
#include <bench/support/sample_reading.h>
#include <gateway/service/data/storage/reading_view.h>
#include <tests/support/temp_folder.h>

using namespace tav::bench;
using tav::data::eDurability;

namespace {

constexpr int kRounds = 5;
constexpr double kBareSeconds = 0.2;  // of one round
constexpr unsigned int kLoadMs = 300;
constexpr unsigned int kWarmUpMs = 50;
constexpr unsigned int kIdleMs = 300;  // longer than the service waits before it calls itself idle
constexpr unsigned int kStart = 1'700'000'000;
constexpr unsigned int kMostOfRound = 10'000'000;  // readings of one driver

struct cResult {
  double rate = 0;        // readings a second
  double cpu = 0;         // microseconds a reading, of all processes
  double serviceCpu = 0;  // of the service alone
};

cResult Over(double readings, double seconds, double cpu, double serviceCpu) {
  return {readings / seconds, cpu * 1e6 / readings, serviceCpu * 1e6 / readings};
}

cResult TakeBare(cBareStore& store, const cLoadShape& shape) {
  const double start = Now();
  const double cpu = CpuNow();
  double readings = 0;
  for (; Now() < start + kBareSeconds; readings += shape.drivers * shape.window)
    store.Store(shape.drivers, shape.window);
  const cResult result = Over(readings, Now() - start, CpuNow() - cpu, 0);
  store.Checkpoint();
  return result;
}

// False when the service or a driver did not do its work.
bool TakeLoad(const std::string& directory, const cChild& service, const cLoadShape& shape, int round,
              cResult& result) {
  const cLoad load(directory, shape, kStart + static_cast<unsigned int>(round) * kMostOfRound);
  usleep(kWarmUpMs * 1000);
  const double start = Now();
  const double serviceCpu = CpuSeconds(service.GetPid());
  const double driverCpu = load.GetCpu();
  const auto before = static_cast<double>(load.GetAcknowledged());
  usleep(kLoadMs * 1000);
  const double readings = static_cast<double>(load.GetAcknowledged()) - before;
  const double used = CpuSeconds(service.GetPid()) - serviceCpu;
  result = Over(readings, Now() - start, used + load.GetCpu() - driverCpu, used);
  return load.IsRunning() && readings > 0;
}

void Road(benchmark::State& state, eDurability durability, cLoadShape shape) {
  const cTempFolder folder;
  const cPlacement placement(ePlace::OneCore);
  cBareStore bare(folder.File("bare.db"), durability, 1);
  cBareStore batched(folder.File("batched.db"), durability, cBareStore::kValues);
  const cChild service({TAV_GATEWAY, "data", "--dir", folder.GetPath(), "--durability",
                        durability == eDurability::Full ? "full" : "normal"});
  cRounds rates, batchedRates, cpus, batchedCpus;
  std::vector<double> serviceCpus;
  for (auto _ : state)
    for (int round = 0; round < kRounds; ++round) {
      cResult ours;
      const cResult limit = TakeBare(bare, shape);
      const cResult batchedLimit = TakeBare(batched, shape);
      if (!TakeLoad(folder.GetPath(), service, shape, round, ours)) return state.SkipWithError("a driver was refused");
      if (!AwaitRest(service.GetPid(), kIdleMs)) return state.SkipWithError("the service did not come to rest");
      rates.Add(ours.rate, limit.rate);
      batchedRates.Add(ours.rate, batchedLimit.rate);
      cpus.Add(ours.cpu, limit.cpu);
      batchedCpus.Add(ours.cpu, batchedLimit.cpu);
      serviceCpus.push_back(ours.serviceCpu);
    }
  rates.ReportParts(state, "", "1/s");
  Report(state, "part_of_batched", batchedRates.GetPart(), "1");
  cpus.ReportCosts(state, "cpu", "us");
  Report(state, "cpu_batched", Median(batchedCpus.limit), "us");
  Report(state, "cpu_service", Median(serviceCpus), "us");
}

// Name, drivers, window, whole window in one message.
#define ROAD(name, ...)                                                                                    \
  BENCHMARK_CAPTURE(Road, , eDurability::Normal, {__VA_ARGS__})->Name("road/normal/" name)->Iterations(1); \
  BENCHMARK_CAPTURE(Road, , eDurability::Full, {__VA_ARGS__})->Name("road/full/" name)->Iterations(1)
ROAD("1_driver/1_in_flight", 1, 1);
ROAD("1_driver/50_in_flight", 1, 50);
ROAD("1_driver/50_in_one_message", 1, 50, true);
ROAD("8_drivers/1_in_flight", 8, 1);
ROAD("8_drivers/50_in_flight", 8, 50);
ROAD("64_drivers/1_in_flight", 64, 1);
#undef ROAD

// ---- on disk

constexpr unsigned int kStored = 100'000;
constexpr unsigned int kGroup = 50;

bool StoreSamples(tav::data::cDataStore& store) {
  tav::data::cReadingView view;
  for (unsigned int number = 0; number < kStored;) {
    const tav::data::cFault fault = store.Write([&](tav::data::cTables& tables) {
      for (const unsigned int end = number + kGroup; number < end; ++number) {
        const vorn::cRecord record = SampleMeterRecord("1EMH0012345678", number).ToRecord();
        if (view.Read(record)) tables.readings.Add(view);
      }
    });
    if (fault) return false;
  }
  return !store.Checkpoint() && store.GetWalBytes() != 0;
}

void Disk(benchmark::State& state) {
  const cTempFolder folder;
  unsigned char packed[kMaxPacked];
  for (auto _ : state) {
    tav::data::cDataStore store({folder.File("tav.db"), eDurability::Normal});
    if (store.Open() || !StoreSamples(store)) return state.SkipWithError("the readings cannot be stored");
    Report(state, "", static_cast<double>(store.GetFileBytes()) / kStored, "B");
  }
  const cReading reading = SampleReading();
  Report(state, "packed", static_cast<double>(WritePacked(reading, packed)), "B");
  Report(state, "record", static_cast<double>(SampleMeterRecord(reading.meter, 1).ToRecord().GetBytes().size()), "B");
}
BENCHMARK(Disk)->Name("road/disk")->Iterations(1);

}  // namespace
