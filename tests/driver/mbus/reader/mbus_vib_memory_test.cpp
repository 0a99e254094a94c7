// SPDX-License-Identifier: Apache-2.0
// What cMBusVib remembers of one block it never tells of another.
#include <gateway/driver/mbus/reader/mbus_vib.h>

#include <gtest/gtest.h>

#include <memory>
#include <tuple>
#include <vector>

using namespace tav::mbus;

namespace {

auto Fields(const cVibMeaning& meaning) {
  return std::make_tuple(meaning.unit, meaning.scaler, meaning.per, meaning.isTime, meaning.isUnsigned,
                         meaning.isMakers, meaning.error);
}

// Blocks of one code, of two, and long ones that differ in their ends only.
std::vector<std::vector<std::uint8_t>> Blocks() {
  std::vector<std::vector<std::uint8_t>> blocks = {{}};
  for (unsigned int code = 0; code < 128; ++code) {
    const auto byte = static_cast<std::uint8_t>(code);
    blocks.push_back({byte});
    for (const std::uint8_t first : std::vector<std::uint8_t>{0x93, 0xFB, 0xFD, 0xFF}) blocks.push_back({first, byte});
    blocks.push_back({0x93, 0x80, 0x80, 0x80, 0x80, 0x80, byte});
    blocks.push_back({0x93, 0x80, 0x80, 0x80, 0x80, 0x80, 0x80, byte});
  }
  return blocks;
}

}  // namespace

TEST(MBusVibMemory, GivesWhatIsGivenWithoutIt) {
  const auto blocks = Blocks();
  const auto remembering = std::make_unique<cMBusVib>();
  for (int round = 0; round < 2; ++round)
    for (const auto& codes : blocks)
      EXPECT_EQ(Fields(remembering->Decode(codes)), Fields(std::make_unique<cMBusVib>()->Decode(codes)))
          << testing::PrintToString(codes);
}
