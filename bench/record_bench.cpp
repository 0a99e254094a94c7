// SPDX-License-Identifier: Apache-2.0
// A reading with six entries as a record: written, validated, every field read. The limit is the same reading packed.
#include <benchmark/benchmark.h>

#include <bench/support/figures.h>
#include <bench/support/sample_reading.h>

using namespace tav::bench;
using vorn::cRecord;

namespace {

// A reading in all its forms, written once.
struct cForms {
  cForms() {
    WriteRecord(reading, record);
    packedSize = WritePacked(reading, packed);
  }
  bool Agree() const {
    std::uint64_t number = 0;
    const std::uint64_t sum = SumOf(reading);
    return ReadRecord(record, number) == sum && number == reading.number && ReadPacked(packed, packedSize) == sum;
  }

  cReading reading = SampleReading();
  cRecord record;
  unsigned char packed[kMaxPacked];
  std::size_t packedSize;
};

template <typename Ours, typename Limit>
void Measure(benchmark::State& state, cForms& forms, const Ours& ours, const Limit& limit) {
  if (!forms.Agree()) return state.SkipWithError("the fields read are not the fields written");
  CountAllocations(state, ours);
  CompareTimes(state, ours, limit);
}

void Write(benchmark::State& state) {
  cForms forms;
  const auto ours = [&] {
    cRecord record;
    WriteRecord(forms.reading, record);
    benchmark::DoNotOptimize(record);
  };
  const auto limit = [&] { benchmark::DoNotOptimize(WritePacked(forms.reading, forms.packed)); };
  Measure(state, forms, ours, limit);
}
BENCHMARK(Write)->Name("record/write")->Iterations(1);

void ValidateRead(benchmark::State& state) {
  cForms forms;
  const std::string_view bytes = forms.record.GetBytes();
  const auto ours = [&] {
    cRecord received;
    std::uint64_t number = 0;
    cRecord::FromBytes(bytes.data(), bytes.size(), received);
    benchmark::DoNotOptimize(ReadRecord(received, number));
  };
  const auto limit = [&] { benchmark::DoNotOptimize(ReadPacked(forms.packed, forms.packedSize)); };
  Measure(state, forms, ours, limit);
}
BENCHMARK(ValidateRead)->Name("record/validate_read")->Iterations(1);

void WriteValidateRead(benchmark::State& state) {
  cForms forms;
  const auto ours = [&] {
    cRecord record, received;
    std::uint64_t number = 0;
    WriteRecord(forms.reading, record);
    cRecord::FromBytes(record.GetBytes().data(), record.GetBytes().size(), received);
    benchmark::DoNotOptimize(ReadRecord(received, number));
  };
  const auto limit = [&] {
    const std::size_t size = WritePacked(forms.reading, forms.packed);
    benchmark::DoNotOptimize(ReadPacked(forms.packed, size));
  };
  Measure(state, forms, ours, limit);
  Report(state, "size", static_cast<double>(forms.record.GetBytes().size()), "B");
  Report(state, "size_limit", static_cast<double>(forms.packedSize), "B");
}
BENCHMARK(WriteValidateRead)->Name("record/write_validate_read")->Iterations(1);

}  // namespace
