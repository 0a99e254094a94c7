// SPDX-License-Identifier: Apache-2.0
// A reading with six entries as a record: written, validated, every field read; and the same through cMeterRecord.
#include <benchmark/benchmark.h>

#include <tav/record/meter_record.h>
#include <tests/support/allocations.h>

namespace {

using vorn::cRecord;
using vorn::cRecordPar;

constexpr int kEntries = 6;

void WriteReading(cRecord& record, unsigned int time) {
  record.AppendUIntPar("version", 1);
  record.AppendTextPar("driver", "ehzif");
  record.AppendTextPar("meterID", "1EMH0012345678");
  record.AppendTextPar("medium", "E");
  record.AppendUIntPar("timestamp", time);
  for (int i = 0; i < kEntries; ++i) {
    cRecord entry;
    entry.AppendTextPar("name", "1-0:1.8.0");
    entry.AppendTextPar("value", "123456.789");
    entry.AppendTextPar("unit", "kWh");
    entry.AppendUIntPar("timestamp", time);
    record.AppendRecordPar("entry", entry);
  }
}

std::size_t ReadReading(const cRecord& record) {
  std::size_t seen = record.GetUIntPar("version") + record.GetUIntPar("timestamp");
  for (const char* name : {"driver", "meterID", "medium"}) seen += record.GetPar(name).GetBytesView().size();
  for (cRecordPar par = record.GetPar("entry"); par.IsValid(); par = par.NextSame()) {
    cRecord entry;
    par.GetRecord(entry);
    for (const char* name : {"name", "value", "unit"}) seen += entry.GetPar(name).GetBytesView().size();
    seen += entry.GetUIntPar("timestamp");
  }
  return seen;
}

// Calls of the allocator for one turn, after the first ones.
template <typename Turn>
void Measure(benchmark::State& state, Turn turn) {
  for (unsigned int i = 0; i < 100; ++i) turn(i);
  const cAllocations allocations;
  unsigned int time = 0;
  for (auto _ : state) turn(++time);
  state.counters["allocations"] =
      benchmark::Counter(static_cast<double>(allocations.Get()), benchmark::Counter::kAvgIterations);
}

void RecordWrite(benchmark::State& state) {
  Measure(state, [](unsigned int time) {
    cRecord record;
    WriteReading(record, time);
    benchmark::DoNotOptimize(record);
  });
}
BENCHMARK(RecordWrite);

void RecordValidate(benchmark::State& state) {
  cRecord record;
  WriteReading(record, 1393675200);
  const std::string_view bytes = record.GetBytes();
  Measure(state, [&](unsigned int) {
    cRecord received;
    cRecord::FromBytes(bytes.data(), bytes.size(), received);
    benchmark::DoNotOptimize(received);
  });
  state.counters["bytes"] = static_cast<double>(bytes.size());
}
BENCHMARK(RecordValidate);

void RecordWriteValidateRead(benchmark::State& state) {
  Measure(state, [](unsigned int time) {
    cRecord record, received;
    WriteReading(record, time);
    cRecord::FromBytes(record.GetBytes().data(), record.GetBytes().size(), received);
    benchmark::DoNotOptimize(ReadReading(received));
  });
}
BENCHMARK(RecordWriteValidateRead);

void MeterRecordToRecordAndBack(benchmark::State& state) {
  tav::cMeterRecord reading("ehzif", "EMH", "E", "1EMH0012345678", "1", "", 1393675200, tav::cMeterTav::eTsMeter, 1);
  for (int i = 0; i < kEntries; ++i)
    reading.AddMeasurementEntry(tav::cMeasurementEntry("1-0:1.8." + std::to_string(i), "123456.789", "kWh", 1393675200,
                                                       tav::cMeterTav::eTsMeter));
  Measure(state, [&](unsigned int) {
    tav::cMeterRecord back;
    const cRecord record = reading.ToRecord();
    if (!back.FromRecord(record)) state.SkipWithError("the record was not read");
  });
}
BENCHMARK(MeterRecordToRecordAndBack);

}  // namespace
