// SPDX-License-Identifier: Apache-2.0
// The text of a measured value as one integer, when that integer gives back exactly the same text.
//
// A packed value is digits * 16 + number of digits behind the point, negative for a text with a minus: "12.50" is
// 1250 * 16 + 2. What has no such form (leading zeros, a plus, an exponent, "-0", too many digits, no number at all)
// stays a text, so that every value reads back byte for byte.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tav::data {

// Digits behind the point fit four bits; all digits together fit what is left beside them.
constexpr unsigned kMaxScale = 15;
constexpr std::int64_t kMaxDigits = (std::int64_t{1} << 59) - 1;

std::optional<std::int64_t> PackDecimal(std::string_view text);
// The text of a packed value; defined for every number that PackDecimal gives.
std::string UnpackDecimal(std::int64_t packed);

// The same in SQL, so that the database reads without this program: the text of a column that holds packed integers
// and texts.
std::string UnpackSql(const std::string& column);

}  // namespace tav::data
