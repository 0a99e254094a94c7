// SPDX-License-Identifier: Apache-2.0
#include <tav/framework/record.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <limits>

#include <tests/support/captured_trace.h>
#include <tests/support/record_copy.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using vorn::cData;
using vorn::cRecord;
using vorn::cRecordPar;
using vorn::cTime;
using vorn::cUuid;

namespace {

constexpr int kLowestInt = std::numeric_limits<int>::min();
constexpr int kHighestInt = std::numeric_limits<int>::max();
constexpr unsigned int kHighestUInt = std::numeric_limits<unsigned int>::max();
constexpr std::uint64_t kHighestUInt64 = std::numeric_limits<std::uint64_t>::max();

const cTime kNoon = cTime::FromSeconds(1393675200, true);

cUuid Uuid() {
  cUuid id;
  id.FromString("00112233-4455-6677-8899-aabbccddeeff");
  return id;
}

cRecord Single(std::string_view name, std::string_view text) {
  cRecord record;
  record.AppendTextPar(name, text);
  return record;
}

// One parameter of every type; each is named after its type.
cRecord OneOfEach() {
  cRecord record;
  record.AppendTextPar("text", "hello");
  record.AppendIntPar("int", -5);
  record.AppendUIntPar("uint", 5);
  record.AppendUInt64Par("uint64", 5000000000u);
  record.AppendBoolPar("bool", true);
  record.AppendRecordPar("record", Single("inner", "x"));
  record.AppendTimePar("time", kNoon);
  record.AppendUuidPar("uuid", Uuid());
  record.AppendDataPar("data", cData("\x01\xFF", 2));
  return record;
}

// Levels of records, each in a parameter "in" of the one around it.
cRecord Nested(unsigned int levels) {
  cRecord record = Single("leaf", "x");
  for (unsigned int i = 1; i < levels; ++i) {
    cRecord outer;
    outer.AppendRecordPar("in", record);
    record = outer;
  }
  return record;
}

std::vector<std::string> Names(const cRecord& record) {
  std::vector<std::string> names;
  for (cRecordPar par = record.First(); par.IsValid(); par = par.Next()) names.push_back(par.GetName());
  return names;
}

std::vector<std::string> Texts(const cRecord& record) {
  std::vector<std::string> texts;
  for (cRecordPar par = record.First(); par.IsValid(); par = par.Next()) texts.push_back(par.GetText());
  return texts;
}

}  // namespace

// ---- the list of parameters

TEST(Record, IsTheSameMadeInAnyWayWithoutParameters) {
  cRecord received = Single("a", "b");
  ASSERT_TRUE(cRecord::FromBytes(nullptr, 0, received));
  for (const cRecord& record : {cRecord(), cRecord::Create(), received}) {
    EXPECT_TRUE(record.IsEmpty());
    EXPECT_EQ(record.GetCount(), 0u);
    EXPECT_EQ(record, cRecord());
    EXPECT_EQ(record.ToString(), "");
    EXPECT_EQ(record.GetBytes(), "");
    EXPECT_FALSE(record.First().IsValid());
    EXPECT_FALSE(record.GetPar("a").IsValid());
    EXPECT_EQ(record.GetDepth(), 1u);
  }
}

TEST(Record, KeepsParametersInTheOrderTheyWereAppended) {
  const cRecord record = OneOfEach();
  EXPECT_FALSE(record.IsEmpty());
  EXPECT_EQ(record.GetCount(), 9u);
  EXPECT_THAT(Names(record), ElementsAre("text", "int", "uint", "uint64", "bool", "record", "time", "uuid", "data"));
}

TEST(Record, GivesTheFirstOfAName) {
  cRecord record = Single("a", "1");
  record.AppendTextPar("b", "2");
  record.AppendTextPar("a", "3");
  EXPECT_EQ(record.GetPar("a").GetText(), "1");
  EXPECT_EQ(record.GetPar("b").GetText(), "2");
  EXPECT_FALSE(record.GetPar("c").IsValid());
  EXPECT_FALSE(record.GetPar("").IsValid());
  EXPECT_FALSE(record.GetPar({}).IsValid());
}

