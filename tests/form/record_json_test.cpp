// SPDX-License-Identifier: Apache-2.0
#include <gateway/form/record_json.h>

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <tests/support/sample_record.h>
#include <tests/support/time_zone.h>

namespace tav::form {
namespace {

class RecordJson : public testing::Test {
 protected:
  cTimeZone zone;
};

TEST_F(RecordJson, IsJsonOfEveryType) {
  const auto json = ToJson(RecordOfEverything());
  EXPECT_EQ(json.dump(), R"({"text":"a \"b\"","none":null,"int":-5,"uint":5,"uint64":18446744073709551615,"bool":true,)"
                         R"("record":{"inner":"x"},"time":"2024-03-01T13:00:00+01:00",)"
                         R"("uuid":"6ba7b810-9dad-11d1-80b4-00c04fd430c8","data":"0A01"})");
  EXPECT_EQ(ToJson(vorn::cRecord()).dump(), "{}");
}

TEST_F(RecordJson, GivesANameThatRepeatsAnArray) {
  vorn::cRecord record;
  record.AppendUIntPar("n", 1);
  record.AppendTextPar("between", "x");
  record.AppendTextPar("n", "2");
  record.AppendUIntPar("n", 3);
  EXPECT_EQ(ToJson(record).dump(), R"({"n":[1,"2",3],"between":"x"})");
}

TEST_F(RecordJson, IsNullForWhatIsNotThere) { EXPECT_TRUE(ToJson(vorn::cRecord().GetPar("n")).is_null()); }

TEST_F(RecordJson, MasksKeysAndPasswordsAtAnyDepth) {
  vorn::cRecord record = Holding("key", "s3cret");
  record.AppendRecordPar("deep", Holding("password", "s3cret"));
  record.AppendDataPar("key", vorn::cData("\x01", 1));
  record.AppendRecordPar("password", Holding("a", "s3cret"));
  record.AppendTextPar("keys", "open");
  EXPECT_EQ(ToJson(record, eMask::Secrets).dump(),
            R"({"key":["***","***"],"deep":{"password":"***"},"password":"***","keys":"open"})");
  EXPECT_EQ(ToJson(record)["deep"]["password"], "s3cret");
}

TEST_F(RecordJson, MasksWhatTheMobileModemIsToldInSecret) {
  vorn::cRecord record = Holding("MobilePin", "1234");
  record.AppendTextPar("APN", "internet");
  record.AppendTextPar("User", "jane");
  record.AppendTextPar("Password", "s3cret");
  EXPECT_EQ(ToJson(record, eMask::Secrets).dump(),
            R"({"MobilePin":"***","APN":"internet","User":"***","Password":"***"})");
}

TEST_F(RecordJson, MasksWhatFormsAndLoginsCarry) {
  vorn::cRecord form = Holding("meter-config.key", "00112233");
  for (const char* name : {"old-password", "again", "pin", "csrf"}) form.AppendTextPar(name, "s3cret");
  form.AppendTextPar("name", "jane");
  vorn::cRecord request;
  request.AppendRecordPar("PostData", form);
  request.AppendRecordPar("Cookies", Holding("sid", "0123"));
  request.AppendRecordPar("Headers", Holding("authorization", "Bearer s3cret"));
  EXPECT_EQ(ToJson(request, eMask::Secrets).dump(),
            R"({"PostData":{"meter-config.key":"***","old-password":"***","again":"***","pin":"***","csrf":"***",)"
            R"("name":"jane"},"Cookies":"***","Headers":{"authorization":"***"}})");
}

TEST_F(RecordJson, HoldsDataWhole) {
  vorn::cRecord record;
  record.AppendDataPar("raw", vorn::cData(std::string(1000, '\xFF')));
  EXPECT_EQ(ToJson(record)["raw"], std::string(2000, 'F'));
}

TEST_F(RecordJson, SpeaksUtf8WhateverTheNamesAndTextsAre) {
  EXPECT_EQ(ToJson(Holding("gr\xF6\xDF", "m\xB3\x1b")).dump(), "{\"gr\xC3\xB6\xC3\x9F\":\"m\xC2\xB3\\u001b\"}");
}

}  // namespace
}  // namespace tav::form
