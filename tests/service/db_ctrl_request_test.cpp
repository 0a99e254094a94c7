// SPDX-License-Identifier: Apache-2.0
#include <tav/service/db_ctrl_request.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <type_traits>

#include <tests/support/parameters.h>

using tav::cDbCtrlRequest;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

cDbCtrlRequest Full() {
  cDbCtrlRequest request;
  request.m_meterID = "4711";
  request.m_addr = "5";
  request.m_vendor = "vendor";
  request.m_mfct = "EMH";
  request.m_medium = "E";
  request.m_mode = "values";
  request.EnableRaw("base64");
  request.m_fromUTC = 100;
  request.m_toUTC = 200;
  request.m_maxLen = 7;
  request.m_profile = "day";
  request.AddObisID("1-0:1.8.0");
  request.AddObisID("1-0:2.8.0");
  return request;
}

// Every field but the record.
std::string Dump(const cDbCtrlRequest& r) {
  std::string text = std::to_string(r.m_version) + "|" + r.m_meterID + "|" + r.m_addr + "|" + r.m_vendor + "|" +
                     r.m_mfct + "|" + r.m_medium + "|" + r.m_mode + "|" + r.m_rawFormat + "|" +
                     std::to_string(r.m_fromUTC) + " " + std::to_string(r.m_toUTC) + " " + std::to_string(r.m_maxLen) +
                     "|" + r.m_profile + "|" + r.m_error;
  for (const std::string& id : r.m_obisIds) text += "|" + id;
  return text;
}

constexpr const char* kDefaults = "2||||||||0 4294967295 100||";

}  // namespace

TEST(DbCtrlRequest, StartsWithItsDefaults) {
  EXPECT_EQ(Dump(cDbCtrlRequest()), kDefaults);
  EXPECT_TRUE(cDbCtrlRequest().m_record.IsEmpty());
}

TEST(DbCtrlRequest, InitRestoresTheDefaults) {
  cDbCtrlRequest request = Full();
  request.m_version = 7;
  request.m_error = "old";
  request.ToRecord();
  request.Init();
  EXPECT_EQ(Dump(request), kDefaults);
  EXPECT_TRUE(request.m_record.IsEmpty());
}

TEST(DbCtrlRequest, CopiesAndAssignsEveryField) {
  cDbCtrlRequest source = Full();
  source.m_error = "old";
  source.ToRecord();
  const cDbCtrlRequest copy = source;
  cDbCtrlRequest assigned;
  assigned = source;
  for (const cDbCtrlRequest* request : {&copy, static_cast<const cDbCtrlRequest*>(&assigned)}) {
    EXPECT_EQ(Dump(*request), Dump(source));
    EXPECT_EQ(request->m_record, source.m_record);
  }
  const cDbCtrlRequest& same = assigned;
  assigned = same;
  EXPECT_EQ(Dump(assigned), Dump(source));
  EXPECT_EQ(assigned.m_record, source.m_record);
}

TEST(DbCtrlRequest, IsMadeToBeDerivedFrom) {
  struct cNamed : cDbCtrlRequest {
    std::string ToString() const override { return "named"; }
  };
  static_assert(std::has_virtual_destructor_v<cDbCtrlRequest>);
  const cNamed named;
  const cDbCtrlRequest& request = named;
  EXPECT_EQ(request.ToString(), "named");
}

// ---- setters

TEST(DbCtrlRequest, AnEmptyIdentifierIsNotAdded) {
  cDbCtrlRequest request;
  request.AddObisID("");
  EXPECT_THAT(request.m_obisIds, IsEmpty());
  request.AddObisID("b");
  request.AddObisID("a");
  request.AddObisID("b");
  EXPECT_THAT(request.m_obisIds, ElementsAre("b", "a", "b")) << "in order of addition, none dropped";
}

TEST(DbCtrlRequest, RawIsEnabledByAFormatOfAnyKind) {
  cDbCtrlRequest request;
  std::string format = "old";
  EXPECT_FALSE(request.IsRawEnabled(format));
  EXPECT_EQ(format, "");
  request.EnableRaw("any");
  EXPECT_TRUE(request.IsRawEnabled(format));
  EXPECT_EQ(format, "any");
  request.EnableRaw("");
  EXPECT_FALSE(request.IsRawEnabled(format));
}