TEST(Record, GivesTheNextOfAnyNameAndTheNextOfTheSame) {
  cRecord record = Single("a", "1");
  record.AppendTextPar("b", "2");
  record.AppendTextPar("a", "3");
  record.AppendTextPar("a", "4");
  const cRecordPar first = record.GetPar("a");
  EXPECT_EQ(first.Next().GetText(), "2");
  EXPECT_EQ(first.NextSame().GetText(), "3");
  EXPECT_EQ(first.NextSame().NextSame().GetText(), "4");
  EXPECT_FALSE(first.NextSame().NextSame().NextSame().IsValid());
  EXPECT_FALSE(record.GetPar("b").NextSame().IsValid());
  EXPECT_FALSE(first.NextSame().NextSame().Next().IsValid());
}

TEST(Record, TellsNamesApartThatBeginAlikeOrHaveTheSameLength) {
  const std::vector<std::string> names = {"",     "a",    "ab",     "abc",    "abcd",
                                          "abce", "abcx", "abcdef", "abcdeg", std::string("abc\0", 4)};
  cRecord record;
  for (const std::string& name : names) record.AppendTextPar(name, "value of " + name);
  for (const std::string& name : names) {
    EXPECT_EQ(record.GetPar(name).GetName(), name);
    EXPECT_EQ(record.GetTextPar(name), "value of " + name);
  }
  EXPECT_FALSE(record.GetPar("abcf").IsValid());
}

TEST(Record, TakesAnEmptyNameWithoutBytes) {
  cRecord record;
  record.AppendUIntPar(std::string_view(), 7);
  EXPECT_EQ(record.GetUIntPar(std::string_view()), 7u);
  EXPECT_EQ(record.GetUIntPar(""), 7u);
  record.SetUIntPar(std::string_view(), 8);
  EXPECT_EQ(record.GetCount(), 1u);
}

TEST(Record, TakesNamesOf255BytesAndRefusesLongerOnesWithATrace) {
  cRecord record;
  const std::string longest(255, 'n');
  record.AppendUIntPar(longest, 1);
  EXPECT_EQ(record.GetUIntPar(longest), 1u);

  const cCapturedTrace trace;
  const cRecord before = record;
  record.AppendUIntPar(longest + "n", 2);
  record.SetTextPar(longest + "n", "2");
  EXPECT_EQ(record, before);
  EXPECT_EQ(record.GetUIntPar(longest + "n"), 0u);
  EXPECT_THAT(trace.GetLines(), testing::SizeIs(2));
  EXPECT_THAT(trace.GetLines()[0], HasSubstr("UnitVORN 2 record: parameter 'nnn"));
  EXPECT_THAT(trace.GetLines()[0], HasSubstr("longer than 255 bytes"));
}

// ---- values

TEST(Record, GivesEveryTypeItsNumber) {
  std::vector<unsigned int> types;
  const cRecord record = OneOfEach();
  for (cRecordPar par = record.First(); par.IsValid(); par = par.Next()) types.push_back(par.GetType());
  EXPECT_THAT(types, ElementsAre(1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u, 9u));
}

TEST(Record, SaysYesToTheQuestionForExactlyItsType) {
  const std::vector<std::pair<std::string, bool (cRecordPar::*)() const>> questions = {
      {"text", &cRecordPar::IsText},     {"int", &cRecordPar::IsInt},   {"uint", &cRecordPar::IsUInt},
      {"uint64", &cRecordPar::IsUInt64}, {"bool", &cRecordPar::IsBool}, {"record", &cRecordPar::IsRecord},
      {"time", &cRecordPar::IsTime},     {"uuid", &cRecordPar::IsUuid}, {"data", &cRecordPar::IsData}};
  const cRecord record = OneOfEach();
  for (const auto& [name, question] : questions) {
    for (const std::string& other : Names(record))
      EXPECT_EQ((record.GetPar(other).*question)(), other == name) << other << " asked for " << name;
    EXPECT_FALSE((cRecordPar().*question)()) << name;
  }
}

