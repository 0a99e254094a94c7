// SPDX-License-Identifier: Apache-2.0
// cConfigFaults: everything that is wrong with a change of the configuration; cPlace: where in it one looks just now.
//
// No fault holds a key or a password: what it quotes is a name, a number or an identifier.
#pragma once

#include <string>
#include <string_view>
#include <utility>

namespace tav::data {

class cConfigFaults {
 public:
  bool IsEmpty() const { return m_count == 0; }
  // "place: fault; place: fault; and 3 more".
  std::string GetText() const;

 private:
  friend class cPlace;
  void Add(const std::string& fault);

  std::string m_text;
  std::size_t m_count = 0;
};

// Faults are told with the place before them: "meter '123': collector '1': event-type ...".
class cPlace {
 public:
  explicit cPlace(cConfigFaults& faults, std::string place = {}) : m_faults(faults), m_place(std::move(place)) {}

  cPlace In(const std::string& part) const { return cPlace(m_faults, m_place + part + ": "); }
  void Fault(const std::string& fault) const { m_faults.Add(m_place + fault); }

 private:
  cConfigFaults& m_faults;
  std::string m_place;
};

// A name for people, in single quotes: control characters as "?", the end of a long one as "...".
std::string QuotedName(std::string_view name);

}  // namespace tav::data
