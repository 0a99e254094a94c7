// SPDX-License-Identifier: Apache-2.0
#include <tavctl/record_text.h>

#include <gtest/gtest.h>

#include <tests/support/sample_record.h>
#include <tests/support/time_zone.h>

namespace tav::ctl {
namespace {

class RecordText : public testing::Test {
 protected:
  cTimeZone zone;
};

TEST_F(RecordText, ShowsEveryTypeInALine) {
  EXPECT_EQ(cRecordText().AsLine(RecordOfEverything()),
            "text=\"a \\\"b\\\"\" none=null int=-5 uint=5 uint64=18446744073709551615 bool=true "
            "record={inner=\"x\"} time=2024-03-01T13:00:00+01:00 uuid=6ba7b810-9dad-11d1-80b4-00c04fd430c8 "
            "data=<0A 01>");
  EXPECT_EQ(cRecordText().AsLine({}), "");
}

TEST_F(RecordText, ShowsAParameterALine) {
  vorn::cRecord record = Holding("name", "x");
  record.AppendRecordPar("deep", Holding("a", "b"));
  record.AppendUIntPar("n", 1);
  EXPECT_EQ(cRecordText().AsLines(record, 2), "  name = \"x\"\n  deep\n    a = \"b\"\n  n = 1\n");
}

TEST_F(RecordText, MasksKeysAndPasswordsAtAnyDepth) {
  vorn::cRecord record = Holding("key", "s3cret");
  record.AppendRecordPar("deep", Holding("password", "s3cret"));
  record.AppendDataPar("key", vorn::cData("\x01", 1));
  record.AppendRecordPar("password", Holding("a", "s3cret"));
  record.AppendTextPar("keys", "open");
  const cRecordText masked(form::eMask::Secrets);
  EXPECT_EQ(masked.AsLine(record), "key=*** deep={password=***} key=*** password=*** keys=\"open\"");
  EXPECT_EQ(masked.AsLines(record, 0),
            "key = ***\ndeep\n  password = ***\nkey = ***\npassword = ***\nkeys = \"open\"\n");
  EXPECT_NE(cRecordText().AsLine(record).find("s3cret"), std::string::npos);
}

TEST_F(RecordText, MasksWhatTheMobileModemIsToldInSecret) {
  vorn::cRecord record = Holding("MobilePin", "1234");
  record.AppendTextPar("APN", "internet");
  record.AppendTextPar("User", "jane");
  record.AppendTextPar("Password", "s3cret");
  const cRecordText masked(form::eMask::Secrets);
  EXPECT_EQ(masked.AsLine(record), "MobilePin=*** APN=\"internet\" User=*** Password=***");
}

TEST_F(RecordText, CutsLongData) {
  const std::string bytes(cRecordText::kMaxData + 1, '\xFF');
  vorn::cRecord record;
  record.AppendDataPar("raw", vorn::cData(bytes));
  const std::string line = cRecordText().AsLine(record);
  EXPECT_TRUE(line.ends_with("FF FF ... 65 bytes>")) << line;
  EXPECT_EQ(line.size(), 4 + 1 + cRecordText::kMaxData * 3 - 1 + std::string(" ... 65 bytes>").size());
  vorn::cRecord whole;
  whole.AppendDataPar("raw", vorn::cData(bytes.substr(1)));
  EXPECT_TRUE(cRecordText().AsLine(whole).ends_with("FF FF>"));
}

TEST_F(RecordText, SpeaksUtf8WhateverTheNamesAndTextsAre) {
  vorn::cRecord record;
  record.AppendTextPar(
      "gr\xF6\xDF"
      "e",
      "m\xB3\x1b");
  EXPECT_EQ(cRecordText().AsLine(record),
            "gr\xC3\xB6\xC3\x9F"
            "e=\"m\xC2\xB3\\x1b\"");
}

}  // namespace
}  // namespace tav::ctl