TEST(Record, GivesBackWhatWasAppended) {
  const cRecord record = OneOfEach();
  EXPECT_EQ(record.GetTextPar("text"), "hello");
  EXPECT_EQ(record.GetIntPar("int"), -5);
  EXPECT_EQ(record.GetUIntPar("uint"), 5u);
  EXPECT_EQ(record.GetUInt64Par("uint64"), 5000000000u);
  EXPECT_TRUE(record.GetBoolPar("bool"));
  EXPECT_EQ(record.GetRecordPar("record"), Single("inner", "x"));
  EXPECT_EQ(record.GetTimePar("time"), kNoon);
  EXPECT_EQ(record.GetUuidPar("uuid"), Uuid());
  EXPECT_EQ(record.GetDataPar("data"), cData("\x01\xFF", 2));
}

TEST(Record, GivesTheEmptyValueWhenTheFirstOfTheNameHasAnotherTypeOrIsAbsent) {
  cRecord record = OneOfEach();
  std::vector<std::string> names = Names(record);
  names.emplace_back("absent");
  for (const std::string& name : names) {
    if (name != "text") {
      EXPECT_EQ(record.GetTextPar(name), "") << name;
    }
    if (name != "int") {
      EXPECT_EQ(record.GetIntPar(name), 0) << name;
    }
    if (name != "uint") {
      EXPECT_EQ(record.GetUIntPar(name), 0u) << name;
    }
    if (name != "uint64") {
      EXPECT_EQ(record.GetUInt64Par(name), 0u) << name;
    }
    if (name != "bool") {
      EXPECT_FALSE(record.GetBoolPar(name)) << name;
    }
    if (name != "record") {
      EXPECT_TRUE(record.GetRecordPar(name).IsEmpty()) << name;
    }
    if (name != "time") {
      EXPECT_EQ(record.GetTimePar(name), cTime()) << name;
    }
    if (name != "uuid") {
      EXPECT_EQ(record.GetUuidPar(name), cUuid()) << name;
    }
    if (name != "data") {
      EXPECT_TRUE(record.GetDataPar(name).IsEmpty()) << name;
    }
  }
  record.AppendUIntPar("text", 9);  // behind the first of the name: not asked
  EXPECT_EQ(record.GetUIntPar("text"), 0u);
}

TEST(Record, KeepsIntegersAtTheirLimits) {
  cRecord record;
  for (const int value :
       {0, 1, 23, 24, 255, 256, 65535, 65536, kHighestInt, -1, -24, -25, -256, -257, -65537, kLowestInt}) {
    record.SetIntPar("i", value);
    EXPECT_EQ(record.GetIntPar("i"), value);
    EXPECT_EQ(record.GetPar("i").GetText(), std::to_string(value));
  }
  for (const unsigned int value : {0u, 23u, 24u, 255u, 256u, 65535u, 65536u, kHighestUInt}) {
    record.SetUIntPar("u", value);
    EXPECT_EQ(record.GetUIntPar("u"), value);
  }
  for (const std::uint64_t value :
       {std::uint64_t{0}, std::uint64_t{kHighestUInt}, std::uint64_t{kHighestUInt} + 1, kHighestUInt64}) {
    record.SetUInt64Par("u64", value);
    EXPECT_EQ(record.GetUInt64Par("u64"), value);
  }
}

