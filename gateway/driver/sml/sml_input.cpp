// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/sml_input.h>

#include <algorithm>

#include <gateway/driver/sml/sml_transport.h>

namespace tav::sml {

namespace {

constexpr std::uint8_t kMessage = 0x76;  // a list of six
constexpr std::size_t kEscape = 4;       // bytes of the start sequence that stand before its version

bool Holds(cBytes capture, std::string_view sequence) {
  const auto same = [](std::uint8_t byte, char character) { return byte == static_cast<std::uint8_t>(character); };
  return std::search(capture.begin(), capture.end(), sequence.begin(), sequence.end(), same) != capture.end();
}

}  // namespace

bool IsPayload(cBytes capture) { return !capture.empty() && capture[0] == kMessage && !Holds(capture, kStartSequence); }

bool IsSml(cBytes capture) {
  return Holds(capture, std::string_view(kStartSequence).substr(0, kEscape)) || IsPayload(capture);
}

}  // namespace tav::sml
