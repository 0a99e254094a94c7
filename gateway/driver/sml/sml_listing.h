// SPDX-License-Identifier: Apache-2.0
// The human half of the explanation: a line for every element of a payload, with its offset, its bytes, its name in the
// standard and what it says.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <gateway/driver/capture_listing.h>
#include <gateway/driver/sml/sml_cursor.h>
#include <gateway/driver/sml/sml_explain.h>
#include <gateway/driver/sml/sml_message.h>
#include <gateway/driver/sml/sml_transport.h>

namespace tav::sml {

// The value of an entry as the meter means it: "5430157.7", "hex:0A01", "true"; empty when it sent none.
std::string ValueText(const cSmlValue& value, std::int8_t scaler);
// A meter by its server id: the text when it is printable, else its hexadecimal digits.
std::string MeterText(cBytes serverId);

// A field of the standard; its fields when it is a list.
struct cSmlField {
  const char* name;
  const cSmlField* fields;
  std::size_t count;
};

class cSmlListing {
 public:
  explicit cSmlListing(const cObisNamer& namer) : m_namer(namer) {}

  // A line about bytes from one offset of the capture to another.
  void Range(std::uint64_t from, std::uint64_t to, const std::string& text) { m_lines.Range(from, to, text); }
  // From here on payload offsets are those of this frame; raw are its bytes in the capture.
  void BeginFrame(const cSmlFrame& frame, cBytes raw);
  // Its end sequence; not for one that has none.
  void EndFrame(const cSmlFrame& frame, cBytes raw);
  void Message(const cSmlMessage& message, std::size_t number);
  // A message that could be read up to a fault, after which the payload is in the dark.
  void BrokenMessage(const cSmlMessage& message, std::size_t number, const cSmlFault& fault);

  // Where a byte of the payload is in the capture.
  std::uint64_t OffsetOf(std::uint32_t payloadOffset) const;
  const std::string& GetText() const { return m_lines.GetText(); }

 private:
  void Rows(const cSmlMessage& message, std::uint32_t end);
  void Fault(const cSmlFault& fault);
  bool Element(cSmlCursor& cursor, const cSmlField& field, unsigned int depth);
  bool Elements(cSmlCursor& cursor, const cSmlField& list, std::uint32_t count, unsigned int depth);
  void Entry(const cSmlEntry& entry);
  void Row(std::uint32_t offset, std::uint32_t size, unsigned int depth, const std::string& text);
  std::string Meaning(const cSmlField& field, const cSmlValue& value) const;
  const cSmlEntry* EntryAt(std::uint32_t offset) const;

  const cObisNamer& m_namer;
  cCaptureListing m_lines;
  cBytes m_payload;
  std::uint64_t m_begin = 0;             // offset of the payload's first byte in the capture
  std::vector<std::uint32_t> m_escapes;  // payload offsets behind each doubled escape sequence
  const cSmlMessage* m_message = nullptr;
};

}  // namespace tav::sml
