// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/query/base64.h>

#include <cstdint>

namespace tav::data {

namespace {

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

}  // namespace

std::string ToBase64(std::string_view bytes) {
  const auto byte = [&](std::size_t at) -> std::uint32_t {
    return at < bytes.size() ? static_cast<unsigned char>(bytes[at]) : 0;
  };
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t at = 0; at < bytes.size(); at += 3) {
    const std::uint32_t group = byte(at) << 16 | byte(at + 1) << 8 | byte(at + 2);
    for (int shift = 18; shift >= 0; shift -= 6) text += kAlphabet[group >> shift & 63];
  }
  for (std::size_t missing = (3 - bytes.size() % 3) % 3, at = text.size() - missing; at < text.size(); ++at)
    text[at] = '=';
  return text;
}

}  // namespace tav::data
