// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/reader/mbus_reader.h>

#include <algorithm>

#include <gateway/driver/mbus/reader/mbus_fixed.h>

namespace tav::mbus {

namespace {

constexpr std::uint8_t kExtension = 0x80;
constexpr std::uint8_t kIdleFiller = 0x2F;
constexpr std::uint8_t kMakersData = 0x0F;
constexpr std::uint8_t kMakersDataAndMore = 0x1F;
constexpr std::uint8_t kPlainText = 0x7C;
constexpr std::uint8_t kSpecialFunction = 0x0F;  // the data field of a DIF that is none of a value
constexpr std::size_t kCounterSize = 4;

// DIF of the fixed data structure's counters: eight digits or four bytes, now or stored.
constexpr std::uint8_t kCounterDif[2][2] = {{0x0C, 0x4C}, {0x04, 0x44}};

constexpr const char* kFunctionTexts[] = {"Instantaneous value",      "Maximum value",         "Minimum value",
                                          "Value during error state", "Manufacturer specific", "More records follow"};

// Field by field: at once it is a string instruction, which takes longer than all the rest of a record.
void Clear(cMBusRecord& record) {
  record.offset = 0;
  record.bytes = record.dib = record.vib = record.data = record.plainUnit = cBytes();
  record.function = eInstantaneous;
  record.length = 0;
  record.storage = 0;
  record.tariff = 0;
  record.subunit = 0;
  record.meaning = {};
  record.value = {};
  record.mark = nullptr;
}

void Mark(cMBusRecord& record, const char* mark) {
  record.mark = mark;
  record.value = {record.data.empty() ? eValueNone : eValueOctets};
}

// A length that no point in time has is a number: such as the seconds since a reset.
bool IsTimeSized(std::uint8_t field) { return field == 2 || field == 3 || field == 4 || field == 6; }

void ReadData(cMBusRecord& record, std::uint8_t field) {
  if (record.meaning.error != nullptr) return Mark(record, record.meaning.error);
  const char* mark = nullptr;
  if (record.meaning.isTime && IsTimeSized(field)) {
    record.value = {eValueTime};
    ReadTime(record.data, record.value.time, mark);
  } else {
    mark = ReadValue(field, record.length, record.data, record.meaning.isUnsigned, record.value);
  }
  if (mark != nullptr) Mark(record, mark);
}

}  // namespace

cBytes VibCodes(const cMBusRecord& record, cVibCodes& codes) {
  if (record.vib.empty() || (record.vib[0] & ~kExtension) != kPlainText) return record.vib;
  const cBytes extensions = record.vib.subspan(2 + record.plainUnit.size());
  codes[0] = record.vib[0];
  std::copy(extensions.begin(), extensions.end(), codes.begin() + 1);
  return cBytes(codes).first(1 + extensions.size());
}

const char* FunctionText(eFunction function) { return kFunctionTexts[function]; }

void cMBusReader::Begin(const cMBusTelegram& telegram) {
  m_data = telegram.HasRecords() ? telegram.data : cBytes();
  m_offset = telegram.dataOffset;
  m_at = 0;
  m_fixed = telegram.information == eCiFixed;
  m_binary = telegram.binary;
  m_stored = telegram.stored;
  m_encrypted = telegram.encrypted;
  m_hasFault = m_hasMore = false;
}

bool cMBusReader::Next(cMBusRecord& record) {
  Clear(record);
  return m_fixed ? NextFixed(record) : NextVariable(record);
}

bool cMBusReader::NextVariable(cMBusRecord& record) {
  while (HasByte() && m_data[m_at] == kIdleFiller && !m_encrypted) ++m_at;
  if (!HasByte()) return false;
  const std::size_t begin = m_at;
  record.offset = m_offset + static_cast<std::uint32_t>(begin);
  if (m_encrypted) {
    TakeRest(record);
    Mark(record, "encrypted");
  } else if (m_data[m_at] == kMakersData || m_data[m_at] == kMakersDataAndMore) {
    TakeMakers(record);
  } else if (!TakeDib(record) || !TakeData(record)) {
    m_at = begin;
    Clear(record);
    record.offset = m_offset + static_cast<std::uint32_t>(begin);
    TakeRest(record);
    Mark(record, m_fault.what);
  }
  record.bytes = m_data.subspan(begin, m_at - begin);
  return true;
}

// What is in the rest cannot be told.
void cMBusReader::TakeRest(cMBusRecord& record) {
  record.data = m_data.subspan(m_at);
  m_at = m_data.size();
}

void cMBusReader::TakeMakers(cMBusRecord& record) {
  m_hasMore = m_data[m_at] == kMakersDataAndMore;
  record.function = m_hasMore ? eMoreRecordsFollow : eManufacturerSpecific;
  record.dib = m_data.subspan(m_at++, 1);
  record.meaning.unit = eMBusManufacturerSpecific;
  record.meaning.isMakers = true;
  TakeRest(record);
  if (!record.data.empty()) record.value = {eValueOctets};
}

// DIF, DIFE (EN 13757-3, data information block): each DIFE has four more bits of the storage number, two of the tariff
// and one of the subunit, the least significant first.
bool cMBusReader::TakeDib(cMBusRecord& record) {
  const std::size_t begin = m_at;
  std::uint8_t byte = m_data[m_at++];
  if ((byte & 0x0F) == kSpecialFunction) return Fail("a DIF of a reserved function", begin);
  record.function = static_cast<eFunction>(byte >> 4 & 0x03);
  record.storage = byte >> 6 & 0x01;
  for (unsigned int i = 0; (byte & kExtension) != 0; ++i) {
    if (!HasByte()) return Fail("the telegram ends within a DIB", m_at);
    if (i == kMostExtensions) return Fail("a DIB of more than 10 DIFE", m_at);
    byte = m_data[m_at++];
    record.storage |= std::uint64_t{byte & 0x0Fu} << (1 + 4 * i);
    record.tariff |= (byte >> 4 & 0x03u) << 2 * i;
    record.subunit = static_cast<std::uint16_t>(record.subunit | (byte >> 6 & 0x01u) << i);
  }
  record.dib = m_data.subspan(begin, m_at - begin);
  return true;
}

// VIF, the text of a plain text VIF, VIFE.
bool cMBusReader::TakeVib(cMBusRecord& record) {
  const std::size_t begin = m_at;
  std::uint8_t code = kExtension;
  for (std::size_t count = 0; (code & kExtension) != 0; ++count) {
    if (!HasByte()) return Fail("the telegram ends within a VIB", m_at);
    if (count == 1 + kMostExtensions) return Fail("a VIB of more than 10 VIFE", m_at);
    code = m_data[m_at++];
    if (count == 0 && (code & ~kExtension) == kPlainText && !TakePlainUnit(record)) return false;
  }
  record.vib = m_data.subspan(begin, m_at - begin);
  return true;
}

bool cMBusReader::TakePlainUnit(cMBusRecord& record) {
  if (!HasByte()) return Fail("the telegram ends within a VIB", m_at);
  const std::size_t length = m_data[m_at];
  if (length > m_data.size() - m_at - 1) return Fail("the text of a VIF is longer than the telegram", m_at);
  record.plainUnit = m_data.subspan(m_at + 1, length);
  m_at += 1 + length;
  return true;
}

bool cMBusReader::TakeData(cMBusRecord& record) {
  const std::uint8_t field = record.dib[0] & 0x0F;
  if (!TakeVib(record)) return false;
  if (field == eFieldVariable && !HasByte()) return Fail("the telegram ends before the data of a record", m_at);
  if (field == eFieldVariable) record.length = m_data[m_at];
  const cMBusDataSize size = DataSize(field, record.length);
  if (!size.known) return Fail("a variable length that is reserved", m_at);
  m_at += size.lengthBytes;
  if (size.bytes > m_data.size() - m_at) return Fail("the data of a record end too early", m_data.size());
  record.data = m_data.subspan(m_at, size.bytes);
  m_at += size.bytes;
  cVibCodes codes;
  record.meaning = m_vib.Decode(VibCodes(record, codes));
  ReadData(record, field);
  return true;
}

// Two counters with the units of the two bytes before them.
bool cMBusReader::NextFixed(cMBusRecord& record) {
  if (m_at == 2) return false;
  const std::size_t counter = m_at++;
  const bool historic = counter == 1 && (m_data[1] & 0x3F) == kSameButHistoric;
  const bool stored = m_stored || historic;
  record.offset = m_offset + static_cast<std::uint32_t>(2 + counter * kCounterSize);
  record.bytes = record.data = m_data.subspan(2 + counter * kCounterSize, kCounterSize);
  record.dib = {&kCounterDif[m_binary ? 1 : 0][stored ? 1 : 0], 1};
  record.vib = FixedVib(m_data[historic ? 0 : counter]);
  record.storage = stored ? 1 : 0;
  record.meaning = m_vib.Decode(record.vib);
  record.meaning.isUnsigned = true;
  if (record.vib.empty())
    Mark(record, "a unit without a meaning for numbers");
  else
    ReadData(record, record.dib[0] & 0x0F);
  return true;
}

bool cMBusReader::Fail(const char* what, std::size_t at) {
  m_hasFault = true;
  m_fault = {what, m_offset + static_cast<std::uint32_t>(at), at < m_data.size() ? m_data[at] : -1};
  return false;
}

}  // namespace tav::mbus
