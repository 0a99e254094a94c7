// SPDX-License-Identifier: Apache-2.0
// M-Bus to values, frames, headers and all records: over the captured telegrams that TAV_TELEGRAMS names, else over
// telegrams put together here.
#include <gateway/driver/mbus/reader/mbus_reader.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <numeric>
#include <string>
#include <vector>

#include <bench/support/figures.h>
#include <gateway/driver/capture_bytes.h>
#include <gateway/driver/mbus/reader/mbus_framer.h>
#include <gateway/driver/mbus/reader/mbus_text.h>

using namespace tav::bench;
using namespace tav::mbus;
namespace fs = std::filesystem;

namespace {

using cFrame = std::vector<std::uint8_t>;

// Takes every value in hand.
struct cValues {
  void Take(const cMBusRecord& record) {
    const cMBusValue& value = record.value;
    sum += value.magnitude + static_cast<std::uint64_t>(value.power) + value.time.day + record.storage +
           record.meaning.unit + static_cast<std::uint64_t>(record.meaning.scaler) + record.data.size();
  }
  std::uint64_t sum = 0;
};

// Makes the exact decimal of every number, in the unit that quantities are compared in.
struct cTexts {
  void Take(const cMBusRecord& record) {
    const cBaseValue base = BaseValue(record);
    sum += base.value.size() + base.unit.size();
  }
  std::uint64_t sum = 0;
};

// False for what is no answer with records that can be read to their end.
template <typename Sink>
bool Read(cBytes bytes, cMBusReader& reader, Sink& sink, std::uint64_t& records) {
  cMBusFrame frame;
  cMBusTelegram telegram;
  cMBusFault fault;
  if (ReadFrame(bytes, frame, fault) != eFrameWhole || !ReadTelegram(frame, telegram, fault)) return false;
  reader.Begin(telegram);
  for (cMBusRecord record; reader.Next(record); ++records) sink.Take(record);
  return !reader.HasFault();
}

cFrame LongFrame(cBytes fields) {
  cFrame frame = {kLongStart, static_cast<std::uint8_t>(fields.size()), static_cast<std::uint8_t>(fields.size()),
                  kLongStart};
  frame.insert(frame.end(), fields.begin(), fields.end());
  frame.push_back(Checksum(fields));
  frame.push_back(kStop);
  return frame;
}

// Of a heat meter and of an electricity meter, as they usually answer.
std::vector<cFrame> MadeFrames() {
  std::vector<cFrame> frames;
  for (const char* fields :
       {"08 05 72 46 01 95 44 18 4E 34 04 54 10 00 00 0C 06 12 34 56 00 0C 13 27 04 85 02 0B 2D 34 12 00 0B 3B 45 23 01"
        " 0A 5A 45 06 0A 5E 23 04 0B 61 22 02 00 04 6D 1D 0D 98 11 02 27 12 03 09 FD 0E 10 4C 06 11 22 33 00 42 6C 9F "
        "2C"
        " 9B 10 3B 45 23 01 8C 10 06 00 00 00 00",
        "08 17 72 78 56 34 12 42 04 20 02 01 00 00 00 0E 84 00 12 34 56 78 90 00 04 A9 FF 81 00 10 27 00 00 02 FD C8 FF"
        " 81 00 E6 08 02 FD C8 FF 82 00 E7 08 03 FD D9 FF 81 00 10 20 00 04 2A 10 27 00 00 05 2B 00 00 C0 3F 0F 01 "
        "02"}) {
    const tav::cCaptureBytes bytes(fields);
    frames.push_back(LongFrame(bytes.Get()));
  }
  return frames;
}

// The answers among captured telegrams.
std::vector<cFrame> CapturedFrames(const char* folder) {
  std::vector<fs::path> files;
  for (const fs::directory_entry& entry : fs::recursive_directory_iterator(fs::path(folder) / "mbus"))
    if (entry.path().extension() == ".hex") files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  std::vector<cFrame> frames;
  for (const fs::path& path : files) {
    std::ifstream file(path, std::ios::binary);
    const tav::cCaptureBytes capture(std::string(std::istreambuf_iterator<char>(file), {}));
    cMBusReader reader;
    cValues values;
    std::uint64_t records = 0;
    if (Read(capture.Get(), reader, values, records) && records != 0)
      frames.emplace_back(capture.Get().begin(), capture.Get().end());
  }
  return frames;
}

// Figures are of one frame; the limit is a loop that adds up its bytes, as the checksum needs it.
template <typename Sink>
void Measure(benchmark::State& state, const std::vector<cFrame>& frames) {
  Sink sink;
  cMBusReader reader;
  std::uint64_t records = 0;
  bool isGood = true;
  const auto ours = [&] {
    for (const cFrame& frame : frames) isGood = Read(frame, reader, sink, records) && isGood;
    benchmark::DoNotOptimize(sink);
  };
  const auto limit = [&] {
    for (const cFrame& frame : frames) benchmark::DoNotOptimize(std::accumulate(frame.begin(), frame.end(), 0u));
  };
  ours();
  if (!isGood || records == 0) return state.SkipWithError("a telegram could not be read");
  const auto count = static_cast<double>(frames.size());
  const double size = std::accumulate(frames.begin(), frames.end(), 0.0, [](double sum, const cFrame& frame) {
    return sum + static_cast<double>(frame.size());
  });
  CountAllocations(state, ours, 100, static_cast<double>(records));
  CompareTimes(state, ours, limit, count, count);
  const std::uint64_t times = TimesOf(ours);
  const double seconds = SecondsOf(ours, 8 * times) / static_cast<double>(8 * times);
  Report(state, "frames", count / seconds, "1/s");
  Report(state, "bytes", size / seconds / 1e6, "MB/s");
  Report(state, "size", size / count, "B");
}

template <typename Sink>
void Made(benchmark::State& state) {
  Measure<Sink>(state, MadeFrames());
}
BENCHMARK(Made<cValues>)->Name("mbus/to_values")->Iterations(1);
BENCHMARK(Made<cTexts>)->Name("mbus/to_texts")->Iterations(1);

// Only where there are some.
template <typename Sink>
void RegisterCaptured(const char* name, const char* folder) {
  const auto run = [=](benchmark::State& state) { Measure<Sink>(state, CapturedFrames(folder)); };
  benchmark::RegisterBenchmark(name, run)->Iterations(1);
}

[[maybe_unused]] const bool kRegistered = [] {
  const char* const folder = std::getenv("TAV_TELEGRAMS");
  if (folder == nullptr) return false;
  RegisterCaptured<cValues>("mbus/captured_to_values", folder);
  RegisterCaptured<cTexts>("mbus/captured_to_texts", folder);
  return true;
}();

}  // namespace
