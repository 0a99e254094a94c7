// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/capture_listing.h>

#include <gtest/gtest.h>

#include <vector>

TEST(CaptureListing, HasALineForBytesAndForWhatIsSaidAboutThem) {
  const std::vector<std::uint8_t> bytes(11, 0xA0);
  tav::cCaptureListing listing;
  listing.Range(16, 27, "a frame");
  listing.Row(16, {bytes.data(), 1}, "start");
  listing.Row(17, {bytes.data(), 10}, "ten");
  listing.Row(27, bytes, "eleven");
  listing.Line("the end");
  EXPECT_EQ(listing.GetText(),
            "16..26: a frame\n"
            "      16  A0                      start\n"
            "      17  A0A0A0A0A0A0A0A0A0A0    ten\n"
            "      27  A0A0A0A0A0A0A0A0A0A0..  eleven\n"
            "the end\n");
}