TEST(DbCtrlRequest, NumbersComeFromTexts) {
  const struct {
    const char* text;
    unsigned int number;
  } kCases[] = {
      {"0", 0},
      {"7", 7},
      {"007", 7},
      {" 7", 7},
      {"+7", 7},
      {"7.9", 7},
      {"7 8", 7},
      {"7x", 7},
      {"0x10", 0},
      {"x7", 0},
      {"none", 0},
      {" ", 0},
      {"-1", 0},
      {"-", 0},
      {"4294967295", 4294967295},
      {"4294967296", 4294967295},
      {"99999999999999999999", 4294967295},
      {"-99999999999999999999", 0},
  };
  for (const auto& c : kCases) {
    cDbCtrlRequest request;
    request.SetMaxLen(c.text);
    request.SetFromUTC(c.text);
    request.SetToUTC(c.text);
    EXPECT_EQ(request.m_maxLen, c.number) << c.text;
    EXPECT_EQ(request.m_fromUTC, c.number) << c.text;
    EXPECT_EQ(request.m_toUTC, c.number) << c.text;
  }
}

TEST(DbCtrlRequest, EmptyTextsSetTheDefaults) {
  cDbCtrlRequest request = Full();
  request.SetMaxLen("");
  request.SetFromUTC("");
  request.SetToUTC("");
  EXPECT_EQ(request.m_maxLen, 100u);
  EXPECT_EQ(request.m_fromUTC, 0u);
  EXPECT_EQ(request.m_toUTC, 4294967295u);
}

// ---- record form

TEST(DbCtrlRequest, TheLeastRecordFormHasFourNumbers) {
  EXPECT_THAT(Parameters(cDbCtrlRequest().ToRecord()),
              ElementsAre("version uint=2", "fromUTC uint=0", "toUTC uint=4294967295", "maxlen uint=100"));
}

TEST(DbCtrlRequest, TheRecordFormIsInItsOrderManufacturerBeforeMedium) {
  EXPECT_THAT(Parameters(Full().ToRecord()),
              ElementsAre("version uint=2", "meterID text=4711", "addr text=5", "vendor text=vendor", "mfct text=EMH",
                          "medium text=E", "mode text=values",
                          "obis-id record={obis-id text=1-0:1.8.0, obis-id text=1-0:2.8.0}", "raw-format text=base64",
                          "fromUTC uint=100", "toUTC uint=200", "maxlen uint=7", "profile text=day"));
}

TEST(DbCtrlRequest, TheRecordFormIsItsOwnAndIsRebuilt) {
  cDbCtrlRequest request = Full();
  const vorn::cRecord& form = request.ToRecord();
  EXPECT_EQ(&form, &request.m_record);
  request.Init();
  request.ToRecord();
  EXPECT_EQ(form.GetCount(), 4u);
}

TEST(DbCtrlRequest, SurvivesTheRoundTripInOrder) {
  cDbCtrlRequest read;
  EXPECT_TRUE(read.FromRecord(Full().ToRecord()));
  EXPECT_EQ(Dump(read), Dump(Full()));
}

TEST(DbCtrlRequest, ReadsItsOwnRecord) {
  cDbCtrlRequest request = Full();
  EXPECT_TRUE(request.FromRecord(request.ToRecord()));
  EXPECT_EQ(Dump(request), Dump(Full()));
}

TEST(DbCtrlRequest, AnEmptyRecordAsksForEverything) {
  cDbCtrlRequest read = Full();
  EXPECT_TRUE(read.FromRecord(vorn::cRecord())) << "without a version it is the present one";
  EXPECT_EQ(Dump(read), kDefaults);
}

TEST(DbCtrlRequest, RefusesAnotherVersionAndReadsNothingBehindIt) {
  for (const unsigned int version : {0u, 1u, 3u}) {
    vorn::cRecord form = Full().ToRecord();
    form.SetUIntPar("version", version);
    cDbCtrlRequest read;
    EXPECT_FALSE(read.FromRecord(form));
    EXPECT_EQ(Dump(read), std::to_string(version) + "||||||||0 4294967295 100||bad version");
  }
}

TEST(DbCtrlRequest, AVersionOfAnotherTypeIsNoVersion) {
  vorn::cRecord form;
  form.AppendIntPar("version", 3);
  cDbCtrlRequest read;
  EXPECT_TRUE(read.FromRecord(form));
  EXPECT_EQ(read.m_version, 2u);
}

TEST(DbCtrlRequest, TakesTwoRawFormatsOnly) {
  for (const char* format : {"base64", "other"}) {
    vorn::cRecord form;
    form.AppendTextPar("raw-format", format);
    cDbCtrlRequest read;
    EXPECT_TRUE(read.FromRecord(form));
    EXPECT_EQ(read.m_rawFormat, format);
  }
  for (const char* format : {"Base64", "hex", " "}) {
    vorn::cRecord form;
    form.AppendTextPar("meterID", "4711");
    form.AppendTextPar("raw-format", format);
    form.AppendUIntPar("fromUTC", 5);
    cDbCtrlRequest read;
    EXPECT_FALSE(read.FromRecord(form));
    EXPECT_EQ(read.m_error, "unknown raw-format");
    EXPECT_EQ(read.m_rawFormat, format) << "the rejected one stays";
    EXPECT_EQ(read.m_meterID, "4711") << "and what was read before it";
    EXPECT_EQ(read.m_fromUTC, 0u) << "but nothing behind it is read";
  }
}

