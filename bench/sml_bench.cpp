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

#include <bench/sml/bare_scan.h>
#include <bench/support/figures.h>
#include <gateway/driver/capture_bytes.h>
#include <gateway/driver/sml/crc16.h>
#include <gateway/driver/sml/get_list_record.h>
#include <gateway/driver/sml/sml_input.h>
#include <gateway/driver/sml/sml_simulator.h>
#include <tav/framework/trace.h>
#include <tav/record/meter_record.h>

using namespace tav::bench;
using namespace tav::sml;
using tav::cCaptureBytes;
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

// Makes the record of a reading of every list, as the driver hands it over.
class cRecords : public cSmlSink {
 public:
  // A capture may say the same twice; the line about it is not to be measured.
  cRecords() { vorn::cUnit::Find("UnitTAV")->SetLevel(0); }

  void OnList(const cSmlFrame&, const cSmlList& list) override {
    tav::cMeterRecord reading;
    if (reading.FromSmlGetListRes("ehzif", "E", tav::cMeterTav::eTsMeterUtc, 1'767'225'599, ToGetListRecord(list)))
      bytes += reading.ToRecord().GetBytes().size();
    ++lists;
  }
  std::uint64_t bytes = 0;
  std::uint64_t lists = 0;
};

// The whole frames of a capture with both checksums right: the rest is another matter.
void AppendGoodFrames(const fs::path& path, std::string& to) {
  std::ifstream file(path, std::ios::binary);
  const cCaptureBytes capture(std::string(std::istreambuf_iterator<char>(file), {}));
  const cBytes bytes = capture.Get();
  struct cKeep : cSmlSink {
    void OnList(const cSmlFrame& frame, const cSmlList&) override { good->append(bytes + frame.offset, frame.size); }
    const char* bytes = nullptr;
    std::string* good = nullptr;
  } keep;
  keep.bytes = reinterpret_cast<const char*>(bytes.data());
  keep.good = &to;
  const auto reader = std::make_unique<cSmlReader>(keep);
  if (!IsPayload(bytes)) reader->Feed(bytes.data(), bytes.size());
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

// Feeds the stream in blocks of the benchmark's argument, as a serial line brings them; figures are of one frame.
template <typename Sink>
void Feed(benchmark::State& state) {
  static const std::string stream = Stream();
  static const cBareScan bare(stream);
  Sink sink;
  const auto reader = std::make_unique<cSmlReader>(sink);
  const auto block = static_cast<std::size_t>(state.range(0));
  const auto ours = [&] {
    for (std::size_t at = 0; at < stream.size(); at += block)
      reader->Feed(stream.data() + at, std::min(block, stream.size() - at));
    benchmark::DoNotOptimize(sink);
  };
  const auto limit = [&] { benchmark::DoNotOptimize(bare.Scan()); };
  ours();
  if (sink.lists == 0) return state.SkipWithError("the telegrams hold no list");
  const auto frames = static_cast<double>(reader->GetFrameCounts().good);
  CountAllocations(state, ours, 10, frames);
  CompareTimes(state, ours, limit, frames, static_cast<double>(bare.CountFrames()));
  Report(state, "size", static_cast<double>(stream.size()) / frames, "B");
}
BENCHMARK(Feed<cSum>)->Name("sml/to_values")->Arg(4096)->Arg(256)->Arg(1)->Iterations(1);
BENCHMARK(Feed<cRecords>)->Name("sml/to_reading")->Arg(256)->Iterations(1);

void Checksum(benchmark::State& state) {
  const std::string frame = SimulatedFrames().substr(0, static_cast<std::size_t>(state.range(0)));
  const cBytes bytes(reinterpret_cast<const std::uint8_t*>(frame.data()), frame.size());
  for (auto _ : state) benchmark::DoNotOptimize(Crc16X25(bytes));
}
BENCHMARK(Checksum)->Name("sml/checksum")->Arg(20)->Arg(250)->Arg(4096)->MinTime(0.1);

}  // namespace
