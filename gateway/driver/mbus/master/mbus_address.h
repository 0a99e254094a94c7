// SPDX-License-Identifier: Apache-2.0
// cMBusAddress: whom a request is for. A primary address (0 to 250; 253 to 255 have a meaning of their own), or a
// secondary one: identification, manufacturer, version and medium of the meter, any part of them left open.
#pragma once

#include <cstdint>
#include <string>
#include <tuple>

#include <gateway/driver/mbus/reader/mbus_frame.h>
#include <gateway/driver/mbus/reader/mbus_telegram.h>

namespace tav::mbus {

struct cMBusAddress {
  // What is left open of a secondary address.
  static constexpr std::uint32_t kAnyId = 0xFFFFFFFF;  // each digit F matches any digit
  static constexpr std::uint16_t kAnyManufacturer = 0xFFFF;
  static constexpr std::uint8_t kAnyVersion = 0xFF;
  static constexpr std::uint8_t kAnyMedium = 0xFF;

  std::uint8_t primary = kSecondary;
  std::uint32_t id = kAnyId;
  std::uint16_t manufacturer = kAnyManufacturer;
  std::uint8_t version = kAnyVersion;
  std::uint8_t medium = kAnyMedium;

  static cMBusAddress Primary(std::uint8_t primary) { return {primary}; }
  // The whole secondary address of who answered.
  static cMBusAddress Of(const cMBusHeader& header) {
    return {kSecondary, header.id, header.manufacturer, header.version, header.medium};
  }
  // "5"; "44950146" (any manufacturer, version, medium; F for any digit); "449501464D341804", the sixteen digits in the
  // order of the bytes of a selection written as numbers: identification, manufacturer, version, medium. False and the
  // reason in error for anything else.
  static bool Parse(const std::string& text, cMBusAddress& address, std::string& error);

  // Whether meters of different identifications may be meant: an open digit, or every meter.
  bool MayBeSeveral() const;
  bool IsSecondary() const { return primary == kSecondary; }
  // Whether a meter with that header is meant; only a secondary address tells.
  bool Matches(const cMBusHeader& header) const;
  // What Parse takes; the short form where only the identification is told.
  std::string ToString() const;

  friend bool operator==(const cMBusAddress&, const cMBusAddress&) = default;
  friend bool operator<(const cMBusAddress& a, const cMBusAddress& b) {
    const auto key = [](const cMBusAddress& of) {
      return std::tie(of.primary, of.id, of.manufacturer, of.version, of.medium);
    };
    return key(a) < key(b);
  }
};

}  // namespace tav::mbus
