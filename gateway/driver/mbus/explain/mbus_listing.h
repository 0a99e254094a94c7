// SPDX-License-Identifier: Apache-2.0
// The human half of the explanation: a line for every field of a frame, with its offset, its bytes, its name in the
// standard and what it says. Bytes are taken in their order, so that none is left out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include <gateway/driver/capture_explain.h>
#include <gateway/driver/capture_listing.h>
#include <gateway/driver/mbus/explain/mbus_pieces.h>
#include <gateway/driver/mbus/reader/mbus_reader.h>

namespace tav::mbus {

class cMBusListing {
 public:
  void Noise(const cMBusPiece& piece);
  // The fields of the frame, up to its data.
  void BeginFrame(const cMBusPiece& piece);
  // The header of an answer, or all of its data where they are no records.
  void Header(const cMBusTelegram& telegram);
  void Record(const cMBusTelegram& telegram, const cMBusRecord& record, std::size_t number, const cObisNaming& naming);
  // What was not read, and how the frame ends.
  void EndFrame();
  // Why a frame is bad.
  void Fault(const cMBusFault& fault);

  const std::string& GetText() const { return m_lines.GetText(); }

 private:
  void Take(std::size_t size, const std::string& text);
  void TakeTo(std::size_t end, const std::string& text);
  std::uint8_t Byte() const { return m_at < m_bytes.size() ? m_bytes[m_at] : std::uint8_t{0}; }
  void ShortFields();
  void LongFields();
  void Meter(const cMBusHeader& header);
  void Answer(const cMBusHeader& header);
  void Title(const cMBusRecord& record, std::size_t number, const cObisNaming& naming);
  void Dib(const cMBusRecord& record);
  void Vib(const cMBusRecord& record);
  void Vife(cBytes codes, std::size_t at);
  void Data(const cMBusRecord& record);

  cCaptureListing m_lines;
  cBytes m_bytes;              // of the frame
  std::size_t m_at = 0;        // of the first that has no line yet
  std::size_t m_dataEnd = 0;   // where the checksum is
  std::uint64_t m_offset = 0;  // of the frame in the capture
};

// What a record is about and which of its values it is: "Volume, Maximum value, storage 1".
std::string RecordName(const cMBusRecord& record);

}  // namespace tav::mbus
