// SPDX-License-Identifier: Apache-2.0
// cCaptureFeed: feeds a reader from a file or standard input, which may hold telegrams as people keep them: raw bytes,
// or the same as text of hexadecimal digits; in transport frames, or as the bare messages. Which it is shows in the
// first bytes; of a capture that is no more than messages, up to kMaxFrame bytes are read as one payload.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <gateway/driver/sml/sml_reader.h>

namespace tav::sml {

class cCaptureFeed {
 public:
  // The reader outlives the feed.
  explicit cCaptureFeed(cSmlReader& reader) : m_reader(reader) {}

  void Feed(std::string_view bytes);
  // The capture ends here.
  void Finish();
  // Where text of digits holds something else; nothing is read behind it. Empty: all is well.
  const std::string& GetFault() const { return m_fault; }

 private:
  enum class eForm { Unknown, Bytes, Digits };
  enum class eContent { Unknown, Frames, Messages };

  void TakeHead();
  void Take(std::string_view bytes);
  void TakeDigits(std::string_view digits);
  void TakeContent(std::string_view bytes);

  cSmlReader& m_reader;
  eForm m_form = eForm::Unknown;
  eContent m_content = eContent::Unknown;
  std::string m_head;         // until the form is known
  std::string m_messages;     // that may turn out to be no more than that
  int m_high = -1;            // the first digit of a pair
  std::uint64_t m_taken = 0;  // characters of the text
  std::string m_fault;
};

}  // namespace tav::sml
