// SPDX-License-Identifier: Apache-2.0
#include <gateway/database/decimal_code.h>

namespace tav::data {

namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// The digits of text with its point left out; nothing when it is not of the form that unpacking writes.
std::optional<std::int64_t> ReadDigits(std::string_view text, std::size_t point) {
  std::int64_t digits = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (i == point) continue;
    if (!IsDigit(text[i])) return std::nullopt;
    digits = digits * 10 + (text[i] - '0');
    if (digits > kMaxDigits) return std::nullopt;
  }
  return digits;
}

}  // namespace

std::optional<std::int64_t> PackDecimal(std::string_view text) {
  const bool negative = !text.empty() && text.front() == '-';
  if (negative) text.remove_prefix(1);
  const std::size_t point = text.find('.');
  const std::size_t whole = point == std::string_view::npos ? text.size() : point;
  const std::size_t scale = point == std::string_view::npos ? 0 : text.size() - point - 1;
  if (whole == 0 || (whole > 1 && text.front() == '0')) return std::nullopt;
  if (scale > kMaxScale || (point != std::string_view::npos && scale == 0)) return std::nullopt;
  const std::optional<std::int64_t> digits = ReadDigits(text, point);
  if (!digits) return std::nullopt;
  const std::int64_t packed = *digits * 16 + static_cast<std::int64_t>(scale);
  if (negative && packed == 0) return std::nullopt;
  return negative ? -packed : packed;
}

std::string UnpackDecimal(std::int64_t packed) {
  const std::int64_t magnitude = packed < 0 ? -packed : packed;
  const auto scale = static_cast<std::size_t>(magnitude % 16);
  std::string digits = std::to_string(magnitude / 16);
  if (digits.size() <= scale) digits.insert(0, scale + 1 - digits.size(), '0');
  if (scale != 0) digits.insert(digits.size() - scale, 1, '.');
  return packed < 0 ? "-" + digits : digits;
}

std::string UnpackSql(const std::string& column) {
  const std::string scale = "(abs(" + column + ")&15)";
  const std::string digits = "printf('%0*d'," + scale + "+1,abs(" + column + ")>>4)";
  return "CASE WHEN typeof(" + column + ")<>'integer' THEN " + column + " ELSE iif(" + column + "<0,'-','')||iif(" +
         scale + "=0," + digits + ",substr(" + digits + ",1,length(" + digits + ")-" + scale + ")||'.'||substr(" +
         digits + ",-" + scale + ")) END";
}

}  // namespace tav::data