TEST(RecordPar, IntegerGettersGiveAnyIntegerThatFits) {
  struct cCase {
    std::function<void(cRecord&)> append;
    int asInt;
    unsigned int asUInt;
    std::uint64_t asUInt64;
  };
  const auto signedOne = [](int value) { return [=](cRecord& to) { to.AppendIntPar("x", value); }; };
  const auto unsignedOne = [](unsigned int value) { return [=](cRecord& to) { to.AppendUIntPar("x", value); }; };
  const auto longOne = [](std::uint64_t value) { return [=](cRecord& to) { to.AppendUInt64Par("x", value); }; };
  const cCase cases[] = {
      {signedOne(7), 7, 7, 7},
      {signedOne(-7), -7, 0, 0},
      {signedOne(kLowestInt), kLowestInt, 0, 0},
      {signedOne(kHighestInt), kHighestInt, 0x7FFFFFFF, 0x7FFFFFFF},
      {unsignedOne(7), 7, 7, 7},
      {unsignedOne(0x7FFFFFFF), kHighestInt, 0x7FFFFFFF, 0x7FFFFFFF},
      {unsignedOne(0x80000000), 0, 0x80000000, 0x80000000},
      {unsignedOne(kHighestUInt), 0, kHighestUInt, kHighestUInt},
      {longOne(7), 7, 7, 7},
      {longOne(0x80000000), 0, 0x80000000, 0x80000000},
      {longOne(0x100000000), 0, 0, 0x100000000},
      {longOne(kHighestUInt64), 0, 0, kHighestUInt64},
      {[](cRecord& to) { to.AppendTextPar("x", "7"); }, 0, 0, 0},
      {[](cRecord& to) { to.AppendBoolPar("x", true); }, 0, 0, 0},
      {[](cRecord& to) { to.AppendTimePar("x", kNoon); }, 0, 0, 0},
  };
  for (const cCase& one : cases) {
    cRecord record;
    one.append(record);
    const cRecordPar par = record.First();
    EXPECT_EQ(par.GetInt(), one.asInt) << par.GetText();
    EXPECT_EQ(par.GetUInt(), one.asUInt) << par.GetText();
    EXPECT_EQ(par.GetUInt64(), one.asUInt64) << par.GetText();
  }
}

TEST(RecordPar, GivesTheTextFormOfEveryType) {
  EXPECT_THAT(Texts(OneOfEach()), ElementsAre("hello", "-5", "5", "5000000000", "true", "inner=x\n",
                                              "2014-03-01T12:00:00Z", "00112233-4455-6677-8899-aabbccddeeff", "01 FF"));
  cRecord record;
  record.AppendBoolPar("no", false);
  EXPECT_EQ(record.First().GetText(), "false");
}

TEST(RecordPar, PrintsATimeInUtcAndDataWithBlanksHoweverTheyWereSet) {
  cData data("\x01\x02", 2);
  data.SetSeparator("-");
  cRecord record;
  record.AppendTimePar("t", cTime::FromSeconds(0, false));
  record.AppendDataPar("d", data);
  EXPECT_THAT(Texts(record), ElementsAre("1970-01-01T00:00:00Z", "01 02"));
}

TEST(RecordPar, GivesTheBytesOfATextAsData) {
  const cRecord record = OneOfEach();
  EXPECT_EQ(record.GetPar("text").GetData(), cData(std::string("hello")));
  EXPECT_EQ(record.GetPar("text").GetBytesView(), "hello");
  for (const char* name : {"int", "uint", "uint64", "bool", "record", "time", "uuid"}) {
    EXPECT_TRUE(record.GetPar(name).GetData().IsEmpty()) << name;
    EXPECT_EQ(record.GetPar(name).GetBytesView(), "") << name;
  }
}

TEST(RecordPar, GivesTheEmptyValueOfEveryOtherTypeThanItsOwn) {
  const cRecord record = OneOfEach();
  for (const std::string& name : Names(record)) {
    const cRecordPar par = record.GetPar(name);
    cRecord nested = Single("untouched", "x");
    if (name != "bool") {
      EXPECT_FALSE(par.GetBool()) << name;
    }
    if (name != "time") {
      EXPECT_EQ(par.GetTime(), cTime()) << name;
    }
    if (name != "uuid") {
      EXPECT_EQ(par.GetUuid(), cUuid()) << name;
    }
    EXPECT_EQ(par.GetRecord(nested), name == "record") << name;
    if (name != "record") {
      EXPECT_EQ(nested, Single("untouched", "x")) << name;
    }
  }
}

TEST(RecordPar, IsEmptyByTheRuleOfItsType) {
  cRecord record;
  record.AppendTextPar("text", "");
  record.AppendTextPar("no text", nullptr);
  record.AppendRecordPar("record", cRecord());
  record.AppendUuidPar("uuid", cUuid());
  record.AppendDataPar("data", cData());
  for (cRecordPar par = record.First(); par.IsValid(); par = par.Next()) EXPECT_TRUE(par.IsEmpty()) << par.GetName();

  cRecord never;
  never.AppendIntPar("int", 0);
  never.AppendUIntPar("uint", 0);
  never.AppendUInt64Par("uint64", 0);
  never.AppendBoolPar("bool", false);
  never.AppendTimePar("time", cTime());
  for (cRecordPar par = never.First(); par.IsValid(); par = par.Next()) EXPECT_FALSE(par.IsEmpty()) << par.GetName();

  const cRecord full = OneOfEach();
  for (cRecordPar par = full.First(); par.IsValid(); par = par.Next()) EXPECT_FALSE(par.IsEmpty()) << par.GetName();
}

