// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/reader/mbus_fixed.h>

#include <iterator>

namespace tav::mbus {

namespace {

struct cUnitRow {
  std::uint8_t size;
  std::uint8_t vib[3];
};

// clang-format off
// By code, in the order of EN 1434-3, units of the fixed data structure. 7D is a factor of 1000 where no VIF is large
// enough.
constexpr cUnitRow kUnits[] = {
  {0, {}},                  // 00 h, min, s
  {0, {}},                  // 01 day, month, year
  {1, {0x03}},              // 02 Wh
  {1, {0x04}},              // 03
  {1, {0x05}},              // 04
  {1, {0x06}},              // 05 kWh
  {1, {0x07}},              // 06
  {2, {0xFB, 0x00}},        // 07
  {2, {0xFB, 0x01}},        // 08 MWh
  {2, {0x87, 0x7D}},        // 09
  {3, {0xFB, 0x80, 0x7D}},  // 0A
  {1, {0x0B}},              // 0B kJ
  {1, {0x0C}},              // 0C
  {1, {0x0D}},              // 0D
  {1, {0x0E}},              // 0E MJ
  {1, {0x0F}},              // 0F
  {2, {0xFB, 0x08}},        // 10
  {2, {0xFB, 0x09}},        // 11 GJ
  {2, {0x8F, 0x7D}},        // 12
  {3, {0xFB, 0x88, 0x7D}},  // 13
  {1, {0x2B}},              // 14 W
  {1, {0x2C}},              // 15
  {1, {0x2D}},              // 16
  {1, {0x2E}},              // 17 kW
  {1, {0x2F}},              // 18
  {2, {0xFB, 0x28}},        // 19
  {2, {0xFB, 0x29}},        // 1A MW
  {2, {0xAF, 0x7D}},        // 1B
  {3, {0xFB, 0xA8, 0x7D}},  // 1C
  {1, {0x33}},              // 1D kJ/h
  {1, {0x34}},              // 1E
  {1, {0x35}},              // 1F
  {1, {0x36}},              // 20 MJ/h
  {1, {0x37}},              // 21
  {2, {0xFB, 0x30}},        // 22
  {2, {0xFB, 0x31}},        // 23 GJ/h
  {2, {0xB7, 0x7D}},        // 24
  {3, {0xFB, 0xB0, 0x7D}},  // 25
  {1, {0x10}},              // 26 ml
  {1, {0x11}},              // 27
  {1, {0x12}},              // 28
  {1, {0x13}},              // 29 l
  {1, {0x14}},              // 2A
  {1, {0x15}},              // 2B
  {1, {0x16}},              // 2C m³
  {1, {0x17}},              // 2D
  {2, {0xFB, 0x10}},        // 2E
  {1, {0x38}},              // 2F ml/h
  {1, {0x39}},              // 30
  {1, {0x3A}},              // 31
  {1, {0x3B}},              // 32 l/h
  {1, {0x3C}},              // 33
  {1, {0x3D}},              // 34
  {1, {0x3E}},              // 35 m³/h
  {1, {0x3F}},              // 36
  {2, {0xBD, 0x7D}},        // 37
  {1, {0x58}},              // 38 0.001 °C
  {1, {0x6E}},              // 39 units of heat cost allocators
  {0, {}},                  // 3A reserved
  {0, {}},                  // 3B
  {0, {}},                  // 3C
  {0, {}},                  // 3D
  {0, {}},                  // 3E the first counter's unit, historic
  {2, {0xFD, 0x3A}},        // 3F no unit
};
// clang-format on
static_assert(std::size(kUnits) == 64);

}  // namespace

cBytes FixedVib(std::uint8_t unit) {
  const cUnitRow& row = kUnits[unit & 0x3F];
  return {row.vib, row.size};
}

}  // namespace tav::mbus
