// SPDX-License-Identifier: Apache-2.0
// The half of the explanation that is for programs: one document of all telegrams (mbus_explain.h shows it).
#pragma once

#include <cstddef>
#include <string>

#include <gateway/driver/capture_document.h>
#include <gateway/driver/capture_explain.h>
#include <gateway/driver/mbus/explain/mbus_pieces.h>
#include <gateway/driver/mbus/reader/mbus_reader.h>

namespace tav::mbus {

class cMBusDocument {
 public:
  // A telegram; what follows is about this one.
  void Begin(const cMBusPiece& piece);
  void Header(const cMBusTelegram& telegram);
  void Record(const cMBusRecord& record, std::size_t number, const cObisNaming& naming);
  // why: null for a good one.
  void End(const cMBusFault* why, bool hasMore);

  // One line.
  std::string ToText(const cExplanation::cCounts& counts) const;

 private:
  cCaptureJson m_telegram;
  std::string m_telegrams;  // those that are complete, as text: a capture may hold a great many
};

}  // namespace tav::mbus
