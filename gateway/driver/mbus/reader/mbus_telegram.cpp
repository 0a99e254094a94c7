// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/reader/mbus_telegram.h>

#include <iterator>

#include <tav/framework/helper.h>

namespace tav::mbus {

namespace {

constexpr std::size_t kLongHeader = 12;
constexpr std::size_t kShortHeader = 4;
constexpr std::size_t kFixedHeader = 6;  // and two bytes of medium and units, which stay with the data
constexpr std::size_t kFixedSize = 16;
constexpr std::uint8_t kInformationAt = 6;

// clang-format off
constexpr const char* kApplicationErrors[] = {
  "unspecified error",
  "control information not implemented",
  "buffer too long, truncated",
  "too many records",
  "premature end of record",
  "more than 10 DIFE",
  "more than 10 VIFE",
  "reserved",
  "application too busy for a readout",
  "too many readouts",
};

// The medium of the fixed data structure by its four bits (EN 1434-3), as the byte of other headers. From 0A on the data
// were sent with the most significant byte first; no meter of that kind is left.
constexpr std::uint8_t kFixedMedia[] = {0x00, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07,
                                        0x08, 0x0F, 0x03, 0x04, 0x06, 0x07, 0x08, 0x0F};
// clang-format on

std::uint16_t Word(cBytes bytes, std::size_t at) { return static_cast<std::uint16_t>(bytes[at] | bytes[at + 1] << 8); }

std::uint32_t Id(cBytes bytes) { return Word(bytes, 0) | std::uint32_t{Word(bytes, 2)} << 16; }

// Security modes 5 and 7: AES over blocks whose number stands in bits 4 to 7. A telegram that was decrypted in place
// begins with two idle fillers.
bool IsEncrypted(const cMBusTelegram& telegram) {
  const unsigned int mode = telegram.header.configuration >> 8 & 0x1F;
  const bool isOpen = telegram.data.size() >= 2 && telegram.data[0] == 0x2F && telegram.data[1] == 0x2F;
  return (mode == 5 || mode == 7) && (telegram.header.configuration & 0xF0) != 0 && !isOpen;
}

void ReadLongHeader(cBytes bytes, cMBusTelegram& telegram) {
  telegram.header = {true, Id(bytes), Word(bytes, 4), bytes[6], bytes[7], bytes[8], bytes[9], Word(bytes, 10)};
}

void ReadShortHeader(cBytes bytes, cMBusTelegram& telegram) {
  telegram.header.access = bytes[0];
  telegram.header.status = bytes[1];
  telegram.header.configuration = Word(bytes, 2);
}

void ReadFixedHeader(cBytes bytes, cMBusTelegram& telegram) {
  const std::uint8_t status = bytes[5];
  telegram.binary = (status & 0x01) != 0;
  telegram.stored = (status & 0x02) != 0;
  const auto medium = static_cast<unsigned int>(bytes[6] >> 6 | bytes[7] >> 6 << 2);
  const auto errors = static_cast<std::uint8_t>(status & 0xFC);
  telegram.header = {true, Id(bytes), 0, 0, kFixedMedia[medium], bytes[4], errors, 0};
}

bool Refuse(cMBusFault& fault, const char* what, std::size_t offset, int found = -1) {
  fault = {what, static_cast<std::uint32_t>(offset), found};
  return false;
}

bool TakeHeader(std::size_t size, void (*read)(cBytes, cMBusTelegram&), cMBusTelegram& telegram, cMBusFault& fault) {
  if (telegram.data.size() < size)
    return Refuse(fault, "the header ends too early", kDataOffset + telegram.data.size());
  read(telegram.data, telegram);
  telegram.data = telegram.data.subspan(size);
  telegram.dataOffset += static_cast<std::uint32_t>(size);
  telegram.encrypted = IsEncrypted(telegram);
  return true;
}

bool TakeFixed(cMBusTelegram& telegram, cMBusFault& fault) {
  if (telegram.data.size() == kFixedSize) return TakeHeader(kFixedHeader, ReadFixedHeader, telegram, fault);
  return telegram.data.size() < kFixedSize
             ? Refuse(fault, "the fixed data structure ends too early", kDataOffset + telegram.data.size())
             : Refuse(fault, "bytes behind the fixed data structure", kDataOffset + kFixedSize);
}

bool TakeData(cMBusTelegram& telegram, cMBusFault& fault) {
  switch (telegram.information) {
    case eCiLongHeader:
      return TakeHeader(kLongHeader, ReadLongHeader, telegram, fault);
    case eCiShortHeader:
      return TakeHeader(kShortHeader, ReadShortHeader, telegram, fault);
    case eCiFixed:
      return TakeFixed(telegram, fault);
    case eCiError:
    case eCiAlarm:
    case eCiNoHeader:
      return true;
    case 0x76:
    case 0x77:
      return Refuse(fault, "data with the most significant byte first, a form that is withdrawn", kInformationAt,
                    telegram.information);
    default:
      return Refuse(fault, "a control information that no meter answers with", kInformationAt, telegram.information);
  }
}

}  // namespace

bool ReadTelegram(const cMBusFrame& frame, cMBusTelegram& telegram, cMBusFault& fault) {
  telegram = {};
  if (frame.kind != eFrameLong)
    return Refuse(fault, "a frame without data", 0, frame.bytes.empty() ? -1 : frame.bytes[0]);
  if ((frame.control & kFromMaster) != 0) return Refuse(fault, "a request of the master, no answer", 4, frame.control);
  telegram.information = frame.information;
  telegram.address = frame.address;
  telegram.data = frame.data;
  telegram.dataOffset = kDataOffset;
  return TakeData(telegram, fault);
}

std::string IdText(std::uint32_t id) { return vorn::FormatString("%08X", id); }

std::string ManufacturerText(std::uint16_t manufacturer) {
  std::string letters;
  for (const int shift : {10, 5, 0}) {
    const unsigned int letter = manufacturer >> shift & 0x1F;
    letters += letter >= 1 && letter <= 26 ? static_cast<char>('A' + letter - 1) : '?';
  }
  return letters;
}

std::uint16_t ManufacturerCode(const std::string& letters) {
  if (letters.size() != 3) return 0;
  unsigned int code = 0;
  for (const char letter : letters) {
    if (letter < 'A' || letter > 'Z') return 0;
    code = code << 5 | static_cast<unsigned int>(letter - 'A' + 1);
  }
  return static_cast<std::uint16_t>(code);
}

const char* ApplicationErrorText(std::uint8_t code) {
  return code < std::size(kApplicationErrors) ? kApplicationErrors[code] : "reserved";
}

}  // namespace tav::mbus
