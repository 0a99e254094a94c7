// SPDX-License-Identifier: Apache-2.0
// The lines of a listing that explains a capture to people: what is at which offset.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace tav {

class cCaptureListing {
 public:
  // Of the bytes of one row; ".." stands for those behind them.
  static constexpr std::size_t kShownBytes = 10;

  // "16..271: transport frame": about bytes from one offset to the one before another.
  void Range(std::uint64_t from, std::uint64_t to, const std::string& text);
  // "      16  1B1B1B1B              start sequence": the offset, the bytes, what they mean.
  void Row(std::uint64_t offset, std::span<const std::uint8_t> bytes, const std::string& text);
  // A line about the rows behind it, or before it.
  void Line(const std::string& text) { m_text += text + '\n'; }

  const std::string& GetText() const { return m_text; }

 private:
  std::string m_text;
};

}  // namespace tav
