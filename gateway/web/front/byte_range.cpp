// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/front/byte_range.h>

#include <algorithm>
#include <charconv>
#include <limits>
#include <optional>

#include <gateway/web/front/http_text.h>

namespace tav::gateway::web {

namespace {

constexpr std::string_view kUnit = "bytes=";

// Digits only; a number too large for us is the largest.
std::optional<std::uint64_t> ReadNumber(std::string_view text) {
  if (text.empty() || text.find_first_not_of("0123456789") != std::string_view::npos) return std::nullopt;
  std::uint64_t number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  return result.ec == std::errc() ? number : std::numeric_limits<std::uint64_t>::max();
}

}  // namespace

eRange ReadRange(std::string_view field, std::uint64_t fileSize, cByteRange& range) {
  if (!EqualsIgnoringCase(field.substr(0, kUnit.size()), kUnit)) return eRange::Whole;
  const std::string_view asked = Trim(field.substr(kUnit.size()));
  const std::size_t dash = asked.find('-');
  if (dash == std::string_view::npos) return eRange::Whole;
  const auto first = ReadNumber(asked.substr(0, dash));
  const auto last = ReadNumber(asked.substr(dash + 1));
  if (dash == 0 && last) {  // the last bytes
    if (*last == 0 || fileSize == 0) return eRange::Impossible;
    const std::uint64_t size = std::min(*last, fileSize);
    range = {fileSize - size, size};
    return eRange::Part;
  }
  const bool isOpen = dash + 1 == asked.size();
  if (!first || (!last && !isOpen) || (last && *last < *first)) return eRange::Whole;
  if (*first >= fileSize) return eRange::Impossible;
  range = {*first, std::min(last.value_or(fileSize - 1), fileSize - 1) - *first + 1};
  return eRange::Part;
}

}  // namespace tav::gateway::web
