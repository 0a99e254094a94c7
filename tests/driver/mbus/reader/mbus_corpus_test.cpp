// SPDX-License-Identifier: Apache-2.0
// What the fuzz target starts from, and what once failed there, holds its properties in every build.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const unsigned char* bytes, std::size_t size);

TEST(MBusCorpus, HoldsThePropertiesOfTheFuzzTarget) {
  std::size_t inputs = 0;
  for (const auto& entry : std::filesystem::directory_iterator(TAV_SOURCE_DIR "/fuzz/corpus/mbus_reader")) {
    std::ifstream file(entry.path(), std::ios::binary);
    const std::string bytes(std::istreambuf_iterator<char>(file), {});
    std::cout << entry.path().filename() << std::endl;  // the last one when it aborts
    EXPECT_EQ(LLVMFuzzerTestOneInput(reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()), 0);
    ++inputs;
  }
  EXPECT_GT(inputs, 20u);
}
