// SPDX-License-Identifier: Apache-2.0
#include <bench/support/sample_reading.h>

#include <cstring>

namespace tav::bench {

namespace {

constexpr std::uint64_t kNoon = 1'767'225'599'000'000;  // microseconds

struct cSampleValue {
  const char* name;
  const char* unit;
  double value;
  const char* digits;  // of the value's text, in front of those that change
};

constexpr cSampleValue kValues[] = {
    {"1-0:1.8.0*255", "Wh", 12345678.9, "1234"}, {"1-0:2.8.0*255", "Wh", 2345.6, "2"},
    {"1-0:16.7.0*255", "W", 412.37, ""},         {"1-0:32.7.0*255", "V", 231.4, "23"},
    {"1-0:31.7.0*255", "A", 1.79, "1"},          {"1-0:14.7.0*255", "Hz", 49.98, "49"},
};

// What every reader does with a field; all of them sum in the same order.
class cSum {
 public:
  void Number(std::uint64_t value) { m_sum = m_sum * 31 + value; }
  void Real(double value) {
    std::uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    Number(bits);
  }
  void Text(std::string_view text) {
    const auto byte = [&](std::size_t at) { return static_cast<std::uint64_t>(static_cast<unsigned char>(text[at])); };
    Number(text.size() + (text.empty() ? 0 : byte(0) + 256 * byte(text.size() - 1)));
  }
  std::uint64_t Get() const { return m_sum; }

 private:
  std::uint64_t m_sum = 0;
};

std::uint64_t BitsOf(double value) {
  std::uint64_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

std::uint64_t Widened(int value) { return static_cast<std::uint64_t>(static_cast<std::int64_t>(value)); }

template <typename Reading>
std::uint64_t Sum(const Reading& reading) {
  cSum sum;
  sum.Number(reading.number);
  sum.Text(reading.meter);
  sum.Text(reading.server);
  sum.Number(reading.channel);
  sum.Number(reading.received);
  sum.Number(reading.meterTime);
  sum.Number(reading.secondsIndex);
  sum.Number(reading.status);
  sum.Number(reading.valid);
  sum.Text(reading.protocol);
  sum.Text(reading.source);
  sum.Real(reading.quality);
  sum.Number(Widened(reading.tariff));
  sum.Text(reading.location);
  for (const auto& entry : reading.entries) {
    sum.Text(entry.name);
    sum.Real(entry.value);
    sum.Text(entry.unit);
    sum.Number(entry.time);
    sum.Text(entry.timeSource);
  }
  return sum.Get();
}

}  // namespace

cReading SampleReading(std::uint64_t number) {
  cReading reading;
  reading.number = number;
  reading.meter = "1EMH0012345678";
  reading.server = "0A01454D480000BC614E";
  reading.channel = 3;
  reading.received = kNoon + number;
  reading.meterTime = kNoon;
  reading.secondsIndex = 86'412'345;
  reading.status = 0x1c0104;
  reading.valid = true;
  reading.protocol = "sml";
  reading.source = "ttyUSB0";
  reading.quality = 0.9975;
  reading.tariff = -1;
  reading.location = "Keller, Zaehlerplatz 3";
  for (const cSampleValue& sample : kValues) {
    const std::size_t i = reading.entries.size();
    reading.entries.push_back({sample.name, sample.value + static_cast<double>(number % 1000) * 0.25, sample.unit,
                               kNoon + i, i % 2 != 0 ? "gateway" : "meter"});
  }
  return reading;
}

std::uint64_t SumOf(const cReading& reading) { return Sum(reading); }

std::uint64_t SumOf(const cPackedReading& reading) { return Sum(reading); }

// ---- as a record

void WriteRecord(const cReading& reading, vorn::cRecord& record) {
  record.AppendUInt64Par("id", reading.number);
  record.AppendTextPar("meter", reading.meter);
  record.AppendTextPar("server", reading.server);
  record.AppendUIntPar("channel", reading.channel);
  record.AppendUInt64Par("received", reading.received);
  record.AppendUInt64Par("meter_time", reading.meterTime);
  record.AppendUIntPar("sec_index", reading.secondsIndex);
  record.AppendUIntPar("status", reading.status);
  record.AppendBoolPar("valid", reading.valid);
  record.AppendTextPar("protocol", reading.protocol);
  record.AppendTextPar("source", reading.source);
  record.AppendUInt64Par("quality", BitsOf(reading.quality));
  record.AppendIntPar("tariff", reading.tariff);
  record.AppendTextPar("location", reading.location);
  for (const auto& each : reading.entries) {
    vorn::cRecord entry;
    entry.AppendTextPar("name", each.name);
    entry.AppendUInt64Par("value", BitsOf(each.value));
    entry.AppendTextPar("unit", each.unit);
    entry.AppendUInt64Par("ts", each.time);
    entry.AppendTextPar("tsrc", each.timeSource);
    record.AppendRecordPar("entry", entry);
  }
}

std::uint64_t ReadRecord(const vorn::cRecord& record, std::uint64_t& number) {
  cSum sum;
  number = record.GetUInt64Par("id");
  sum.Number(number);
  sum.Text(record.GetTextView("meter"));
  sum.Text(record.GetTextView("server"));
  sum.Number(record.GetUIntPar("channel"));
  sum.Number(record.GetUInt64Par("received"));
  sum.Number(record.GetUInt64Par("meter_time"));
  sum.Number(record.GetUIntPar("sec_index"));
  sum.Number(record.GetUIntPar("status"));
  sum.Number(record.GetBoolPar("valid"));
  sum.Text(record.GetTextView("protocol"));
  sum.Text(record.GetTextView("source"));
  sum.Number(record.GetUInt64Par("quality"));
  sum.Number(Widened(record.GetIntPar("tariff")));
  sum.Text(record.GetTextView("location"));
  vorn::cRecord entry;
  for (vorn::cRecordPar at = record.GetPar("entry"); at.GetRecord(entry); at = at.NextSame()) {
    sum.Text(entry.GetTextView("name"));
    sum.Number(entry.GetUInt64Par("value"));
    sum.Text(entry.GetTextView("unit"));
    sum.Number(entry.GetUInt64Par("ts"));
    sum.Text(entry.GetTextView("tsrc"));
  }
  return sum.Get();
}

// ---- packed

namespace {

class cPacker {
 public:
  explicit cPacker(unsigned char* to) : m_begin(to), m_to(to) {}
  template <typename Number>
  void Put(Number value) {
    std::memcpy(m_to, &value, sizeof value);
    m_to += sizeof value;
  }
  void Text(const std::string& text) {
    Put(static_cast<std::uint8_t>(text.size()));
    std::memcpy(m_to, text.data(), text.size());
    m_to += text.size();
  }
  std::size_t GetSize() const { return static_cast<std::size_t>(m_to - m_begin); }