TEST(RecordPar, AnInvalidOneAnswersEverythingEmpty) {
  const cRecordPar par;
  EXPECT_FALSE(par.IsValid());
  EXPECT_TRUE(par.IsEmpty());
  EXPECT_FALSE(par.HasText());
  EXPECT_EQ(par.GetName(), "");
  EXPECT_EQ(par.GetType(), 0u);
  EXPECT_EQ(par.GetText(), "");
  EXPECT_EQ(par.GetInt(), 0);
  EXPECT_EQ(par.GetUInt(), 0u);
  EXPECT_EQ(par.GetUInt64(), 0u);
  EXPECT_FALSE(par.GetBool());
  EXPECT_EQ(par.GetTime(), cTime());
  EXPECT_EQ(par.GetUuid(), cUuid());
  EXPECT_TRUE(par.GetData().IsEmpty());
  cRecord record = Single("a", "b");
  EXPECT_FALSE(par.GetRecord(record));
  EXPECT_EQ(record, Single("a", "b"));
  EXPECT_FALSE(par.Next().IsValid());
  EXPECT_FALSE(par.NextSame().IsValid());
}

TEST(RecordPar, AnEmptyRecordIsReadable) {
  cRecord record, nested = Single("a", "b");
  record.AppendRecordPar("empty", cRecord());
  EXPECT_TRUE(record.GetPar("empty").GetRecord(nested));
  EXPECT_TRUE(nested.IsEmpty());
}

// ---- texts

TEST(Record, KeepsATextWithoutTextDifferentFromAnEmptyOne) {
  cRecord none, empty;
  none.AppendTextPar("t", nullptr);
  empty.AppendTextPar("t", "");
  EXPECT_NE(none, empty);
  EXPECT_FALSE(none.GetPar("t").HasText());
  EXPECT_TRUE(empty.GetPar("t").HasText());
  for (const cRecord& record : {none, empty}) {
    EXPECT_TRUE(record.GetPar("t").IsText());
    EXPECT_TRUE(record.GetPar("t").IsEmpty());
    EXPECT_EQ(record.GetPar("t").GetText(), "");
    EXPECT_EQ(record.GetTextPar("t"), "");
  }
  EXPECT_EQ(none.ToString(), "t (no text)\n");
  EXPECT_EQ(empty.ToString(), "t=\n");
}

TEST(Record, HasTextOnlyForTexts) {
  const cRecord record = OneOfEach();
  for (const std::string& name : Names(record)) EXPECT_EQ(record.GetPar(name).HasText(), name == "text") << name;
}

TEST(Record, TakesTextsThatAreNotUtf8AsTheyAre) {
  for (const std::string text :
       {"\xB0\x43", "m\xB3", "\xC3", "\xFF\xFE", "\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80"}) {
    const cRecord record = Single("unit", text);
    EXPECT_TRUE(record.GetPar("unit").IsText());
    EXPECT_EQ(record.GetTextPar("unit"), text);
    cRecord received;
    EXPECT_TRUE(cRecord::FromBytes(record.GetBytes().data(), record.GetBytes().size(), received));
    EXPECT_EQ(received, record);
  }
}

TEST(Record, TakesTextsWithZeroBytesAndOfAnyLength) {
  for (const std::size_t size : {1u, 7u, 8u, 23u, 24u, 255u, 256u, 65535u, 65536u, 1000000u}) {
    const std::string text(size, '\0');
    EXPECT_EQ(Single("t", text).GetTextPar("t"), text);
  }
}

// ---- replacing

