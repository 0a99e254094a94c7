// SPDX-License-Identifier: Apache-2.0
// SML to values, both checksums verified: over the captured telegrams that TAV_TELEGRAMS names, else over simulated
// ones.
#include <gateway/driver/sml/sml_reader.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include <gateway/driver/sml/get_list_record.h>
#include <gateway/driver/sml/sml_input.h>
#include <gateway/driver/sml/sml_simulator.h>
#include <tests/support/allocations.h>

using namespace tav::sml;
namespace fs = std::filesystem;

namespace {

// Takes every value of every list in hand.
class cSum : public cSmlSink {
 public:
  void OnList(const cSmlFrame&, const cSmlList& list) override {
    for (const cSmlEntry& entry : list.entries)
      sum +=
          entry.obis + entry.value.bits + entry.value.octets.size() + entry.scaler.value_or(0) + entry.unit.value_or(0);
    ++lists;
  }
  std::uint64_t sum = 0;
  std::uint64_t lists = 0;
};

class cRecords : public cSmlSink {
 public:
  void OnList(const cSmlFrame&, const cSmlList& list) override {
    bytes += ToGetListRecord(list).GetBytes().size();
    ++lists;
  }
  std::uint64_t bytes = 0;
  std::uint64_t lists = 0;
};

// The whole frames of a capture with both checksums right: the rest is another matter.
void AppendGoodFrames(const fs::path& path, std::string& to) {
  std::ifstream file(path, std::ios::binary);
  const cSmlInput input(std::string(std::istreambuf_iterator<char>(file), {}));
  struct cKeep : cSmlSink {
    void OnList(const cSmlFrame& frame, const cSmlList&) override { good->append(bytes + frame.offset, frame.size); }
    const char* bytes = nullptr;
    std::string* good = nullptr;
  } keep;
  keep.bytes = reinterpret_cast<const char*>(input.GetBytes().data());
  keep.good = &to;
  const auto reader = std::make_unique<cSmlReader>(keep);
  if (!input.IsPayload()) reader->Feed(input.GetBytes().data(), input.GetBytes().size());
}

std::string SimulatedFrames() {
  cSmlSimulatorOptions options;
  options.publicKey = true;
  cSmlSimulator simulator(options);
  std::string stream;
  for (std::uint32_t i = 0; i < 200; ++i) stream += simulator.Telegram(options.begin + 10 * i);
  return stream;
}

std::string Stream() {
  const char* const folder = std::getenv("TAV_TELEGRAMS");
  if (folder == nullptr) return SimulatedFrames();
  std::vector<fs::path> files;
  for (const fs::directory_entry& entry : fs::directory_iterator(fs::path(folder) / "sml"))
    if (entry.path().extension() == ".bin" || entry.path().extension() == ".hex") files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  std::string stream;
  for (const fs::path& file : files) AppendGoodFrames(file, stream);
  return stream;
}

// Feeds the stream in blocks of the benchmark's argument, 0 for all at once.
template <typename Sink>
void Feed(benchmark::State& state, const std::string& stream) {
  Sink sink;
  const auto reader = std::make_unique<cSmlReader>(sink);
  const std::size_t block = state.range(0) != 0 ? static_cast<std::size_t>(state.range(0)) : stream.size();
  const cAllocations allocations;
  for (auto _ : state) {
    for (std::size_t at = 0; at < stream.size(); at += block)
      reader->Feed(stream.data() + at, std::min(block, stream.size() - at));
    benchmark::DoNotOptimize(sink);
  }
  state.counters["allocations_per_frame"] = static_cast<double>(allocations.Get()) / static_cast<double>(sink.lists);
  state.counters["frames"] = benchmark::Counter(static_cast<double>(sink.lists), benchmark::Counter::kIsRate);
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(stream.size()));
}

void SmlToValues(benchmark::State& state) {
  static const std::string stream = Stream();
  Feed<cSum>(state, stream);
}
BENCHMARK(SmlToValues)->Arg(0)->Arg(4096)->Arg(256)->Arg(64)->Arg(1);

void SmlToRecord(benchmark::State& state) {
  static const std::string stream = Stream();
  Feed<cRecords>(state, stream);
}
BENCHMARK(SmlToRecord)->Arg(256);

void SmlChecksum(benchmark::State& state) {
  const std::string frame = SimulatedFrames().substr(0, static_cast<std::size_t>(state.range(0)));
  const cBytes bytes(reinterpret_cast<const std::uint8_t*>(frame.data()), frame.size());
  for (auto _ : state) benchmark::DoNotOptimize(Crc16X25(bytes));
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(frame.size()));
}
BENCHMARK(SmlChecksum)->Arg(20)->Arg(250)->Arg(4096);

}  // namespace
