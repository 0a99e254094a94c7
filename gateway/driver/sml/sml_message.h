// SPDX-License-Identifier: Apache-2.0
// The messages of a payload, one after the other and in place (SML_Message), with the bodies that meters push: open
// response and list of values. Other bodies are passed over.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include <gateway/driver/sml/crc16.h>
#include <gateway/driver/sml/sml_cursor.h>
#include <gateway/driver/sml/sml_types.h>

namespace tav::sml {

// Entries a list may have; household meters send 5 to 30. A longer list is a fault.
inline constexpr std::size_t kMaxEntries = 250;

// SML_MessageBody; the other numbers only have a name.
enum eSmlBody : std::uint32_t {
  eSmlOpenResponse = 0x00000101,
  eSmlCloseResponse = 0x00000201,
  eSmlGetListResponse = 0x00000701,
};

// SML_PublicOpen.Res.
struct cSmlOpen {
  cBytes codepage, clientId, requestFileId, serverId;
  cSmlTime referenceTime;
  std::uint8_t version = 1;
};

// SML_GetList.Res.
struct cSmlList {
  // The meter's own time where it tells one, in seconds since 1970-01-01 UTC: that of the list, else of an entry.
  std::optional<std::uint32_t> MeterTime() const;

  cBytes clientId, serverId, listName;
  cSmlTime sensorTime;
  std::span<const cSmlEntry> entries;  // live until the next message is read
  cBytes signature;
  cSmlTime gatewayTime;
};

struct cSmlMessage {
  std::uint32_t offset = 0;  // in the payload
  std::uint32_t size = 0;    // with the end of message
  cBytes transactionId;
  std::uint8_t group = 0;
  std::uint8_t abortOnError = 0;
  std::uint32_t tag = 0;        // eSmlBody or another
  std::uint32_t crcOffset = 0;  // of the checksum
  eCrcKind crc = eCrcNone;      // which one fitted; with none the content is as sent, but not to be trusted
  bool readable = true;         // false: the body is not what its tag says, fault tells why
  cSmlFault fault;
  cSmlOpen open;  // of an open response
  cSmlList list;  // of a list response; where it is not readable, with the entries before the fault
};

// "GetList.Res", "Open.Res", ...; "unknown" for a number that is none.
const char* SmlBodyText(std::uint32_t tag);

class cSmlMessages {
 public:
  // Begins with the first message of these bytes, which must outlive the reading.
  void Begin(cBytes payload);
  // False behind the last message, and at a fault: the bytes behind that cannot be read. At a fault the message has its
  // offset, size 0 and what could be read of it.
  bool Next(cSmlMessage& message);

  bool HasFault() const { return m_failed; }
  const cSmlFault& GetFault() const { return m_fault; }

 private:
  bool ReadBody(cSmlCursor& cursor, cSmlMessage& message);
  bool ReadList(cSmlCursor& at, cSmlList& list);

  cBytes m_payload;
  std::size_t m_at = 0;
  bool m_failed = false;
  cSmlFault m_fault;
  std::array<cSmlEntry, kMaxEntries> m_entries;
};

}  // namespace tav::sml