TEST(Record, SetReplacesTheFirstOfItsNameInItsPlace) {
  cRecord record = Single("a", "1");
  record.AppendTextPar("b", "2");
  record.AppendTextPar("c", "3");
  record.AppendTextPar("b", "4");
  record.SetTextPar("b", "a longer text than before");
  EXPECT_THAT(Names(record), ElementsAre("a", "b", "c", "b"));
  EXPECT_THAT(Texts(record), ElementsAre("1", "a longer text than before", "3", "4"));
  record.SetTextPar("b", "");
  EXPECT_THAT(Texts(record), ElementsAre("1", "", "3", "4"));
}

TEST(Record, SetAppendsWhenThereIsNoneOfTheName) {
  cRecord record;
  record.SetTextPar("a", "1");
  record.SetTextPar("b", "2");
  EXPECT_THAT(Names(record), ElementsAre("a", "b"));
}

TEST(Record, SetsEveryTypeOverEveryOther) {
  const std::vector<std::function<void(cRecord&, const char*)>> setters = {
      [](cRecord& to, const char* name) { to.SetTextPar(name, "hello"); },
      [](cRecord& to, const char* name) { to.SetTextPar(name, nullptr); },
      [](cRecord& to, const char* name) { to.SetIntPar(name, -5); },
      [](cRecord& to, const char* name) { to.SetUIntPar(name, 5); },
      [](cRecord& to, const char* name) { to.SetUInt64Par(name, 5000000000u); },
      [](cRecord& to, const char* name) { to.SetBoolPar(name, true); },
      [](cRecord& to, const char* name) { to.SetRecordPar(name, Single("inner", "x")); },
      [](cRecord& to, const char* name) { to.SetTimePar(name, kNoon); },
      [](cRecord& to, const char* name) { to.SetUuidPar(name, Uuid()); },
      [](cRecord& to, const char* name) { to.SetDataPar(name, cData("\x01\xFF", 2)); },
  };
  for (const auto& first : setters) {
    for (const auto& second : setters) {
      cRecord expected = Single("before", "1"), record = expected;
      second(expected, "x");
      expected.AppendTextPar("behind", "2");
      first(record, "x");
      record.AppendTextPar("behind", "2");
      second(record, "x");
      EXPECT_EQ(record, expected) << record.ToString() << "instead of\n" << expected.ToString();
    }
  }
}

TEST(Record, SetLeavesTheOldValueWhenTheNewOneIsRefused) {
  const cCapturedTrace trace;
  cRecord record = Single("in", "1");
  record.SetRecordPar("in", Nested(16));
  EXPECT_EQ(record, Single("in", "1"));
  EXPECT_THAT(trace.GetLines(), testing::SizeIs(1));
}

// ---- sharing

TEST(Record, ACopyIsAValueOfItsOwn) {
  cRecord record = Single("a", "1");
  cRecord copy = record;
  EXPECT_EQ(copy.GetBytes().data(), record.GetBytes().data()) << "copies share the bytes until one is changed";
  copy.AppendTextPar("b", "2");
  EXPECT_EQ(record, Single("a", "1"));
  record.SetTextPar("a", "3");
  EXPECT_EQ(copy.GetTextPar("a"), "1");
  copy = record;
  EXPECT_EQ(copy, record);
  record = cRecord();
  EXPECT_EQ(copy.GetTextPar("a"), "3");
}

TEST(Record, AMovedFromOneIsEmptyAndUsable) {
  cRecord record = Single("a", "1");
  const cRecord moved = std::move(record);
  EXPECT_EQ(moved.GetTextPar("a"), "1");
  EXPECT_TRUE(record.IsEmpty());  // NOLINT(bugprone-use-after-move): what a moved-from record is, is the question
  record.AppendTextPar("b", "2");
  EXPECT_EQ(record, Single("b", "2"));
}

TEST(RecordPar, KeepsItsBytesWhenTheRecordIsChangedLater) {
  cRecord record = Single("a", "old");
  const cRecordPar view = record.GetPar("a");
  const std::string_view bytes = view.GetBytesView();
  record.SetTextPar("a", "new");
  record.AppendTextPar("b", std::string(100000, 'x'));
  EXPECT_EQ(view.GetText(), "old");
  EXPECT_EQ(bytes, "old");
  EXPECT_FALSE(view.Next().IsValid()) << "a view sees the record as it was";
  EXPECT_EQ(record.GetTextPar("a"), "new");
}