 private:
  unsigned char* m_begin;
  unsigned char* m_to;
};

class cUnpacker {
 public:
  cUnpacker(const unsigned char* from, std::size_t size) : m_from(from), m_end(from + size) {}
  template <typename Number>
  void Get(Number& value) {
    if (!Has(sizeof value)) return;
    std::memcpy(&value, m_from, sizeof value);
    m_from += sizeof value;
  }
  void Get(std::string_view& text) {
    std::uint8_t size = 0;
    Get(size);
    if (!Has(size)) return;
    text = {reinterpret_cast<const char*>(m_from), size};
    m_from += size;
  }
  bool IsGood() const { return m_good; }

 private:
  bool Has(std::size_t size) {
    m_good = m_good && static_cast<std::size_t>(m_end - m_from) >= size;
    return m_good;
  }

  const unsigned char* m_from;
  const unsigned char* m_end;
  bool m_good = true;
};

}  // namespace

std::size_t WritePacked(const cReading& reading, unsigned char* to) {
  cPacker pack(to);
  pack.Put(reading.number);
  pack.Text(reading.meter);
  pack.Text(reading.server);
  pack.Put(reading.channel);
  pack.Put(reading.received);
  pack.Put(reading.meterTime);
  pack.Put(reading.secondsIndex);
  pack.Put(reading.status);
  pack.Put(reading.valid);
  pack.Text(reading.protocol);
  pack.Text(reading.source);
  pack.Put(reading.quality);
  pack.Put(reading.tariff);
  pack.Text(reading.location);
  pack.Put(static_cast<std::uint8_t>(reading.entries.size()));
  for (const auto& entry : reading.entries) {
    pack.Text(entry.name);
    pack.Put(entry.value);
    pack.Text(entry.unit);
    pack.Put(entry.time);
    pack.Text(entry.timeSource);
  }
  return pack.GetSize();
}

bool ReadPacked(const unsigned char* from, std::size_t size, cPackedReading& reading) {
  cUnpacker unpack(from, size);
  unpack.Get(reading.number);
  unpack.Get(reading.meter);
  unpack.Get(reading.server);
  unpack.Get(reading.channel);
  unpack.Get(reading.received);
  unpack.Get(reading.meterTime);
  unpack.Get(reading.secondsIndex);
  unpack.Get(reading.status);
  unpack.Get(reading.valid);
  unpack.Get(reading.protocol);
  unpack.Get(reading.source);
  unpack.Get(reading.quality);
  unpack.Get(reading.tariff);
  unpack.Get(reading.location);
  std::uint8_t entries = 0;
  unpack.Get(entries);
  reading.entries.resize(entries);
  for (auto& entry : reading.entries) {
    unpack.Get(entry.name);
    unpack.Get(entry.value);
    unpack.Get(entry.unit);
    unpack.Get(entry.time);
    unpack.Get(entry.timeSource);
  }
  return unpack.IsGood();
}

// ---- as drivers make it

cMeterRecord SampleMeterRecord(const std::string& meter, unsigned int number) {
  constexpr unsigned int kNoonSeconds = kNoon / 1'000'000;
  const unsigned int time = kNoonSeconds + number;
  cMeterRecord reading("ehzif", "EMH", "E", meter, meter, "ok", time, cMeterTav::eTsMeterUtc, number);
  reading.SetInterfaceInfo("RS232", "SML", "");
  for (const cSampleValue& sample : kValues) {
    const std::string value =
        sample.digits + std::to_string(1000 + (number * 7 + reading.GetMeasurementEntries().size()) % 9000);
    reading.AddMeasurementEntry(cMeasurementEntry(sample.name, value.substr(0, value.size() - 1) + "." + value.back(),
                                                  sample.unit, time, cMeterTav::eTsMeterUtc));
  }
  return reading;
}

}  // namespace tav::bench
