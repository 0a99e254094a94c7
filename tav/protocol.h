// SPDX-License-Identifier: Apache-2.0
// The form in which a service's protocol is written down once: record keys, message numbers, messages. Clients,
// services, tavctl and the protocol pages all read the tables of this form, so that no number and no key stands twice.
//
// A request N is answered by its `answer` or, with the text parameter "reason", by its `refusal`. An answer has a row
// of its own only where its parameters are worth telling; MessageName names those without one as well.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include <tav/export.h>
#include <tav/framework/record.h>

namespace tav {

// The name of a parameter, the one type it has in this protocol, and what it means.
struct cProtocolKey {
  std::string_view name;
  vorn::eParType type = vorn::eParNone;
  std::string_view meaning;

  constexpr operator std::string_view() const { return name; }  // NOLINT(google-explicit-constructor): keys are names
};

enum eParUse : unsigned int {
  eRequired,  // there, once
  eOptional,  // there or not
  eRepeated,  // any number of them, none included
};

struct cProtocolParameter {
  cProtocolKey key;
  eParUse use = eRequired;
};

enum eDirection : unsigned int { eToService, eToClient };

struct cProtocolMessage {
  static constexpr std::size_t kMaxParameters = 16;

  unsigned int id;
  std::string_view name;
  eDirection direction;
  cProtocolParameter parameters[kMaxParameters];  // those behind the last one have an empty name
  unsigned int answer;                            // 0: there is none
  unsigned int refusal;                           // 0: it is never refused
  std::string_view meaning;

  constexpr std::size_t CountParameters() const {
    std::size_t count = 0;
    while (count < kMaxParameters && !parameters[count].key.name.empty()) ++count;
    return count;
  }
};

// All messages of one service, in ascending order of their numbers.
class cProtocol {
 public:
  template <std::size_t N>
  constexpr cProtocol(std::string_view service, const cProtocolMessage (&messages)[N])
      : m_service(service), m_messages(messages), m_count(N) {}

  // The name of the channel it is spoken on.
  constexpr std::string_view GetService() const { return m_service; }
  constexpr const cProtocolMessage* begin() const { return m_messages; }
  constexpr const cProtocolMessage* end() const { return m_messages + m_count; }

  // Null when no row has that number.
  constexpr const cProtocolMessage* Find(unsigned int id) const {
    const std::size_t at = IndexOf(id);
    return at < m_count ? m_messages + at : nullptr;
  }

  // What every protocol's header asserts of its table.
  constexpr bool HasAscendingIds() const {
    for (std::size_t i = 1; i < m_count; ++i)
      if (m_messages[i - 1].id >= m_messages[i].id) return false;
    return true;
  }
  constexpr bool HasNoEmptyText() const {
    for (const cProtocolMessage& message : *this) {
      if (message.name.empty() || message.meaning.empty()) return false;
      for (std::size_t i = 0; i < message.CountParameters(); ++i)
        if (message.parameters[i].key.meaning.empty() || message.parameters[i].key.type == vorn::eParNone) return false;
    }
    return !m_service.empty();
  }
  // An answer that has a row goes the other way than its request.
  constexpr bool AnswersGoBack() const {
    for (const cProtocolMessage& message : *this)
      for (const unsigned int id : {message.answer, message.refusal})
        if (IndexOf(id) < m_count && m_messages[IndexOf(id)].direction == message.direction) return false;
    return true;
  }

 private:
  // The number of rows when there is none of that number.
  constexpr std::size_t IndexOf(unsigned int id) const {
    std::size_t low = 0;
    for (std::size_t high = m_count; low < high;) {
      const std::size_t middle = low + (high - low) / 2;
      if (m_messages[middle].id < id)
        low = middle + 1;
      else
        high = middle;
    }
    return low < m_count && m_messages[low].id == id ? low : m_count;
  }

  std::string_view m_service;
  const cProtocolMessage* m_messages;
  std::size_t m_count;
};

// "text", "uint", ... as the tables and the diagnostics say it; "none" for the type of an invalid parameter.
TAV_API std::string_view ParTypeName(unsigned int type);

// A name for traces: the row's; of an answer without a row its request's name and "-done" or "-failed"; else the
// number.
TAV_API std::string MessageName(const cProtocol& protocol, unsigned int id);

// Whether a record has what the message asks for: every required parameter, and each named one of its type. Parameters
// that the table does not name are let pass. False, and in error which parameter, what was expected and what was found.
TAV_API bool CheckParameters(const cProtocolMessage& message, const vorn::cRecord& record, std::string& error);

}  // namespace tav
