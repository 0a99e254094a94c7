// SPDX-License-Identifier: Apache-2.0
// A capture as people keep them: raw bytes, or the same as text of hexadecimal digits; SML in transport frames, or the
// bare messages. Which it is is found by looking.
#pragma once

#include <string>
#include <string_view>

#include <gateway/driver/sml/sml_types.h>

namespace tav::sml {

class cSmlInput {
 public:
  // Text is taken as digits when it holds nothing but pairs of them, blanks and line ends, and at least one pair.
  explicit cSmlInput(std::string_view capture);

  cBytes GetBytes() const { return {reinterpret_cast<const std::uint8_t*>(m_bytes.data()), m_bytes.size()}; }
  bool IsHexText() const { return m_hexText; }
  // Messages without a transport frame: no start sequence anywhere, and the first byte is that of a message.
  bool IsPayload() const;

 private:
  std::string m_bytes;
  bool m_hexText = false;
};

}  // namespace tav::sml