TEST(RecordPar, OutlivesItsRecord) {
  cRecordPar view;
  {
    const cRecord record = OneOfEach();
    view = record.GetPar("data");
  }
  EXPECT_EQ(view.GetName(), "data");
  EXPECT_EQ(view.GetText(), "01 FF");
}

TEST(RecordPar, CopiesAndMoves) {
  const cRecord record = OneOfEach();
  cRecordPar first = record.First();
  const cRecordPar copy = first;
  const cRecordPar moved = std::move(first);
  EXPECT_EQ(copy.GetText(), "hello");
  EXPECT_EQ(moved.GetText(), "hello");
  EXPECT_EQ(moved.Next().GetName(), "int");
  EXPECT_FALSE(first.IsValid());  // NOLINT(bugprone-use-after-move)
  EXPECT_FALSE(first.Next().IsValid());
}

TEST(Record, ANestedOneIsReadInPlaceAndIsAValueOfItsOwn) {
  cRecord outer = OneOfEach();
  cRecord inner = outer.GetRecordPar("record");
  EXPECT_GT(inner.GetBytes().data(), outer.GetBytes().data());
  EXPECT_LT(inner.GetBytes().data(), outer.GetBytes().data() + outer.GetBytes().size());
  inner.AppendTextPar("more", "y");
  EXPECT_EQ(outer, OneOfEach());
  outer = cRecord();
  EXPECT_THAT(Names(inner), ElementsAre("inner", "more"));
}

TEST(Record, ANestedOneOutlivesAllAroundIt) {
  cRecord inner = Nested(16);
  for (int i = 0; i < 15; ++i) inner = inner.GetRecordPar("in");
  EXPECT_EQ(inner, Single("leaf", "x"));
  EXPECT_EQ(inner.GetDepth(), 1u);
}

TEST(Record, MayBeAppendedToItself) {
  cRecord record = Single("a", "1");
  record.AppendRecordPar("self", record);
  record.SetRecordPar("self", record);
  EXPECT_EQ(record.GetCount(), 2u);
  EXPECT_EQ(record.GetRecordPar("self").GetRecordPar("self"), Single("a", "1"));
  record.AppendTextPar("copy", record.GetPar("a").GetBytesView());
  record.AppendTextPar(record.GetPar("a").GetNameView(), "2");
  EXPECT_EQ(record.GetPar("a").NextSame().GetText(), "2");
  EXPECT_EQ(record.GetTextPar("copy"), "1");
}

// ---- nesting

TEST(Record, Nests16DeepAndRefuses17WithATrace) {
  const cRecord deepest = Nested(16);
  EXPECT_EQ(deepest.GetDepth(), 16u);
  EXPECT_EQ(deepest.GetCount(), 1u);

  const cCapturedTrace trace;
  cRecord outer = Single("a", "1");
  outer.AppendRecordPar("in", deepest);
  EXPECT_EQ(outer, Single("a", "1"));
  EXPECT_THAT(trace.GetLines(),
              ElementsAre("UnitVORN 2 record: parameter 'in' not appended, records nest deeper than 16"));
}

TEST(Record, KnowsItsDepthAgainWhenItsDeepestParameterIsReplaced) {
  const cCapturedTrace trace;
  cRecord record = Nested(16);
  record.SetRecordPar("in", Single("leaf", "x"));
  cRecord outer;
  outer.AppendRecordPar("in", record);
  EXPECT_EQ(outer.GetDepth(), 3u);
  EXPECT_THAT(trace.GetLines(), IsEmpty());
}

// What a nested record is appended to moves to a buffer of its own; bytes that end where they ended before are new
// ones.
TEST(Record, KnowsItsDepthWhenANestedOneGrowsByWhatStoodBeforeIt) {
  for (std::size_t before = 0; before < 300; ++before) {
    cRecord outer = Single("", std::string(before, 'x'));
    outer.AppendRecordPar("in", Single("leaf", "x"));
    cRecord inner = outer.GetRecordPar("in");
    inner.AppendRecordPar("deep", Nested(15));
    EXPECT_EQ(inner.GetDepth(), 16u) << before;
  }
}

