// SPDX-License-Identifier: Apache-2.0
// cMBusSearch: which masks to ask for next when meters are searched with wildcards. It knows no line: whoever asks says
// what came of each mask.
//
// A mask that several match is replaced by those with one more part filled in: the digits of the identification from
// the first on; where identifications are alike the version, then the medium, both of which can be asked through, then
// the manufacturer, of which only those are asked that are on the bus already or that make meters for it. A digit above
// 9, which no identification should have, is asked for where the decimal ones do not account for two meters.
#pragma once

#include <cstdint>
#include <vector>

#include <gateway/driver/mbus/master/mbus_address.h>

namespace tav::mbus {

class cMBusSearch {
 public:
  explicit cMBusSearch(const cMBusAddress& mask) : m_mask(mask) {}

  // The next mask to ask for; false: all are asked.
  bool Next(cMBusAddress& mask);
  // That mask was asked already, and nothing came of those it was replaced by: what it is cannot be told apart.
  bool IsLeftOver() const { return m_isLeftOver; }
  // The latest mask has several, or an answer that cannot be read; false: it cannot be narrowed down.
  bool Narrow();
  // A meter came of the latest mask.
  void NoteFound(std::uint16_t manufacturer);
  // The part of all masks that is done, 0 to 1.
  double GetDone() const { return m_done; }

 private:
  enum class ePart { Digit, Version, Medium, Manufacturer };

  // Masks that differ in one part.
  struct cLevel {
    cMBusAddress mask;
    ePart part = ePart::Digit;
    unsigned int shift = 0;  // of the digit
    std::vector<std::uint16_t> values;
    std::size_t next = 0;
    double weight = 0;  // of each
    unsigned int foundAtBegin = 0;
    bool isExtended = false;
  };

  bool TakeNext(cMBusAddress& mask);
  static bool OpenPart(const cMBusAddress& mask, cLevel& level);
  static cMBusAddress Fill(const cLevel& level, std::uint16_t value);
  std::vector<std::uint16_t> Values(ePart part) const;
  bool Extend(cLevel& level) const;
  void Settle();

  cMBusAddress m_mask;  // the latest
  std::vector<cLevel> m_levels;
  std::vector<std::uint16_t> m_manufacturers;  // of what was found
  unsigned int m_found = 0;
  double m_weight = 1;  // of the latest mask, until it is settled
  double m_done = 0;
  bool m_isBegun = false;
  bool m_isLeftOver = false;
};

}  // namespace tav::mbus
