// SPDX-License-Identifier: Apache-2.0
// What the listing says of single frames and records; offsets and whole captures are the matter of
// mbus_explain_test.cpp.
#include <gateway/driver/mbus/explain/mbus_listing.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <gateway/driver/mbus/explain/mbus_explain.h>
#include <tests/driver/mbus/mbus_frames.h>

using namespace tav::mbus;
using testing::HasSubstr;

namespace {

struct cCase {
  const char* fields;  // of the records, or of the frame
  std::vector<const char*> lines;
};

void ExpectLines(const std::string& frame, const cCase& c) {
  const std::string listing = ExplainMBus(frame).listing;
  for (const char* line : c.lines) EXPECT_THAT(listing, HasSubstr(line)) << c.fields;
}

}  // namespace

TEST(MBusListing, NamesWhatIsInARecord) {
  const cCase kCases[] = {
      {"0C 13 27 04 85 02",
       {"  record 0: Volume = 2850.427 m³\n", "DIF 0C: 8 digits BCD, Instantaneous value, storage bit 0\n",
        "20  13                      VIF 13: Volume, 10^-3 m³\n", "27048502                data, 2850427\n"}},
      {"9B 10 3B 45 23 01",
       {"record 0: Volume flow, Maximum value, tariff 1 = 12.345 m³/h\n",
        "DIFE 10: storage bits 0, tariff bits 1, subunit bit 0\n"}},
      {"C4 41 13 01 00 00 00", {"record 0: Volume, storage 3, subunit 1 = 0.001 m³\n"}},
      {"02 FD C9 FF 01 E6 00",
       {"record 0: Voltage = 230 V\n", "VIF FD: table FD\n", "VIFE C9: Voltage V\n",
        "VIFE FF: manufacturer specific from here on\n", "VIFE 01: the manufacturer's own\n"}},
      {"04 93 FC 01 05 00 00 00", {"VIFE FC: extension of combinable VIFE codes\n", "VIFE 01: at phase L1\n"}},
      {"02 FC 03 48 52 25 74 D4 11",
       {"VIF in following string = 45.64 %RH\n", "length of the unit\n", "485225                  unit %RH\n",
        "VIFE 74: multiplicative correction by a power of ten\n"}},
      {"02 7C 02 1B 41 D4 11", {"unit hex:1B41\n"}},
      {"0D 78 03 43 42 41", {"= \"ABC\"\n", "length, 3 bytes\n", "data, \"ABC\"\n"}},
      {"04 6D 1D 0D 98 11", {"Date and time = 2012-01-24T13:29:00\n"}},
      {"0A 2B AA AA", {"record 0: Power, BCD with an error digit\n", "data, unreadable: BCD with an error digit\n"}},
      {"01 FD 97 15 00", {"Error flags, the meter says: no data available\n", "VIFE 15: error: no data available\n"}},
      {"00 13", {"record 0: Volume\n", "no data, Instantaneous value"}},
      {"2F 2F 01 13 01", {"2F2F                    idle filler\n", "record 0: Volume = 0.001 m³\n"}},
      {"0F 01 02", {"record 0: Manufacturer specific\n", "0102                    data of the manufacturer\n"}},
      {"1F", {"record 0: More records follow\n"}},
      {"01 FF 80 05 07", {"VIF FF: Manufacturer specific\n", "VIFE 80: the manufacturer's own\n"}},
      {"01 13 01 3E 00 00",
       {"record 1: the data of a record end too early\n", "not read, 3 bytes\n",
        "FAULT: byte 25: the data of a record end too early, at offset 25 of the capture\n"}},
  };
  for (const cCase& c : kCases) ExpectLines(Answer(c.fields), c);
}

TEST(MBusListing, NamesTheFieldsOfFrames) {
  const cCase kCases[] = {
      {"08 05 72 46 01 95 44 18 4E 34 04 54 10 00 00",
       {"0..20: long frame, 21 bytes\n", "C RSP_UD\n", "A primary address 5\n", "identification 44950146\n",
        "manufacturer SPX\n", "version 52\n", "medium h, Heat return\n", "access number 84\n",
        "status, temporary error\n", "configuration, not encrypted\n", "checksum, right\n", "stop\n"}},
      {"08 05 7A 54 00 30 05 AA BB",
       {"mode 5, 3 encrypted blocks\n", "record 0: encrypted\n", "AABB                    not read, 2 bytes\n"}},
      {"08 05 70 08", {"application error, application too busy for a readout\n"}},
      {"08 05 71 A0", {"alarm A0\n"}},
      {"08 05 73 78 56 34 12 0A 00 E9 7E 01 00 00 00 35 01 00 00",
       {"identification 12345678\n", "access number 10\n", "status, counters in BCD, current\n",
        "medium w, Water, and the units of both counters\n", "record 0: Volume = 0.001 m³\n", "counter 1, 1\n",
        "counter 2, 135\n"}},
      {"53 FD 52 46 01 95 44 FF FF FF FF",
       {"C SND_UD, frame count bit 0\n", "A whoever is selected\n", "CI selection of slaves\n",
        "FAULT: byte 4: a request of the master, no answer (53)"}},
  };
  for (const cCase& c : kCases) ExpectLines(LongFrame(c.fields), c);
  ExpectLines(FromHex("10 5B 05 60 16"), {"short", {"0..4: short frame, 5 bytes\n", "C REQ_UD2", "checksum, right\n"}});
  ExpectLines("\xE5", {"ack", {"0..0: single character, 1 bytes\n", "acknowledge\n"}});
}
