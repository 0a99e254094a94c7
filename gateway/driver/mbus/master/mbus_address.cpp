// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/master/mbus_address.h>

#include <tav/framework/helper.h>

namespace tav::mbus {

namespace {

constexpr std::size_t kIdDigits = 8;
constexpr std::size_t kWholeDigits = 16;
constexpr std::size_t kMostPrimaryDigits = 3;

bool IsAllOf(const std::string& text, const char* characters) {
  return text.find_first_not_of(characters) == std::string::npos;
}

std::uint32_t Hex(const std::string& text, std::size_t at, std::size_t digits) {
  return static_cast<std::uint32_t>(std::stoul(text.substr(at, digits), nullptr, 16));
}

bool IsPrimary(unsigned long number) { return number <= kLastPrimary || number == kBroadcastReply; }

// Digit by digit: F of the mask is any.
bool MatchesId(std::uint32_t mask, std::uint32_t id) {
  for (unsigned int shift = 0; shift < 32; shift += 4)
    if ((mask >> shift & 0xF) != 0xF && (mask >> shift & 0xF) != (id >> shift & 0xF)) return false;
  return true;
}

}  // namespace

bool cMBusAddress::Parse(const std::string& text, cMBusAddress& address, std::string& error) {
  if (!text.empty() && text.size() <= kMostPrimaryDigits && IsAllOf(text, "0123456789")) {
    if (IsPrimary(std::stoul(text))) {
      address = Primary(static_cast<std::uint8_t>(std::stoul(text)));
      return true;
    }
    error = "'" + text + "' is no primary address; they go from 0 to 250, and 254 is for a meter alone on its line";
    return false;
  }
  if (!IsAllOf(text, "0123456789ABCDEFabcdef") || (text.size() != kIdDigits && text.size() != kWholeDigits)) {
    error = "'" + text +
            "' is no address; expected a number from 0 to 250, the eight digits of an identification, or sixteen "
            "with manufacturer, version and medium behind them";
    return false;
  }
  address = {};
  address.id = Hex(text, 0, kIdDigits);
  if (text.size() == kIdDigits) return true;
  address.manufacturer = static_cast<std::uint16_t>(Hex(text, 8, 4));
  address.version = static_cast<std::uint8_t>(Hex(text, 12, 2));
  address.medium = static_cast<std::uint8_t>(Hex(text, 14, 2));
  return true;
}

bool cMBusAddress::Matches(const cMBusHeader& header) const {
  return MatchesId(id, header.id) && (manufacturer == kAnyManufacturer || manufacturer == header.manufacturer) &&
         (version == kAnyVersion || version == header.version) && (medium == kAnyMedium || medium == header.medium);
}

bool cMBusAddress::MayBeSeveral() const {
  if (!IsSecondary()) return primary > kLastPrimary;
  for (unsigned int shift = 0; shift < 32; shift += 4)
    if ((id >> shift & 0xF) == 0xF) return true;
  return false;
}

std::string cMBusAddress::ToString() const {
  if (!IsSecondary()) return std::to_string(primary);
  const bool isShort = manufacturer == kAnyManufacturer && version == kAnyVersion && medium == kAnyMedium;
  return isShort ? IdText(id) : vorn::FormatString("%08X%04X%02X%02X", id, manufacturer, version, medium);
}

}  // namespace tav::mbus
