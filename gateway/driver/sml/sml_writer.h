// SPDX-License-Identifier: Apache-2.0
// Writes SML: elements into messages, messages into a payload, the payload into a transport frame (BSI TR-03109-1,
// Anlage SML). What the simulator sends and the tests read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include <gateway/driver/sml/crc16.h>

namespace tav::sml {

class cSmlWriter {
 public:
  // The checksum of messages and frame.
  explicit cSmlWriter(eCrcKind crc = eCrcX25) : m_crc(crc) {}

  // Everything from its head to the tag; the body is the one element written next.
  void BeginMessage(std::string_view transactionId, std::uint8_t group, std::uint32_t tag);
  // Checksum and end of message.
  void EndMessage();

  void List(std::size_t count) { TypeLength(0x70, count); }
  void Octets(std::string_view bytes);
  void Absent() { m_payload += '\x01'; }
  void Bool(bool value);
  // Width: bytes on the wire, 1 to 8.
  void Unsigned(std::uint64_t value, unsigned int width) { Number(0x60, value, width); }
  void Signed(std::int64_t value, unsigned int width) { Number(0x50, static_cast<std::uint64_t>(value), width); }
  // A choice of time with the seconds index.
  void SecIndex(std::uint32_t seconds);
  void Obis(std::uint64_t obis);
  // Bytes as they are.
  void Raw(std::string_view bytes) { m_payload += bytes; }

  const std::string& GetPayload() const { return m_payload; }
  // The payload in a transport frame: escapes, padding, checksum.
  std::string Frame() const;

 private:
  void TypeLength(std::uint8_t type, std::size_t length);
  void Number(std::uint8_t type, std::uint64_t value, unsigned int width);

  eCrcKind m_crc;
  std::string m_payload;
  std::size_t m_message = 0;  // where the open message begins
};

// A payload of any bytes in a transport frame.
std::string WriteSmlFrame(std::string_view payload, eCrcKind crc = eCrcX25);

}  // namespace tav::sml
