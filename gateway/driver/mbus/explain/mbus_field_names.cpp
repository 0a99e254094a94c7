// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/explain/mbus_field_names.h>

#include <algorithm>
#include <iterator>

#include <tav/record/meter_tav.h>

namespace tav::mbus {

namespace {

constexpr std::uint8_t kFrameCountValid = 0x10;
constexpr std::uint8_t kAccessDemand = 0x20;  // of answers, in the place of the frame count bit
constexpr std::uint8_t kDataFlowControl = 0x10;

struct cCodeRow {
  std::uint8_t code;
  const char* name;
};

// clang-format off

// EN 13757-2, function codes; the bits of the frame count and of flow control are left out.
constexpr cCodeRow kControls[] = {
  {0x00, "ACK"},
  {0x01, "NACK"},
  {0x08, "RSP_UD"},
  {0x0B, "status of the link"},
  {0x40, "SND_NKE"},
  {0x43, "SND_UD"},
  {0x44, "SND_NR"},
  {0x49, "REQ_SKE"},
  {0x4A, "REQ_UD1"},
  {0x4B, "REQ_UD2"},
};

// EN 13757-7, CI field codes, those of wired meters.
constexpr cCodeRow kInformations[] = {
  {0x50, "application reset"},
  {0x51, "data send"},
  {0x52, "selection of slaves"},
  {0x54, "synchronise"},
  {0x5A, "command behind a short header"},
  {0x5B, "command behind a long header"},
  {0x60, "COSEM data behind a long header"},
  {0x61, "COSEM data behind a short header"},
  {0x6C, "clock synchronisation, absolute"},
  {0x6D, "clock synchronisation, relative"},
  {0x6E, "application error behind a short header"},
  {0x6F, "application error behind a long header"},
  {0x70, "application error"},
  {0x71, "alarm"},
  {0x72, "records behind a header of 12 bytes"},
  {0x73, "fixed data structure"},
  {0x74, "alarm behind a short header"},
  {0x75, "alarm behind a long header"},
  {0x76, "records behind a header of 12 bytes, most significant byte first"},
  {0x77, "fixed data structure, most significant byte first"},
  {0x78, "records without a header"},
  {0x79, "compact records without a header"},
  {0x7A, "records behind a header of 4 bytes"},
  {0xB8, "set baud rate to 300"},
  {0xB9, "set baud rate to 600"},
  {0xBA, "set baud rate to 1200"},
  {0xBB, "set baud rate to 2400"},
  {0xBC, "set baud rate to 4800"},
  {0xBD, "set baud rate to 9600"},
  {0xBE, "set baud rate to 19200"},
  {0xBF, "set baud rate to 38400"},
};

// EN 13757-3, coding of the data field.
constexpr const char* kFields[16] = {
  "no data",
  "8 bit integer",
  "16 bit integer",
  "24 bit integer",
  "32 bit integer",
  "32 bit real",
  "48 bit integer",
  "64 bit integer",
  "selection for readout",
  "2 digits BCD",
  "4 digits BCD",
  "6 digits BCD",
  "8 digits BCD",
  "variable length",
  "12 digits BCD",
  "special function",
};

// EN 13757-3, status field, bits 0 and 1, and bits 2 to 4.
constexpr const char* kApplicationStates[4] = {"", "application busy", "application error", "abnormal condition"};
constexpr const char* kStatusBits[3] = {"low power", "permanent error", "temporary error"};

// clang-format on

template <std::size_t N>
const char* NameOf(const cCodeRow (&rows)[N], std::uint8_t code) {
  const auto* const row =
      std::find_if(std::begin(rows), std::end(rows), [=](const cCodeRow& each) { return each.code == code; });
  return row != std::end(rows) ? row->name : "not known";
}

void Add(std::string& text, const char* part) {
  if (*part != '\0') text += (text.empty() ? "" : ", ") + std::string(part);
}

std::string ErrorBits(std::uint8_t status, std::string text) {
  for (unsigned int i = 0; i < 3; ++i)
    if ((status >> (2 + i) & 1) != 0) Add(text, kStatusBits[i]);
  if ((status & 0xE0) != 0) Add(text, "bits of the manufacturer");
  return text;
}

}  // namespace

std::string ControlText(std::uint8_t control) {
  const bool counted = (control & kFrameCountValid) != 0;
  if ((control & kFromMaster) != 0)
    return std::string(NameOf(kControls, control & 0x4F)) +
           (counted ? (control & kFcb) != 0 ? ", frame count bit 1" : ", frame count bit 0" : "");
  return std::string(NameOf(kControls, control & 0x4F)) + ((control & kAccessDemand) != 0 ? ", access demand" : "") +
         ((control & kDataFlowControl) != 0 ? ", data flow control" : "");
}

std::string AddressText(std::uint8_t address) {
  switch (address) {
    case kUnconfigured:
      return "primary address 0, not configured";
    case kSecondary:
      return "whoever is selected";
    case kBroadcastReply:
      return "all, and all answer";
    case kBroadcast:
      return "all, and none answers";
    default:
      return (address <= kLastPrimary ? "primary address " : "reserved address ") + std::to_string(address);
  }
}

const char* InformationText(std::uint8_t information) { return NameOf(kInformations, information); }

std::string StatusText(std::uint8_t status) {
  const std::string text = ErrorBits(status, kApplicationStates[status & 0x03]);
  return text.empty() ? "no error" : text;
}

std::string FixedStatusText(std::uint8_t status) {
  return ErrorBits(status, std::string((status & 0x01) != 0 ? "counters as whole numbers" : "counters in BCD") +
                               ((status & 0x02) != 0 ? ", of a fixed date" : ", current"));
}

std::string ConfigurationText(std::uint16_t configuration) {
  const unsigned int mode = configuration >> 8 & 0x1F;
  if (mode == 0) return "not encrypted";
  return "mode " + std::to_string(mode) + ", " + std::to_string(configuration >> 4 & 0x0F) + " encrypted blocks";
}

std::string MediumText(std::uint8_t medium) {
  const std::string letter = cMeterTav::GetMbusMediumText(medium);
  return letter + ", " + cMeterTav::MediumToString(letter);
}

const char* DataFieldText(std::uint8_t field) { return kFields[field & 0x0F]; }

}  // namespace tav::mbus
