// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/sml_writer.h>

#include <gateway/driver/sml/sml_transport.h>

namespace tav::sml {

namespace {

// The two bytes of a checksum as they go on the wire.
std::string WriteCrc(std::string_view bytes, eCrcKind kind) {
  const cBytes checked(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
  const std::uint16_t crc = kind == eCrcKermit ? Crc16Kermit(checked) : Crc16X25(checked);
  const char low = static_cast<char>(crc & 0xFF), high = static_cast<char>(crc >> 8);
  return kind == eCrcKermit ? std::string{high, low} : std::string{low, high};
}

}  // namespace

void cSmlWriter::BeginMessage(std::string_view transactionId, std::uint8_t group, std::uint32_t tag) {
  m_message = m_payload.size();
  List(6);
  Octets(transactionId);
  Unsigned(group, 1);
  Unsigned(0, 1);
  List(2);
  Unsigned(tag, 4);
}

void cSmlWriter::EndMessage() {
  const std::string crc = WriteCrc(std::string_view(m_payload).substr(m_message), m_crc);
  m_payload += '\x63';
  m_payload += crc;
  m_payload += '\0';
}

void cSmlWriter::Octets(std::string_view bytes) {
  TypeLength(0x00, bytes.size());
  m_payload += bytes;
}

void cSmlWriter::Bool(bool value) {
  m_payload += '\x42';
  m_payload += value ? '\x01' : '\0';
}

void cSmlWriter::SecIndex(std::uint32_t seconds) {
  List(2);
  Unsigned(1, 1);
  Unsigned(seconds, 4);
}

void cSmlWriter::Obis(std::uint64_t obis) {
  m_payload += '\x07';
  for (int shift = 40; shift >= 0; shift -= 8) m_payload += static_cast<char>(obis >> shift & 0xFF);
}

std::string cSmlWriter::Frame() const { return WriteSmlFrame(m_payload, m_crc); }

// Four bits of length a byte, the highest first; but for a list it counts the bytes of the field itself.
void cSmlWriter::TypeLength(std::uint8_t type, std::size_t length) {
  unsigned int own = 1;
  const auto total = [&] { return type == 0x70 ? length : length + own; };
  while (total() >> (4 * own) != 0) ++own;
  for (unsigned int left = own; left-- != 0;) {
    unsigned int byte = total() >> (4 * left) & 0x0F;
    if (left + 1 == own) byte |= type;
    if (left != 0) byte |= 0x80;
    m_payload += static_cast<char>(byte);
  }
}

void cSmlWriter::Number(std::uint8_t type, std::uint64_t value, unsigned int width) {
  m_payload += static_cast<char>(type | (width + 1));
  for (unsigned int left = width; left-- != 0;) m_payload += static_cast<char>(value >> (8 * left) & 0xFF);
}

std::string WriteSmlFrame(std::string_view payload, eCrcKind crc) {
  std::string frame(kStartSequence);
  for (std::size_t at = 0; at < payload.size();) {
    if (payload.substr(at, kEscapeSequence.size()) == kEscapeSequence) {
      frame += kEscapeSequence;
      frame += kEscapeSequence;
      at += kEscapeSequence.size();
    } else {
      frame += payload[at++];
    }
  }
  const std::size_t padding = (4 - payload.size() % 4) % 4;
  frame.append(padding, '\0');
  frame += kEscapeSequence;
  frame += '\x1A';
  frame += static_cast<char>(padding);
  return frame += WriteCrc(frame, crc);
}

}  // namespace tav::sml
