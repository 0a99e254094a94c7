// SPDX-License-Identifier: Apache-2.0
// A reading with six entries as a record: written, validated, every field read. The limit is the same reading packed.
#include <benchmark/benchmark.h>

#include <vector>

#include <bench/support/figures.h>
#include <bench/support/sample_reading.h>

using namespace tav::bench;
using vorn::cRecord;

namespace {

// A reading in all its forms.
struct cForms {
  explicit cForms(std::uint64_t number) : reading(SampleReading(number)) {
    WriteRecord(reading, record);
    packed.resize(kMaxPacked);
    packed.resize(WritePacked(reading, packed.data()));
  }

  cReading reading;
  cRecord record;
  std::vector<unsigned char> packed;
};

// Works on one reading after the other: nothing a processor could learn by heart.
class cReadings {
 public:
  cReadings() {
    for (std::uint64_t i = 0; i < kReadings; ++i) m_forms.emplace_back(1'000'001 + i);
  }
  const cForms& Next() { return m_forms[++m_at % kReadings]; }

  std::uint64_t WriteAsRecord() {
    cRecord record;
    WriteRecord(Next().reading, record);
    return record.GetBytes().size();
  }
  std::uint64_t ValidateRecord() {
    const std::string_view bytes = Next().record.GetBytes();
    cRecord record;
    return cRecord::FromBytes(bytes.data(), bytes.size(), record) ? record.GetCount() : 0;
  }
  std::uint64_t ReadValidRecord() {
    std::uint64_t number = 0;
    return ReadRecord(Next().record, number);
  }
  std::uint64_t WriteAndReadAsRecord() {
    cRecord record;
    WriteRecord(Next().reading, record);
    return ReadBytes(record.GetBytes());
  }

  std::uint64_t WriteAsPacked() { return WritePacked(Next().reading, m_packed); }
  std::uint64_t Unpack() {
    const std::vector<unsigned char>& packed = Next().packed;
    return ReadPacked(packed.data(), packed.size(), m_unpacked) ? m_unpacked.entries.size() : 0;
  }
  std::uint64_t ReadUnpacked() { return SumOf(m_unpacked); }
  std::uint64_t WriteAndReadAsPacked() { return ReadBytes(m_packed, WriteAsPacked()); }

  // Whether all forms tell the same.
  bool Agree() {
    for (const cForms& forms : m_forms)
      if (ReadBytes(forms.record.GetBytes()) != SumOf(forms.reading) ||
          ReadBytes(forms.packed.data(), forms.packed.size()) != SumOf(forms.reading))
        return false;
    return true;
  }

 private:
  static constexpr std::uint64_t kReadings = 64;

  static std::uint64_t ReadBytes(std::string_view bytes) {
    cRecord record;
    std::uint64_t number = 0;
    return cRecord::FromBytes(bytes.data(), bytes.size(), record) ? ReadRecord(record, number) : 0;
  }
  std::uint64_t ReadBytes(const unsigned char* packed, std::size_t size) {
    return ReadPacked(packed, size, m_unpacked) ? SumOf(m_unpacked) : 0;
  }

  std::vector<cForms> m_forms;
  std::uint64_t m_at = 0;
  unsigned char m_packed[kMaxPacked];
  cPackedReading m_unpacked;
};

using Work = std::uint64_t (cReadings::*)();

void Measure(benchmark::State& state, Work ours, Work limit) {
  cReadings readings;
  if (!readings.Agree()) return state.SkipWithError("the fields read are not the fields written");
  const auto ourCall = [&] { benchmark::DoNotOptimize((readings.*ours)()); };
  const auto limitCall = [&] { benchmark::DoNotOptimize((readings.*limit)()); };
  CountAllocations(state, ourCall);
  CompareTimes(state, ourCall, limitCall);
  Report(state, "size", static_cast<double>(readings.WriteAsRecord()), "B");
  Report(state, "size_limit", static_cast<double>(readings.WriteAsPacked()), "B");
}

void Write(benchmark::State& state) { Measure(state, &cReadings::WriteAsRecord, &cReadings::WriteAsPacked); }
BENCHMARK(Write)->Name("record/write")->Iterations(1);

void Validate(benchmark::State& state) { Measure(state, &cReadings::ValidateRecord, &cReadings::Unpack); }
BENCHMARK(Validate)->Name("record/validate")->Iterations(1);

void Read(benchmark::State& state) { Measure(state, &cReadings::ReadValidRecord, &cReadings::ReadUnpacked); }
BENCHMARK(Read)->Name("record/read")->Iterations(1);

void WriteValidateRead(benchmark::State& state) {
  Measure(state, &cReadings::WriteAndReadAsRecord, &cReadings::WriteAndReadAsPacked);
}
BENCHMARK(WriteValidateRead)->Name("record/write_validate_read")->Iterations(1);

}  // namespace
