// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/reader/mbus_types.h>

#include <gtest/gtest.h>

using tav::mbus::cMBusFault;

TEST(MBusFault, NamesTheByteAndWhatStandsThere) {
  EXPECT_EQ((cMBusFault{"the checksum is wrong", 12, 0x3B}.ToString()), "byte 12: the checksum is wrong (3B)");
  EXPECT_EQ((cMBusFault{"no frame starts with this byte", 0, 0}.ToString()),
            "byte 0: no frame starts with this byte (00)");
}

TEST(MBusFault, NamesNoByteWhereNoneStands) {
  EXPECT_EQ((cMBusFault{"the frame ends too early", 260}.ToString()), "byte 260: the frame ends too early");
}
