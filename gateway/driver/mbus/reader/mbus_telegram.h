// SPDX-License-Identifier: Apache-2.0
// The answer of a meter: what the control information of a long frame says is in it, and the header before the data
// (EN 13757-3, CI field and fixed data header; EN 1434-3 for the fixed data structure).
#pragma once

#include <cstdint>
#include <string>

#include <gateway/driver/mbus/reader/mbus_frame.h>

namespace tav::mbus {

// CI fields of answers. The forms with the most significant byte first (76, 77) are not read: the standard has
// withdrawn them.
enum eInformation : std::uint8_t {
  eCiError = 0x70,        // application error: one byte, ApplicationErrorText
  eCiAlarm = 0x71,        // alarm: one byte, its bits are the maker's
  eCiLongHeader = 0x72,   // 12 bytes of header, then records
  eCiFixed = 0x73,        // the fixed data structure: 16 bytes, two counters
  eCiNoHeader = 0x78,     // records
  eCiShortHeader = 0x7A,  // 4 bytes of header, then records
};

struct cMBusHeader {
  bool hasMeter = false;            // the fields up to medium were sent
  std::uint32_t id = 0;             // eight BCD digits, some meters have A to F among them
  std::uint16_t manufacturer = 0;   // three letters of five bits; 0 in the fixed data structure
  std::uint8_t version = 0;         // of the meter
  std::uint8_t medium = 0;          // as cMeterTav::GetMbusMediumText has it
  std::uint8_t access = 0;          // counts the answers
  std::uint8_t status = 0;          // 0: all is well; of the fixed data structure the bits that tell of errors
  std::uint16_t configuration = 0;  // of encryption; called signature in older meters, which fill it at will
};

struct cMBusTelegram {
  std::uint8_t information = 0;  // eInformation
  std::uint8_t address = 0;      // primary address of who answers
  cMBusHeader header;
  cBytes data;                   // records, both counters, or the byte of an error or alarm
  std::uint32_t dataOffset = 0;  // in the frame
  bool encrypted = false;        // the records are not readable
  bool binary = false;           // of the fixed data structure: its counters are whole numbers, else BCD
  bool stored = false;           // and those of a fixed date, else the current ones

  bool HasRecords() const { return information != eCiError && information != eCiAlarm; }
};

// False, and which byte is wrong, for what is no answer of a meter: other kinds of frames, those of the master, control
// informations that are not in the list above, a header that is not whole.
bool ReadTelegram(const cMBusFrame& frame, cMBusTelegram& telegram, cMBusFault& fault);

// The eight digits of an identification number, "44950146".
std::string IdText(std::uint32_t id);
// "SPX"; the letters of EN 62056-21. A number that is none gives '?' in their place.
std::string ManufacturerText(std::uint16_t manufacturer);
// The other way round; 0 for what is not three capital letters.
std::uint16_t ManufacturerCode(const std::string& letters);
// What the byte of an application error says (EN 13757-3, application errors); never null.
const char* ApplicationErrorText(std::uint8_t code);

}  // namespace tav::mbus
