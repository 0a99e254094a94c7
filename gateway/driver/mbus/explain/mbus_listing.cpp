// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/explain/mbus_listing.h>

#include <algorithm>

#include <gateway/driver/mbus/explain/mbus_field_names.h>
#include <gateway/driver/mbus/explain/mbus_vif_names.h>
#include <gateway/driver/mbus/reader/mbus_text.h>
#include <gateway/form/utf8.h>
#include <tav/framework/helper.h>

namespace tav::mbus {

namespace {

constexpr std::uint8_t kPlainText = 0x7C;
constexpr std::uint8_t kSecondTable = 0x7C;
constexpr std::size_t kSecondStart = 3;

std::string Hex(std::uint8_t byte) { return vorn::FormatString("%02X", byte); }

// A text of the meter's own is shown only when it is one.
std::string Unit(const cMBusRecord& record) {
  if (!std::all_of(record.plainUnit.begin(), record.plainUnit.end(), IsPrintable))
    return "hex:" + HexText(record.plainUnit);
  return form::ToUtf8(UnitText(record));
}

std::string Shown(const cMBusRecord& record) {
  const std::string text = form::ToUtf8(ValueText(record));
  return record.value.kind == eValueText ? '"' + text + '"' : text;
}

std::string Value(const cMBusRecord& record) {
  const std::string unit = Unit(record);
  return Shown(record) + (unit.empty() ? "" : " " + unit);
}

const char* PieceText(ePiece kind) {
  return kind == ePieceFrame ? "" : kind == ePieceBroken ? ", BAD" : ", INCOMPLETE";
}

const char* KindText(eFrameKind kind) {
  return kind == eFrameAck ? "single character" : kind == eFrameShort ? "short frame" : "long frame";
}

std::string DifText(const cMBusRecord& record) {
  return std::string(DataFieldText(record.dib[0])) + ", " + FunctionText(record.function) + ", storage bit " +
         std::to_string(record.dib[0] >> 6 & 1);
}

std::string DifeText(std::uint8_t code) {
  return "storage bits " + std::to_string(code & 0x0F) + ", tariff bits " + std::to_string(code >> 4 & 3) +
         ", subunit bit " + std::to_string(code >> 6 & 1);
}

}  // namespace

std::string RecordName(const cMBusRecord& record) {
  cVibCodes buffer;
  const char* const name = VifName(VibCodes(record, buffer));
  std::string text = name != nullptr ? name : "Value";
  if (record.function != eInstantaneous) text += std::string(", ") + FunctionText(record.function);
  if (record.storage != 0) text += ", storage " + std::to_string(record.storage);
  if (record.tariff != 0) text += ", tariff " + std::to_string(record.tariff);
  if (record.subunit != 0) text += ", subunit " + std::to_string(record.subunit);
  return text;
}

void cMBusListing::Take(std::size_t size, const std::string& text) { TakeTo(m_at + size, text); }

void cMBusListing::TakeTo(std::size_t end, const std::string& text) {
  end = std::min(end, m_bytes.size());
  if (m_at >= end) return;
  m_lines.Row(m_offset + m_at, m_bytes.subspan(m_at, end - m_at), text);
  m_at = end;
}

void cMBusListing::Noise(const cMBusPiece& piece) {
  m_lines.Range(piece.offset, piece.offset + piece.frame.bytes.size(), "no part of a frame");
}

void cMBusListing::BeginFrame(const cMBusPiece& piece) {
  m_bytes = piece.frame.bytes;
  m_at = 0;
  m_offset = piece.offset;
  const bool hasLength = piece.kind == ePieceFrame || piece.fault.offset > kSecondStart;
  m_dataEnd = piece.frame.kind == eFrameLong && hasLength ? std::size_t{4} + m_bytes[1] : m_bytes.size();
  m_lines.Range(m_offset, m_offset + m_bytes.size(),
                std::string(KindText(piece.frame.kind)) + ", " + std::to_string(m_bytes.size()) + " bytes" +
                    PieceText(piece.kind));
  if (piece.frame.kind == eFrameAck) return Take(1, "acknowledge");
  if (piece.frame.kind == eFrameShort) return ShortFields();
  Take(1, "start");
  Take(1, "length " + std::to_string(Byte()));
  Take(1, "length again");
  Take(1, "start again");
  if (hasLength) LongFields();
}

void cMBusListing::ShortFields() {
  m_dataEnd = kShortSize - 2;
  Take(1, "start");
  Take(1, "C " + ControlText(Byte()));
  Take(1, "A " + AddressText(Byte()));
}

void cMBusListing::LongFields() {
  Take(1, "C " + ControlText(Byte()));
  Take(1, "A " + AddressText(Byte()));
  Take(1, std::string("CI ") + InformationText(Byte()));
}

void cMBusListing::Header(const cMBusTelegram& telegram) {
  const cMBusHeader& header = telegram.header;
  switch (telegram.information) {
    case eCiLongHeader:
      Meter(header);
      return Answer(header);
    case eCiShortHeader:
      return Answer(header);
    case eCiFixed:
      Take(4, "identification " + IdText(header.id));
      Take(1, "access number " + std::to_string(header.access));
      Take(1, "status, " + FixedStatusText(Byte()));
      return Take(2, "medium " + MediumText(header.medium) + ", and the units of both counters");
    case eCiError:
      return Take(1, std::string("application error, ") + ApplicationErrorText(Byte()));
    case eCiAlarm:
      return Take(1, "alarm " + Hex(Byte()));
    default:
      return;
  }
}

void cMBusListing::Meter(const cMBusHeader& header) {
  Take(4, "identification " + IdText(header.id));
  Take(2, "manufacturer " + ManufacturerText(header.manufacturer));
  Take(1, "version " + std::to_string(header.version));
  Take(1, "medium " + MediumText(header.medium));
}

void cMBusListing::Answer(const cMBusHeader& header) {
  Take(1, "access number " + std::to_string(header.access));
  Take(1, "status, " + StatusText(header.status));
  Take(2, "configuration, " + ConfigurationText(header.configuration));
}

void cMBusListing::Record(const cMBusTelegram& telegram, const cMBusRecord& record, std::size_t number,
                          const cObisNaming& naming) {
  TakeTo(record.offset, "idle filler");
  Title(record, number, naming);
  if (telegram.information == eCiFixed)
    Take(record.bytes.size(), "counter " + std::to_string(number + 1) + ", " + RawText(record));
  else if (record.dib.empty())
    Take(record.bytes.size(), "not read, " + std::to_string(record.bytes.size()) + " bytes");
  else if (record.function > eErrorState)
    Take(1, "DIF " + Hex(record.dib[0]) + ": " + FunctionText(record.function)),
        Take(record.data.size(), "data of the manufacturer");
  else
    Dib(record), Vib(record), Data(record);
}

void cMBusListing::Title(const cMBusRecord& record, std::size_t number, const cObisNaming& naming) {
  std::string text = "  record " + std::to_string(number) + ": ";
  if (record.dib.empty())
    text += record.mark;
  else if (record.function > eErrorState)
    text += FunctionText(record.function);
  else
    text += (naming.rule ? naming.rule->name : RecordName(record)) + (record.mark != nullptr
                                                                          ? std::string(", ") + record.mark
                                                                      : record.HasValue() ? " = " + Value(record)
                                                                                          : "");
  m_lines.Line(text);
  for (const std::string& note : naming.notes) m_lines.Line("      " + note);
}

void cMBusListing::Dib(const cMBusRecord& record) {
  Take(1, "DIF " + Hex(Byte()) + ": " + DifText(record));
  for (std::size_t i = 1; i < record.dib.size(); ++i) Take(1, "DIFE " + Hex(Byte()) + ": " + DifeText(Byte()));
}

void cMBusListing::Vib(const cMBusRecord& record) {
  cVibCodes buffer;
  const cBytes codes = VibCodes(record, buffer);
  const std::size_t main = CodeSize(codes);
  const std::string scale = record.meaning.scaler != 0 ? ", 10^" + std::to_string(record.meaning.scaler) : "";
  const std::string unit = Unit(record);
  Take(1, "VIF " + Hex(Byte()) + ": " +
              (main == 2 ? "table " + Hex(Byte() | 0x80) : VifName(codes) + scale + (unit.empty() ? "" : " " + unit)));
  if ((codes[0] & 0x7F) == kPlainText) Take(1, "length of the unit"), Take(record.plainUnit.size(), "unit " + unit);
  if (main == 2) Take(1, "VIFE " + Hex(Byte()) + ": " + VifName(codes) + scale + (unit.empty() ? "" : " " + unit));
  for (std::size_t i = main; i < codes.size(); ++i) Vife(codes, i);
}

// Behind the maker's mark the codes are the maker's, behind that of the second table one is of that.
void cMBusListing::Vife(cBytes codes, std::size_t at) {
  const auto isMakers = [](std::uint8_t code) { return (code & 0x7F) == 0x7F; };
  const std::size_t main = CodeSize(codes);
  const bool makers =
      (main == 1 && isMakers(codes[0])) || std::any_of(codes.begin() + static_cast<std::ptrdiff_t>(main),
                                                       codes.begin() + static_cast<std::ptrdiff_t>(at), isMakers);
  const bool second = at > main && (codes[at - 1] & 0x7F) == kSecondTable;
  Take(1, "VIFE " + Hex(Byte()) + ": " +
              (makers   ? "the manufacturer's own"
               : second ? SecondVifeName(Byte())
                        : VifeName(Byte())));
}

void cMBusListing::Data(const cMBusRecord& record) {
  if ((record.dib[0] & 0x0F) == eFieldVariable) Take(1, "length, " + std::to_string(record.data.size()) + " bytes");
  if (record.mark != nullptr) return Take(record.data.size(), std::string("data, unreadable: ") + record.mark);
  Take(record.data.size(), "data, " + (record.value.IsNumber() ? RawText(record) : Shown(record)));
}

void cMBusListing::EndFrame() {
  TakeTo(m_dataEnd, "not read");
  const std::size_t begin = m_bytes[0] == kLongStart ? kDataOffset - kLeastLength : 1;
  const bool isRight = m_at < m_bytes.size() && Byte() == Checksum(m_bytes.subspan(begin, m_at - begin));
  Take(1, std::string("checksum, ") + (isRight ? "right" : "WRONG"));
  Take(1, Byte() == kStop ? "stop" : "no stop");
}

void cMBusListing::Fault(const cMBusFault& fault) {
  m_lines.Line("  FAULT: " + fault.ToString() + ", at offset " + std::to_string(m_offset + fault.offset) +
               " of the capture");
}

}  // namespace tav::mbus
