// SPDX-License-Identifier: Apache-2.0
// cMeterRecord with six entries: to its record, back from it, and from the list of an SML telegram.
//
// The limit of a form made is the same texts and numbers packed one behind the other; of an object read, the copy of
// the finished object, since each of its texts has to be made once.
#include <benchmark/benchmark.h>

#include <cstring>

#include <bench/support/figures.h>
#include <bench/support/sample_reading.h>

using namespace tav::bench;
using tav::cMeterRecord;
using tav::cMeterTav;
using vorn::cRecord;

namespace {

const cMeterRecord& Sample() {
  static const cMeterRecord sample = SampleMeterRecord("1EMH0012345678", 1);
  return sample;
}

// Everything that ToRecord writes, without names.
std::size_t Pack(const cMeterRecord& reading, unsigned char* to) {
  unsigned char* at = to;
  const auto number = [&](unsigned int value) {
    std::memcpy(at, &value, sizeof value);
    at += sizeof value;
  };
  const auto text = [&](const std::string& value) {
    *at++ = static_cast<unsigned char>(value.size());
    std::memcpy(at, value.data(), value.size());
    at += value.size();
  };
  for (const unsigned int value : {reading.GetVersion(), reading.GetTimestamp(), reading.GetOSC(),
                                   static_cast<unsigned int>(reading.GetTimesource())})
    number(value);
  for (const std::string* value :
       {&reading.GetDriver(), &reading.GetManufactor(), &reading.GetMedium(), &reading.GetMeterID(), &reading.GetAddr(),
        &reading.GetStatus(), &reading.GetInterfaceName(), &reading.GetInterfaceProtocol()})
    text(*value);
  for (const tav::cMeasurementEntry& entry : reading.GetMeasurementEntries()) {
    text(entry.GetName());
    text(entry.GetValue());
    text(entry.GetUnit());
    number(entry.GetTimestamp());
    number(entry.GetTimesource());
  }
  return static_cast<std::size_t>(at - to);
}

void ToRecord(benchmark::State& state) {
  unsigned char packed[kMaxPacked];
  const auto ours = [] { benchmark::DoNotOptimize(Sample().ToRecord()); };
  const auto limit = [&] { benchmark::DoNotOptimize(Pack(Sample(), packed)); };
  CountAllocations(state, ours);
  CompareTimes(state, ours, limit);
  Report(state, "size", static_cast<double>(Sample().ToRecord().GetBytes().size()), "B");
  Report(state, "size_limit", static_cast<double>(Pack(Sample(), packed)), "B");
}
BENCHMARK(ToRecord)->Name("meter_record/to_record")->Iterations(1);

void FromRecord(benchmark::State& state) {
  const cRecord record = Sample().ToRecord();
  if (cMeterRecord reading; !reading.FromRecord(record)) return state.SkipWithError(reading.GetError().c_str());
  const auto ours = [&] {
    cMeterRecord reading;
    benchmark::DoNotOptimize(reading.FromRecord(record));
  };
  const auto limit = [] { benchmark::DoNotOptimize(cMeterRecord(Sample())); };
  CountAllocations(state, ours);
  CompareTimes(state, ours, limit);
}
BENCHMARK(FromRecord)->Name("meter_record/from_record")->Iterations(1);

// ---- from an SML list

constexpr std::uint64_t kListValues[][2] = {
    // identifier, unit
    {0x0100010800FF, 30}, {0x0100020800FF, 30}, {0x0100100700FF, 27},
    {0x0100200700FF, 35}, {0x01001F0700FF, 33}, {0x01000E0700FF, 44},
};

cRecord SmlList() {
  cRecord values;
  for (const auto& [obis, unit] : kListValues) {
    cRecord value;
    value.AppendUInt64Par("objName", obis);
    value.AppendIntPar("scaler", -1);
    value.AppendUIntPar("unit", static_cast<unsigned int>(unit));
    value.AppendUInt64Par("value", 123456789);
    values.AppendRecordPar("valListEntry", value);
  }
  cRecord list;
  list.AppendDataPar("serverId", vorn::cData("1EMH0012345678", 14));
  list.AppendRecordPar("valList", values);
  return list;
}

void FromSmlList(benchmark::State& state) {
  const cRecord list = SmlList();
  cMeterRecord made;
  const auto take = [&](cMeterRecord& reading) {
    return reading.FromSmlGetListRes("ehzif", "E", cMeterTav::eTsMeterUtc, 1'767'225'599, list);
  };
  if (!take(made) || made.GetMeasurementEntries().size() != std::size(kListValues))
    return state.SkipWithError("the list was not taken whole");
  const auto ours = [&] {
    cMeterRecord reading;
    benchmark::DoNotOptimize(take(reading));
  };
  const auto limit = [&] { benchmark::DoNotOptimize(cMeterRecord(made)); };
  CountAllocations(state, ours);
  CompareTimes(state, ours, limit);
}
BENCHMARK(FromSmlList)->Name("meter_record/from_sml_list")->Iterations(1);

}  // namespace