TEST(Record, CountsTheDepthOfANestedOneByItself) {
  cRecord outer = Nested(5);
  outer.AppendRecordPar("flat", Single("leaf", "x"));
  EXPECT_EQ(outer.GetDepth(), 5u);
  EXPECT_EQ(outer.GetRecordPar("flat").GetDepth(), 1u);
  EXPECT_EQ(outer.GetRecordPar("in").GetDepth(), 4u);
  cRecord copy = outer.GetRecordPar("in");
  copy.AppendTextPar("more", "x");
  EXPECT_EQ(copy.GetDepth(), 4u);
}

TEST(Record, ReadsManyNestedOnes) {
  cRecord record;
  for (unsigned int i = 0; i < 200; ++i) {
    cRecord entry;
    entry.AppendUIntPar("n", i);
    record.AppendRecordPar("entry", entry);
  }
  unsigned int expected = 0;
  for (cRecordPar par = record.GetPar("entry"); par.IsValid(); par = par.NextSame(), ++expected) {
    cRecord entry;
    ASSERT_TRUE(par.GetRecord(entry));
    EXPECT_EQ(entry.GetUIntPar("n"), expected);
  }
  EXPECT_EQ(expected, 200u);
}

// ---- equality and text

TEST(Record, IsEqualWhenItsBytesAre) {
  EXPECT_EQ(OneOfEach(), OneOfEach());
  EXPECT_EQ(CopyByParameter(OneOfEach()), OneOfEach());
  cRecord ab = Single("a", "1"), ba = Single("b", "2");
  ab.AppendTextPar("b", "2");
  ba.AppendTextPar("a", "1");
  EXPECT_NE(ab, ba) << "the order counts";
}

TEST(Record, KeepsTheSameValueOfDifferentTypesDifferent) {
  const std::string sixteenZeroes(16, '\0');
  std::vector<cRecord> records(8);
  records[0].AppendIntPar("x", 5);
  records[1].AppendUIntPar("x", 5);
  records[2].AppendUInt64Par("x", 5);
  records[3].AppendTimePar("x", cTime::FromSeconds(5, true));
  records[4].AppendUuidPar("x", cUuid());
  records[5].AppendDataPar("x", cData(sixteenZeroes));
  records[6].AppendTextPar("x", sixteenZeroes);
  records[7].AppendTextPar("x", "5");
  for (std::size_t i = 0; i < records.size(); ++i)
    for (std::size_t k = 0; k < records.size(); ++k) EXPECT_EQ(records[i] == records[k], i == k) << i << " " << k;
}

TEST(Record, PrintsOneParameterALineAndIndentsNestedOnes) {
  cRecord record = OneOfEach();
  record.AppendRecordPar("empty", cRecord());
  EXPECT_EQ(record.ToString(),
            "text=hello\n"
            "int=-5\n"
            "uint=5\n"
            "uint64=5000000000\n"
            "bool=true\n"
            "record={\n"
            "  inner=x\n"
            "}\n"
            "time=2014-03-01T12:00:00Z\n"
            "uuid=00112233-4455-6677-8899-aabbccddeeff\n"
            "data=01 FF\n"
            "empty={}\n");
}

TEST(Record, PrintsFromALevelOn) {
  cRecord record = Single("a", "1");
  record.AppendRecordPar("in", Single("b", "2"));
  EXPECT_EQ(record.ToString(0, 2), "    a=1\n    in={\n      b=2\n    }\n");
}

TEST(Record, CutsDataBehindTheGivenNumberOfBytes) {
  cRecord inner, record;
  inner.AppendDataPar("d", cData("\1\2\3", 3));
  record.AppendRecordPar("in", inner);
  record.AppendTextPar("t", "texts stay whole");
  EXPECT_EQ(record.ToString(2), "in={\n  d=01 02 ...\n}\nt=texts stay whole\n");
  EXPECT_EQ(record.ToString(3), "in={\n  d=01 02 03\n}\nt=texts stay whole\n");
  EXPECT_EQ(record.ToString(0), record.ToString(3));
}
