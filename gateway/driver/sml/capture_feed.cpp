// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/capture_feed.h>

#include <algorithm>

#include <gateway/driver/sml/sml_transport.h>

namespace tav::sml {

namespace {

// So many bytes that are all digits or blanks are no telegram: it has zeros and ones in every line.
constexpr std::size_t kHead = 64;
constexpr std::string_view kBlanks = " \t\r\n";
constexpr std::string_view kStart("\x1B\x1B\x1B\x1B\x01\x01\x01\x01", 8);
constexpr char kMessage = 0x76;  // a list of six

int Digit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

bool IsBlank(char c) { return kBlanks.find(c) != std::string_view::npos; }

bool AreDigits(std::string_view text) {
  return std::any_of(text.begin(), text.end(), [](char c) { return Digit(c) >= 0; }) &&
         std::all_of(text.begin(), text.end(), [](char c) { return Digit(c) >= 0 || IsBlank(c); });
}

}  // namespace

void cCaptureFeed::Feed(std::string_view bytes) {
  if (m_form != eForm::Unknown) {
    Take(bytes);
    return;
  }
  m_head.append(bytes);
  if (m_head.size() >= kHead) TakeHead();
}

void cCaptureFeed::TakeHead() {
  m_form = AreDigits(std::string_view(m_head).substr(0, kHead)) ? eForm::Digits : eForm::Bytes;
  Take(m_head);
  m_head.clear();
}

void cCaptureFeed::Take(std::string_view bytes) {
  if (m_form == eForm::Digits)
    TakeDigits(bytes);
  else
    TakeContent(bytes);
}

void cCaptureFeed::TakeDigits(std::string_view digits) {
  std::string bytes;
  for (const char c : digits) {
    if (!m_fault.empty()) break;
    ++m_taken;
    if (IsBlank(c)) continue;
    const int digit = Digit(c);
    if (digit < 0) {
      m_fault = "character " + std::to_string(m_taken) + " is no hexadecimal digit, as those before it";
    } else if (m_high < 0) {
      m_high = digit;
    } else {
      bytes += static_cast<char>(m_high << 4 | digit);
      m_high = -1;
    }
  }
  TakeContent(bytes);
}

void cCaptureFeed::TakeContent(std::string_view bytes) {
  if (bytes.empty()) return;
  if (m_content == eContent::Unknown) m_content = bytes.front() == kMessage ? eContent::Messages : eContent::Frames;
  if (m_content == eContent::Frames) {
    m_reader.Feed(bytes.data(), bytes.size());
    return;
  }
  const std::size_t before = m_messages.size();
  m_messages.append(bytes);
  const bool hasFrame = m_messages.find(kStart, before - std::min(before, kStart.size())) != std::string::npos;
  if (!hasFrame && m_messages.size() <= kMaxFrame) return;
  m_content = eContent::Frames;  // the end of a frame whose begin was not recorded
  m_reader.Feed(m_messages.data(), m_messages.size());
  m_messages = std::string();
}

void cCaptureFeed::Finish() {
  if (m_form == eForm::Unknown) TakeHead();
  if (m_high >= 0 && m_fault.empty()) m_fault = "the last hexadecimal digit stands alone";
  if (!m_messages.empty())
    m_reader.ReadPayload({reinterpret_cast<const std::uint8_t*>(m_messages.data()), m_messages.size()});
  m_messages.clear();
  m_reader.Finish();
}

}  // namespace tav::sml
