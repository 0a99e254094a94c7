// SPDX-License-Identifier: Apache-2.0
// The records of a telegram: start here. Frame and header come before (mbus_frame.h, mbus_telegram.h).
//
//   cMBusFrame frame; cMBusTelegram telegram; cMBusFault fault;
//   if (ReadFrame(bytes, frame, fault) == eFrameWhole && ReadTelegram(frame, telegram, fault)) {
//     reader.Begin(telegram);
//     for (cMBusRecord record; reader.Next(record);) ...
//   }
//
// Every byte of the data belongs to one record or is an idle filler. What cannot be read as a value is a record all the
// same: its bytes, marked with the reason. Nothing is allocated for a record.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include <gateway/driver/mbus/reader/mbus_telegram.h>
#include <gateway/driver/mbus/reader/mbus_value.h>
#include <gateway/driver/mbus/reader/mbus_vib.h>

namespace tav::mbus {

// The function field of the DIF (EN 13757-3, bits 4 and 5), and the two special functions that hold the maker's bytes.
enum eFunction : std::uint8_t {
  eInstantaneous,
  eMaximum,
  eMinimum,
  eErrorState,
  eManufacturerSpecific,  // DIF 0F: the rest of the telegram is the maker's
  eMoreRecordsFollow,     // DIF 1F: the same, and the meter has more to say in its next telegram
};

struct cMBusRecord {
  std::uint32_t offset = 0;  // of the first byte, in the frame
  cBytes bytes;              // all of it
  cBytes dib;                // DIF and DIFE
  cBytes vib;                // VIF, the text of a plain text VIF with its length, VIFE
  cBytes data;       // without the length byte of variable length; of a fixed structure's counter, its four bytes
  cBytes plainUnit;  // the unit in letters, last one first; else empty
  eFunction function = eInstantaneous;
  std::uint8_t length = 0;  // the length byte of variable length
  std::uint64_t storage = 0;
  std::uint32_t tariff = 0;
  std::uint16_t subunit = 0;
  cVibMeaning meaning;
  cMBusValue value;
  const char* mark = nullptr;  // why the value is no more than its bytes; null: it is what it should be

  // A value, however it is coded; not the maker's bytes and no record without data.
  bool HasValue() const { return value.kind != eValueNone && function <= eErrorState; }
};

inline constexpr std::size_t kMostExtensions = 10;  // DIFE and VIFE of a record

class cMBusReader {
 public:
  // The telegram's bytes live as long as its records are asked for.
  void Begin(const cMBusTelegram& telegram);
  // False: there are no more.
  bool Next(cMBusRecord& record);

  // A telegram whose records cannot be followed to its end has a fault; the bytes from that record on are its last.
  bool HasFault() const { return m_hasFault; }
  const cMBusFault& GetFault() const { return m_fault; }
  // The meter has more to say in its next telegram; known when there are no more records.
  bool HasMore() const { return m_hasMore; }

 private:
  bool NextVariable(cMBusRecord& record);
  bool NextFixed(cMBusRecord& record);
  bool TakeDib(cMBusRecord& record);
  bool TakeVib(cMBusRecord& record);
  bool TakePlainUnit(cMBusRecord& record);
  bool TakeData(cMBusRecord& record);
  void TakeMakers(cMBusRecord& record);
  void TakeRest(cMBusRecord& record);
  bool Fail(const char* what, std::size_t at);
  bool HasByte() const { return m_at < m_data.size(); }

  cMBusVib m_vib;
  cBytes m_data;
  std::uint32_t m_offset = 0;  // of m_data in the frame
  std::size_t m_at = 0;
  bool m_fixed = false, m_binary = false, m_stored = false, m_encrypted = false;
  bool m_hasFault = false, m_hasMore = false;
  cMBusFault m_fault;
};

// VIF and VIFE, without the text of a plain text VIF; codes are where they are put together for one.
using cVibCodes = std::array<std::uint8_t, 1 + kMostExtensions>;
cBytes VibCodes(const cMBusRecord& record, cVibCodes& codes);

// "Instantaneous value" and so on, as the standard has it.
const char* FunctionText(eFunction function);

}  // namespace tav::mbus
