// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/master/mbus_requests.h>

#include <iterator>

namespace tav::mbus {

namespace {

constexpr std::uint8_t kWithFcb = eReqUd2 | kFcb;      // 7B
constexpr std::uint8_t kWithoutFcb = eReqUd2 & ~kFcb;  // 5B

void AppendNumber(std::string& bytes, std::uint32_t value, unsigned int width) {
  for (unsigned int i = 0; i < width; ++i) bytes += static_cast<char>(value >> 8 * i & 0xFF);
}

// Behind what a frame begins with, from its control field on: the checksum of it, and the stop.
std::string Close(std::string bytes, std::size_t begin) {
  bytes += static_cast<char>(Checksum(BytesOf(bytes).subspan(begin)));
  return bytes += static_cast<char>(kStop);
}

}  // namespace

std::string MakeShortFrame(std::uint8_t control, std::uint8_t address) {
  return Close({static_cast<char>(kShortStart), static_cast<char>(control), static_cast<char>(address)}, 1);
}

std::string MakeLongFrame(std::uint8_t control, std::uint8_t address, std::uint8_t information, cBytes data) {
  const auto length = static_cast<char>(data.size() + kLeastLength);
  const auto start = static_cast<char>(kLongStart);
  std::string bytes{start, length, length, start};
  bytes += static_cast<char>(control);
  bytes += static_cast<char>(address);
  bytes += static_cast<char>(information);
  bytes.append(data.begin(), data.end());
  return Close(std::move(bytes), 4);
}

std::string MakeInitialise(std::uint8_t primary) { return MakeShortFrame(eSndNke, primary); }

std::string MakeReadoutRequest(std::uint8_t primary, bool fcb) {
  return MakeShortFrame(fcb ? kWithFcb : kWithoutFcb, primary);
}

std::string MakeSelection(const cMBusAddress& address) {
  std::string data;
  AppendNumber(data, address.id, 4);
  AppendNumber(data, address.manufacturer, 2);
  AppendNumber(data, address.version, 1);
  AppendNumber(data, address.medium, 1);
  return MakeLongFrame(eSndUd, kSecondary, eCiSelect, BytesOf(data));
}

std::string MakeApplicationReset(std::uint8_t primary, int subCode) {
  const auto code = static_cast<std::uint8_t>(subCode);
  return MakeLongFrame(eSndUd, primary, eCiReset, {&code, subCode < 0 ? 0u : 1u});
}

std::string MakeSetBaud(std::uint8_t primary, unsigned int baud) {
  for (std::size_t i = 0; i < std::size(kBauds); ++i)
    if (kBauds[i] == baud) return MakeLongFrame(eSndUd, primary, static_cast<std::uint8_t>(eCiFirstBaud + i), {});
  return {};
}

std::string MakeSetAddress(std::uint8_t primary, std::uint8_t newAddress) {
  const std::uint8_t data[] = {kPrimaryAddress[0], kPrimaryAddress[1], newAddress};
  return MakeLongFrame(eSndUd, primary, eCiSendData, data);
}

}  // namespace tav::mbus