TEST(DbCtrlRequest, AnEmptyOrMistypedRawFormatIsNone) {
  vorn::cRecord empty, mistyped;
  empty.AppendTextPar("raw-format", "");
  mistyped.AppendUIntPar("raw-format", 64);
  for (const vorn::cRecord& form : {empty, mistyped}) {
    cDbCtrlRequest read;
    EXPECT_TRUE(read.FromRecord(form));
    EXPECT_EQ(read.m_rawFormat, "");
  }
}

TEST(DbCtrlRequest, ParametersOfAnotherTypeOrNameAreIgnored) {
  vorn::cRecord form;
  for (const char* name : {"meterID", "addr", "vendor", "medium", "mfct", "mode", "profile", "obis-id", "unknown"})
    form.AppendUIntPar(name, 1);
  for (const char* name : {"fromUTC", "toUTC", "maxlen"}) form.AppendTextPar(name, "1");
  cDbCtrlRequest read;
  EXPECT_TRUE(read.FromRecord(form));
  EXPECT_EQ(Dump(read), kDefaults);
}

TEST(DbCtrlRequest, EmptyTextsLeaveTheDefaults) {
  vorn::cRecord form;
  for (const char* name : {"meterID", "addr", "vendor", "medium", "mfct", "mode", "profile"})
    form.AppendTextPar(name, "");
  cDbCtrlRequest read;
  EXPECT_TRUE(read.FromRecord(form));
  EXPECT_EQ(Dump(read), kDefaults);
}

TEST(DbCtrlRequest, OnlyTheFirstOfANameCounts) {
  vorn::cRecord form;
  form.AppendUIntPar("meterID", 1);
  form.AppendTextPar("meterID", "4711");
  form.AppendTextPar("addr", "5");
  form.AppendTextPar("addr", "6");
  cDbCtrlRequest read;
  EXPECT_TRUE(read.FromRecord(form));
  EXPECT_EQ(read.m_meterID, "") << "the first one is no text";
  EXPECT_EQ(read.m_addr, "5");
}

TEST(DbCtrlRequest, TakesEveryTextNamedObisIdInsideTheFirstRecordOfThatName) {
  vorn::cRecord ids, more, form;
  ids.AppendTextPar("obis-id", "b");
  ids.AppendUIntPar("obis-id", 1);
  ids.AppendTextPar("other", "no");
  ids.AppendTextPar("obis-id", "");
  ids.AppendTextPar("obis-id", "a");
  more.AppendTextPar("obis-id", "c");
  form.AppendRecordPar("obis-id", ids);
  form.AppendRecordPar("obis-id", more);
  cDbCtrlRequest read;
  EXPECT_TRUE(read.FromRecord(form));
  EXPECT_THAT(read.m_obisIds, ElementsAre("b", "a"));
}

TEST(DbCtrlRequest, AnObisIdThatIsATextOrAnEmptyRecordAsksForNone) {
  vorn::cRecord text, empty;
  text.AppendTextPar("obis-id", "1-0:1.8.0");
  empty.AppendRecordPar("obis-id", vorn::cRecord());
  for (const vorn::cRecord& form : {text, empty}) {
    cDbCtrlRequest read;
    EXPECT_TRUE(read.FromRecord(form));
    EXPECT_THAT(read.m_obisIds, IsEmpty());
  }
}

TEST(DbCtrlRequest, ASuccessClearsTheErrorText) {
  vorn::cRecord bad;
  bad.AppendUIntPar("version", 3);
  cDbCtrlRequest read;
  EXPECT_FALSE(read.FromRecord(bad));
  EXPECT_TRUE(read.FromRecord(vorn::cRecord()));
  EXPECT_EQ(read.m_error, "");
}

// ---- text

TEST(DbCtrlRequest, TheTextHasTheMediumBeforeTheManufacturer) {
  EXPECT_EQ(Full().ToString(), "meterID=4711 addr=5 vendor=vendor medium=E mfct=EMH mode=values");
  EXPECT_EQ(cDbCtrlRequest().ToString(), "meterID=? addr=? vendor=? medium=? mfct=? mode=?");
}
