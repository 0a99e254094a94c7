// SPDX-License-Identifier: Apache-2.0
// From the bytes of a meter to its lists of values: start here. Transport frames, messages and both checksums are dealt
// with; what reaches the sink as a list has passed them. Nothing is allocated per frame or field.
//
//   class cMySink : public cSmlSink {
//     void OnList(const cSmlFrame&, const cSmlList& list) override { for (const cSmlEntry& entry : list.entries) ... }
//   };
//   cSmlReader reader(sink);
//   reader.Feed(bytes, size);   // as they come
#pragma once

#include <cstddef>
#include <cstdint>

#include <gateway/driver/sml/sml_message.h>
#include <gateway/driver/sml/sml_transport.h>
#include <gateway/driver/sml/sml_types.h>

namespace tav::sml {

class cSmlSink {
 public:
  virtual ~cSmlSink() = default;

  // A list of values whose frame and message are right. A list without a server id bears that of the open response
  // before it. Views live during the call.
  virtual void OnList(const cSmlFrame& frame, const cSmlList& list) = 0;
  // Something within a good frame that cannot be used: a message with a wrong checksum, a body that is none, bytes that
  // are no message. Its offset counts within the frame's payload.
  virtual void OnFault(const cSmlFrame&, const cSmlFault&) {}
  // Every frame, before its lists; one that is not good gives none.
  virtual void OnFrame(const cSmlFrame&) {}
};

struct cSmlMessageCounts {
  std::uint64_t messages = 0;  // read to their end
  std::uint64_t lists = 0;     // handed over
  std::uint64_t others = 0;    // neither list, open nor close: passed over
  std::uint64_t badCrc = 0;    // messages dropped because of their checksum
  std::uint64_t faults = 0;    // everything reported by OnFault, wrong checksums included
};

class cSmlReader {
 public:
  // The sink must outlive the reader and must not feed it.
  explicit cSmlReader(cSmlSink& sink);

  void Feed(const void* bytes, std::size_t size) { m_transport.Feed(bytes, size); }
  // The stream ends here.
  void Finish() { m_transport.Finish(); }
  // Messages without a transport frame: the whole of them at once.
  void ReadPayload(cBytes payload);

  const cSmlCounts& GetFrameCounts() const { return m_transport.GetCounts(); }
  const cSmlMessageCounts& GetMessageCounts() const { return m_counts; }

 private:
  void OnFrame(const cSmlFrame& frame);
  void OnMessage(const cSmlFrame& frame);
  void OnList(const cSmlFrame& frame);
  void Fault(const cSmlFrame& frame, const cSmlFault& fault);

  cSmlSink& m_sink;
  cSmlTransport m_transport;
  cSmlMessages m_messages;
  cSmlMessage m_message;
  cBytes m_openServerId;
  cSmlMessageCounts m_counts;
};

}  // namespace tav::sml
