// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/explain/mbus_field_names.h>

#include <gtest/gtest.h>

using namespace tav::mbus;

namespace {

struct cCase {
  std::uint8_t code;
  const char* text;
};

}  // namespace

TEST(MBusFieldNames, NameControlFieldsWithTheirBits) {
  for (const cCase& c :
       {cCase{0x40, "SND_NKE"}, cCase{0x53, "SND_UD, frame count bit 0"}, cCase{0x73, "SND_UD, frame count bit 1"},
        cCase{0x5B, "REQ_UD2, frame count bit 0"}, cCase{0x7B, "REQ_UD2, frame count bit 1"},
        cCase{0x5A, "REQ_UD1, frame count bit 0"}, cCase{0x08, "RSP_UD"}, cCase{0x28, "RSP_UD, access demand"},
        cCase{0x18, "RSP_UD, data flow control"}, cCase{0x47, "not known"}})
    EXPECT_EQ(ControlText(c.code), c.text) << int{c.code};
}

TEST(MBusFieldNames, NameAddressesWithAMeaningOfTheirOwn) {
  for (const cCase& c :
       {cCase{0, "primary address 0, not configured"}, cCase{5, "primary address 5"}, cCase{250, "primary address 250"},
        cCase{251, "reserved address 251"}, cCase{253, "whoever is selected"}, cCase{254, "all, and all answer"},
        cCase{255, "all, and none answers"}})
    EXPECT_EQ(AddressText(c.code), c.text);
}

TEST(MBusFieldNames, NameStatusAndConfiguration) {
  for (const cCase& c : {cCase{0x00, "no error"}, cCase{0x01, "application busy"}, cCase{0x02, "application error"},
                         cCase{0x03, "abnormal condition"}, cCase{0x04, "low power"}, cCase{0x08, "permanent error"},
                         cCase{0x10, "temporary error"}, cCase{0x20, "bits of the manufacturer"},
                         cCase{0x1D, "application busy, low power, permanent error, temporary error"}})
    EXPECT_EQ(StatusText(c.code), c.text);
  EXPECT_EQ(FixedStatusText(0x00), "counters in BCD, current");
  EXPECT_EQ(FixedStatusText(0x07), "counters as whole numbers, of a fixed date, low power");
  EXPECT_EQ(ConfigurationText(0x0000), "not encrypted");
  EXPECT_EQ(ConfigurationText(0x0530), "mode 5, 3 encrypted blocks");
  EXPECT_EQ(MediumText(4), "h, Heat return");
}

TEST(MBusFieldNames, NameInformationsAndDataFields) {
  EXPECT_STREQ(InformationText(0x72), "records behind a header of 12 bytes");
  EXPECT_STREQ(InformationText(0x52), "selection of slaves");
  EXPECT_STREQ(InformationText(0xFF), "not known");
  EXPECT_STREQ(DataFieldText(0x0C), "8 digits BCD");
  EXPECT_STREQ(DataFieldText(0xF0), "no data");
}
