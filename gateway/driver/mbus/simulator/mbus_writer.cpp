// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/simulator/mbus_writer.h>

#include <bit>

#include <gateway/driver/mbus/master/mbus_requests.h>

namespace tav::mbus {

namespace {

constexpr std::uint8_t kExtension = 0x80;
constexpr std::uint8_t kMakersData = 0x0F;
constexpr std::uint8_t kMoreFollow = 0x1F;
constexpr std::uint8_t kFirstBcd = 0x9;
constexpr std::size_t kMostText = 0xBF;

std::uint8_t IntegerField(unsigned int bytes) {
  if (bytes == 8) return 0x7;
  return static_cast<std::uint8_t>(bytes);
}

std::uint8_t BcdField(unsigned int digits) {
  if (digits == 12) return 0xE;
  return static_cast<std::uint8_t>(kFirstBcd + digits / 2 - 1);
}

// The digits of a number in as many bytes, the lowest first.
std::uint64_t ToBcd(std::uint64_t value, unsigned int digits) {
  std::uint64_t bcd = 0;
  for (unsigned int i = 0; i < digits; ++i, value /= 10) bcd |= value % 10 << 4 * i;
  return bcd;
}

void Append(std::string& bytes, std::uint64_t value, unsigned int width) {
  for (unsigned int i = 0; i < width; ++i) bytes += static_cast<char>(value >> 8 * i & 0xFF);
}

}  // namespace

// DIF, DIFE, VIB: each DIFE has four more bits of the storage number, two of the tariff, one of the subunit.
void cMBusWriter::Begin(std::uint8_t field, Vib vib, const cMBusPlace& place) {
  std::uint64_t storage = place.storage >> 1;
  std::uint32_t tariff = place.tariff;
  unsigned int subunit = place.subunit;
  const auto more = [&] { return storage != 0 || tariff != 0 || subunit != 0 ? kExtension : std::uint8_t{0}; };
  const auto function = static_cast<std::uint64_t>(place.function);
  m_data += static_cast<char>(field | function << 4 | (place.storage & 1) << 6 | more());
  while (more() != 0) {
    const auto dife = static_cast<std::uint8_t>((storage & 0xF) | (tariff & 0x3) << 4 | (subunit & 0x1) << 6);
    storage >>= 4;
    tariff >>= 2;
    subunit >>= 1;
    m_data += static_cast<char>(dife | more());
  }
  m_data.append(vib.begin(), vib.end());
}

void cMBusWriter::Number(std::uint64_t value, unsigned int bytes) { Append(m_data, value, bytes); }

void cMBusWriter::Integer(Vib vib, std::int64_t value, unsigned int bytes, const cMBusPlace& place) {
  Begin(IntegerField(bytes), vib, place);
  Number(static_cast<std::uint64_t>(value), bytes);
}

void cMBusWriter::Bcd(Vib vib, std::int64_t value, unsigned int digits, const cMBusPlace& place) {
  Begin(BcdField(digits), vib, place);
  const bool isNegative = value < 0;
  std::uint64_t bcd = ToBcd(static_cast<std::uint64_t>(isNegative ? -value : value), digits);
  if (isNegative) bcd |= std::uint64_t{0xF} << 4 * (digits - 1);
  Number(bcd, digits / 2);
}

void cMBusWriter::Real(Vib vib, float value, const cMBusPlace& place) {
  Begin(eFieldReal, vib, place);
  Number(std::bit_cast<std::uint32_t>(value), 4);
}

void cMBusWriter::Text(Vib vib, std::string_view text, const cMBusPlace& place) {
  Begin(eFieldVariable, vib, place);
  text = text.substr(0, kMostText);
  m_data += static_cast<char>(text.size());
  m_data.append(text.rbegin(), text.rend());
}

void cMBusWriter::Time(Vib vib, const cMBusTime& time, const cMBusPlace& place) {
  const unsigned int year = time.year % 100u;
  const unsigned int date = (time.day | (year & 0x7) << 5) | (time.month | (year >> 3) << 4) << 8;
  Begin(time.hasTime ? 0x4 : 0x2, vib, place);
  if (time.hasTime) Number(time.minute | (time.hour | 1u << 5) << 8, 2);  // the first century
  Number(date, 2);
}

void cMBusWriter::MakersData(std::string_view bytes, bool more) {
  m_data += static_cast<char>(more ? kMoreFollow : kMakersData);
  m_data += bytes;
}

std::string cMBusWriter::Telegram(std::uint8_t address, const cMBusHeader& header) const {
  std::string data;
  Append(data, header.id, 4);
  Append(data, header.manufacturer, 2);
  Append(data, header.version, 1);
  Append(data, header.medium, 1);
  Append(data, header.access, 1);
  Append(data, header.status, 1);
  Append(data, header.configuration, 2);
  data += m_data;
  return MakeLongFrame(eRspUd, address, eCiLongHeader, BytesOf(data));
}

std::string WriteCounters(std::uint8_t address, const cMBusCounters& counters) {
  std::string data;
  Append(data, counters.id, 4);
  Append(data, counters.access, 1);
  Append(data, counters.status, 1);
  Append(data, counters.units[0] | (counters.medium & 0x3u) << 6, 1);
  Append(data, counters.units[1] | (counters.medium >> 2 & 0x3u) << 6, 1);
  const bool isBinary = (counters.status & 0x01) != 0;
  for (const std::uint32_t value : counters.values) Append(data, isBinary ? value : ToBcd(value, 8), 4);
  return MakeLongFrame(eRspUd, address, eCiFixed, BytesOf(data));
}

std::string WriteApplicationError(std::uint8_t address, std::uint8_t code) {
  return MakeLongFrame(eRspUd, address, eCiError, {&code, 1});
}

}  // namespace tav::mbus
