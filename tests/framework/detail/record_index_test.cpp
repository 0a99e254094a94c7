// SPDX-License-Identifier: Apache-2.0
// The wire form of a record: what is written for each type, and what is refused on the way in.
#include <tav/framework/record.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <random>
#include <vector>

#include <tests/support/record_copy.h>

using vorn::cData;
using vorn::cRecord;
using vorn::cRecordPar;
using vorn::cTime;
using vorn::cUuid;

namespace {

std::string FromHex(const char* text) {
  cData data;
  EXPECT_TRUE(cData::FromHex(text, data)) << text;
  return data.AsText();
}

std::string ToHex(std::string_view bytes) { return cData(bytes.data(), bytes.size()).ToString(0); }

// Reads from a block of exactly that size, so that a sanitizer sees a byte read behind it.
bool Receive(std::string_view bytes, cRecord& record, std::string* error = nullptr) {
  const std::unique_ptr<char[]> exact(new char[bytes.size()]);
  std::copy(bytes.begin(), bytes.end(), exact.get());
  return cRecord::FromBytes(exact.get(), bytes.size(), record, error);
}

cUuid Uuid() {
  cUuid id;
  id.FromString("00112233-4455-6677-8899-aabbccddeeff");
  return id;
}

cRecord Sample() {
  cRecord entry, record;
  entry.AppendTextPar("obis", "1-0:1.8.0");
  entry.AppendUInt64Par("value", 1234567890123u);
  entry.AppendTextPar("unit", "\xB0\x43");
  record.AppendUIntPar("version", 1);
  record.AppendIntPar("offset", -300);
  record.AppendBoolPar("valid", true);
  record.AppendTextPar("none", nullptr);
  record.AppendRecordPar("entry", entry);
  record.AppendRecordPar("entry", cRecord());
  record.AppendTimePar("time", cTime::FromSeconds(1393675200, true));
  record.AppendUuidPar("id", Uuid());
  record.AppendDataPar("raw", cData("\x1B\x1B\x01", 3));
  return record;
}

}  // namespace

TEST(RecordWire, WritesEachTypeInItsShortestForm) {
  struct cCase {
    std::function<void(cRecord&)> append;
    const char* bytes;
  };
  cRecord inner;
  inner.AppendUIntPar("b", 1);
  const cCase cases[] = {
      {[](cRecord& to) { to.AppendTextPar("a", "hi"); }, "61 61 01 62 68 69"},
      {[](cRecord& to) { to.AppendTextPar("a", ""); }, "61 61 01 60"},
      {[](cRecord& to) { to.AppendTextPar("a", nullptr); }, "61 61 01 F6"},
      {[](cRecord& to) { to.AppendTextPar("a", "\xC2\xB0\x43"); }, "61 61 01 63 C2 B0 43"},
      {[](cRecord& to) { to.AppendTextPar("a", "\xB0\x43"); }, "61 61 01 42 B0 43"},
      {[](cRecord& to) { to.AppendIntPar("a", 5); }, "61 61 02 05"},
      {[](cRecord& to) { to.AppendIntPar("a", -1); }, "61 61 02 20"},
      {[](cRecord& to) { to.AppendIntPar("a", -25); }, "61 61 02 38 18"},
      {[](cRecord& to) { to.AppendIntPar("a", -2147483647 - 1); }, "61 61 02 3A 7F FF FF FF"},
      {[](cRecord& to) { to.AppendUIntPar("a", 23); }, "61 61 03 17"},
      {[](cRecord& to) { to.AppendUIntPar("a", 24); }, "61 61 03 18 18"},
      {[](cRecord& to) { to.AppendUIntPar("a", 256); }, "61 61 03 19 01 00"},
      {[](cRecord& to) { to.AppendUIntPar("a", 0xFFFFFFFF); }, "61 61 03 1A FF FF FF FF"},
      {[](cRecord& to) { to.AppendUInt64Par("a", 5); }, "61 61 04 05"},
      {[](cRecord& to) { to.AppendUInt64Par("a", 0x100000000); }, "61 61 04 1B 00 00 00 01 00 00 00 00"},
      {[](cRecord& to) { to.AppendBoolPar("a", false); }, "61 61 05 F4"},
      {[](cRecord& to) { to.AppendBoolPar("a", true); }, "61 61 05 F5"},
      {[](cRecord& to) { to.AppendRecordPar("a", cRecord()); }, "61 61 06 40"},
      {[&](cRecord& to) { to.AppendRecordPar("a", inner); }, "61 61 06 44 61 62 03 01"},
      {[](cRecord& to) { to.AppendTimePar("a", cTime::FromSeconds(1393675200, false)); }, "61 61 07 1A 53 11 CB C0"},
      {[](cRecord& to) { to.AppendUuidPar("a", Uuid()); },
       "61 61 08 50 00 11 22 33 44 55 66 77 88 99 AA BB CC DD EE FF"},
      {[](cRecord& to) { to.AppendDataPar("a", cData("\1\2", 2)); }, "61 61 09 42 01 02"},
      {[](cRecord& to) { to.AppendDataPar("", cData()); }, "60 09 40"},
  };
  for (const cCase& one : cases) {
    cRecord record, received;
    one.append(record);
    EXPECT_EQ(ToHex(record.GetBytes()), one.bytes);
    EXPECT_TRUE(Receive(record.GetBytes(), received)) << one.bytes;
    EXPECT_EQ(received, record);
  }
}

TEST(RecordWire, ReadsBackWhatItWrote) {
  const cRecord sample = Sample();
  cRecord received;
  std::string error = "untouched";
  ASSERT_TRUE(Receive(sample.GetBytes(), received, &error)) << error;
  EXPECT_EQ(error, "untouched");
  EXPECT_EQ(received, sample);
  EXPECT_EQ(received.ToString(), sample.ToString());
  EXPECT_EQ(received.GetDepth(), 2u);
  EXPECT_EQ(CopyByParameter(received), sample);
  received.AppendUIntPar("more", 1);
  EXPECT_EQ(received.GetCount(), sample.GetCount() + 1);
}

TEST(RecordWire, RefusesWithTheReasonAndTheByteOffset) {
  struct cCase {
    const char* bytes;
    const char* error;
  };
  const cCase cases[] = {
      {"01", "byte 0: name is not a text"},
      {"41 61 03 01", "byte 0: name is not a text"},
      {"F6 03 01", "byte 0: name is not a text"},
      {"61", "byte 0: name ends early"},
      {"61 61", "byte 2: ends before its value"},
      {"61 61 03", "byte 2: ends before its value"},
      {"78 05 61", "byte 0: number not in its shortest form"},
      {"79 00 FF 61", "byte 0: number not in its shortest form"},
      {"79 01", "byte 0: ends early"},
      {"79 01 00 61", "byte 0: name is longer than 255 bytes"},
      {"7F 61 61 FF 03 01", "byte 0: indefinite or reserved length"},
      {"7C", "byte 0: indefinite or reserved length"},
      {"61 61 00 01", "byte 2: unknown parameter type"},
      {"61 61 0A 01", "byte 2: unknown parameter type"},
      {"61 61 18 03 01", "byte 2: unknown parameter type"},
      {"61 61 F6 01", "byte 2: unknown parameter type"},
      // a value that is another kind of item
      {"61 61 01 05", "byte 2: value does not fit its type"},
      {"61 61 01 F5", "byte 2: value does not fit its type"},
      {"61 61 02 61 35", "byte 2: value does not fit its type"},
      {"61 61 03 20", "byte 2: value does not fit its type"},
      {"61 61 04 20", "byte 2: value does not fit its type"},
      {"61 61 05 01", "byte 2: value does not fit its type"},
      {"61 61 05 F6", "byte 2: value does not fit its type"},
      {"61 61 05 F7", "byte 2: value does not fit its type"},
      {"61 61 06 60", "byte 2: value does not fit its type"},
      {"61 61 07 20", "byte 2: value does not fit its type"},
      {"61 61 08 40", "byte 2: value does not fit its type"},
      {"61 61 08 4F 00", "byte 2: value does not fit its type"},
      {"61 61 09 60", "byte 2: value does not fit its type"},
      {"61 61 09 F6", "byte 2: value does not fit its type"},
      {"61 61 02 F9 3C 00", "byte 2: value does not fit its type"},
      {"61 61 02 C1 01", "byte 2: value does not fit its type"},
      {"61 61 09 80", "byte 2: value does not fit its type"},
      // a number beyond its type
      {"61 61 02 1A 80 00 00 00", "byte 2: value does not fit its type"},
      {"61 61 02 3A 80 00 00 00", "byte 2: value does not fit its type"},
      {"61 61 03 1B 00 00 00 01 00 00 00 00", "byte 2: value does not fit its type"},
      {"61 61 07 1B 00 00 00 01 00 00 00 00", "byte 2: value does not fit its type"},
      // a number that has a shorter form
      {"61 61 03 18 17", "byte 3: number not in its shortest form"},
      {"61 61 03 19 00 FF", "byte 3: number not in its shortest form"},
      {"61 61 03 1A 00 00 FF FF", "byte 3: number not in its shortest form"},
      {"61 61 04 1B 00 00 00 00 FF FF FF FF", "byte 3: number not in its shortest form"},
      {"61 61 01 78 02 68 69", "byte 3: number not in its shortest form"},
      {"61 61 05 F8 14", "byte 3: number not in its shortest form"},
      // lengths beyond the end
      {"61 61 01 62 68", "byte 2: value ends early"},
      {"61 61 09 5B FF FF FF FF FF FF FF FF", "byte 2: value ends early"},
      {"61 61 06 5A FF FF FF FF 00", "byte 2: value ends early"},
      {"61 61 09 5F 41 00 FF", "byte 3: indefinite or reserved length"},
      // a text has one form
      {"61 61 01 61 B0", "byte 2: text is not UTF-8"},
      {"61 61 01 41 43", "byte 2: UTF-8 text stands as bytes"},
      {"61 61 01 40", "byte 2: UTF-8 text stands as bytes"},
      // inside a nested record, counted from the beginning of all
      {"61 61 06 43 61 62 03", "byte 6: ends before its value"},
      {"61 61 06 44 61 62 03 01 05", "byte 8: name is not a text"},
      {"61 61 06 41 00", "byte 4: name is not a text"},
  };
  for (const cCase& one : cases) {
    cRecord record = Sample();
    std::string error;
    EXPECT_FALSE(Receive(FromHex(one.bytes), record, &error)) << one.bytes;
    EXPECT_EQ(error, one.error) << one.bytes;
    EXPECT_EQ(record, Sample()) << "left alone on failure";
    EXPECT_FALSE(Receive(FromHex(one.bytes), record)) << "the error is optional";
  }
}

TEST(RecordWire, TakesSixteenLevelsAndRefusesSeventeen) {
  // The innermost record is empty; each level around it is a parameter without a name.
  std::string bytes;
  cRecord record;
  for (int levels = 1; levels <= 16; ++levels) {
    EXPECT_TRUE(Receive(bytes, record)) << levels;
    std::string outer = FromHex("60 06");
    outer += static_cast<char>(bytes.size() < 24 ? 0x40 | bytes.size() : 0x58);
    if (bytes.size() >= 24) outer += static_cast<char>(bytes.size());
    bytes = outer + bytes;
  }
  // An empty innermost record has no level of its own bytes; one parameter in it makes the seventeenth count.
  cRecord deepest;
  deepest.AppendUIntPar("", 1);
  for (int i = 1; i < 16; ++i) {
    cRecord outer;
    outer.AppendRecordPar("", deepest);
    deepest = outer;
  }
  ASSERT_TRUE(Receive(deepest.GetBytes(), record));
  EXPECT_EQ(record.GetDepth(), 16u);
  const std::string inner(deepest.GetBytes());
  ASSERT_LT(inner.size(), 256u);
  const std::string tooDeep = FromHex("60 06 58") + static_cast<char>(inner.size()) + inner;
  std::string error;
  EXPECT_FALSE(Receive(tooDeep, record, &error));
  EXPECT_THAT(error, testing::HasSubstr("records nest deeper than 16"));
}

TEST(RecordWire, RefusesEveryPrefixThatDoesNotEndBehindAParameter) {
  const cRecord sample = Sample();
  cRecord begun;
  std::vector<std::size_t> ends = {0};
  for (vorn::cRecordPar par = sample.First(); par.IsValid(); par = par.Next()) {
    AppendCopy(begun, par);
    ends.push_back(begun.GetBytes().size());
  }
  ASSERT_EQ(ends.back(), sample.GetBytes().size());
  for (std::size_t size = 0; size <= sample.GetBytes().size(); ++size) {
    cRecord received;
    const auto end = std::find(ends.begin(), ends.end(), size);
    EXPECT_EQ(Receive(sample.GetBytes().substr(0, size), received), end != ends.end()) << size;
    EXPECT_EQ(received.GetCount(), end != ends.end() ? static_cast<std::size_t>(end - ends.begin()) : 0u);
  }
}

TEST(RecordWire, TakesOrRefusesEveryDamagedByteAndReadsWhatItTakes) {
  const std::string good(Sample().GetBytes());
  std::size_t taken = 0;
  std::size_t refused = 0;
  for (std::size_t at = 0; at < good.size(); ++at) {
    for (int value = 0; value < 256; ++value) {
      std::string bytes = good;
      bytes[at] = static_cast<char>(value);
      cRecord record;
      if (!Receive(bytes, record)) {
        ++refused;
        continue;
      }
      ++taken;
      record.ToString();
      ASSERT_EQ(CopyByParameter(record).GetBytes(), bytes) << "byte " << at << " value " << value;
    }
  }
  EXPECT_GT(taken, good.size());
  EXPECT_GT(refused, good.size());
}

TEST(RecordWire, TakesMoreParametersThanItsFirstIndexHolds) {
  cRecord record, received;
  for (unsigned int i = 0; i < 10000; ++i) record.AppendUIntPar("n", i);
  ASSERT_TRUE(Receive(record.GetBytes(), received));
  EXPECT_EQ(received.GetCount(), 10000u);
  unsigned int expected = 0;
  for (vorn::cRecordPar par = received.First(); par.IsValid(); par = par.Next()) EXPECT_EQ(par.GetUInt(), expected++);
}

TEST(Utf8, IsRecognisedByTheRulesOfItsStandard) {
  const auto isUtf8 = [](const std::string& text) { return vorn::detail::IsUtf8(text.data(), text.size()); };
  for (const char* text : {"", "plain", "\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80", "\xED\x9F\xBF", "\xEE\x80\x80",
                           "\xEF\xBF\xBF", "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF", "m\xC2\xB3/h"})
    EXPECT_TRUE(isUtf8(text)) << ToHex(text);
  for (const char* text : {"\x80", "\xBF", "\xC0\x80", "\xC1\xBF", "\xC2", "\xC2\x41", "\xE0\x9F\xBF", "\xED\xA0\x80",
                           "\xE2\x82", "\xE2\x82\x41", "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80",
                           "\xF0\x90\x80", "\xFE", "\xFF", "abc\xB0"})
    EXPECT_FALSE(isUtf8(text)) << ToHex(text);
}

// ---- what an index that was used before leaves behind

namespace {

// Records of few names, so that shapes repeat, mix and repeat names: short ones, and such as differ late only.
class cShapes {
 public:
  cRecord Make(unsigned int depth = 1) {
    cRecord record;
    for (unsigned int count = Next(9); count != 0; --count) Append(record, depth);
    return record;
  }

 private:
  unsigned int Next(unsigned int below) { return static_cast<unsigned int>(m_random() % below); }
  void Append(cRecord& to, unsigned int depth) {
    static const std::string kNames[] = {
        "", "a", "id", "ab\xC3\xA9", "abc", "abcd", "abce", std::string(30, 'n'), std::string(24, '\x18'), "entry"};
    const std::string& name = kNames[Next(10)];
    switch (Next(7)) {
      case 0:
        return to.AppendTextPar(name, std::string(Next(60), Next(9) == 0 ? '\xE4' : 't'));
      case 1:
        return to.AppendIntPar(name, static_cast<int>(m_random()) >> Next(31));
      case 2:
        return to.AppendUInt64Par(name, (std::uint64_t{m_random()} << 32) >> Next(64));
      case 3:
        return to.AppendBoolPar(name, Next(2) != 0);
      case 4:
        return to.AppendTextPar(name, nullptr);
      case 5:
        return to.AppendDataPar(name, cData(std::string(Next(300), 'd')));
      default:
        return to.AppendRecordPar(name, depth < 4 ? Make(depth + 1) : cRecord());
    }
  }

  std::mt19937 m_random{20261121};  // the same at every run
};

// The first of a name, by walking.
std::string_view FirstOf(const cRecord& record, std::string_view name) {
  for (cRecordPar par = record.First(); par.IsValid(); par = par.Next())
    if (par.GetNameView() == name) return {par.GetNameView().data(), 1};  // where it stands
  return {};
}

// Every name asked for in order, backwards and again gives the first of it.
void ExpectFirstsOf(const cRecord& record) {
  std::vector<cRecordPar> pars;
  for (cRecordPar par = record.First(); par.IsValid(); par = par.Next()) pars.push_back(par);
  ASSERT_EQ(pars.size(), record.GetCount());
  const auto expectFirst = [&](const cRecordPar& par) {
    const cRecordPar found = record.GetPar(par.GetNameView());
    ASSERT_TRUE(found.IsValid()) << ToHex(par.GetNameView()) << " in " << ToHex(record.GetBytes());
    EXPECT_EQ(found.GetNameView().data(), FirstOf(record, par.GetNameView()).data()) << record.ToString();
  };
  std::for_each(pars.begin(), pars.end(), expectFirst);
  std::for_each(pars.rbegin(), pars.rend(), expectFirst);
  for (const cRecordPar& par : pars) {
    expectFirst(par);
    EXPECT_FALSE(record.GetPar("absent").IsValid());
    expectFirst(par);
    cRecord nested;
    if (par.GetRecord(nested)) ExpectFirstsOf(nested);
  }
}

}  // namespace

TEST(RecordIndex, GivesTheFirstOfAName_WhateverRecordItHeldBefore) {
  cShapes shapes;
  for (int i = 0; i < 2000; ++i) {
    const cRecord made = shapes.Make();
    cRecord received;
    ASSERT_TRUE(Receive(made.GetBytes(), received));
    EXPECT_EQ(received, made);
    ExpectFirstsOf(received);
    EXPECT_EQ(CopyByParameter(received), made);
  }
}

TEST(RecordIndex, AnsweringInTheOrderOfWritingDoesNotSkipARepeatedName) {
  cRecord record, received;
  record.AppendUIntPar("obis", 1);
  record.AppendUIntPar("value", 2);
  record.AppendUIntPar("obis", 3);
  for (int i = 0; i < 3; ++i) {  // with a fresh index, and with one of the same shape
    ASSERT_TRUE(Receive(record.GetBytes(), received));
    EXPECT_EQ(received.GetUIntPar("obis"), 1u);
    EXPECT_EQ(received.GetUIntPar("value"), 2u);
    EXPECT_EQ(received.GetUIntPar("obis"), 1u);
    EXPECT_EQ(received.GetPar("obis").NextSame().GetUInt(), 3u);
  }
}

TEST(RecordIndex, ARefusedRecordLeavesNothingForTheNext) {
  cRecord good, received;
  good.AppendUIntPar("a", 1);
  good.AppendUIntPar("b", 2);
  good.AppendUIntPar("x", 3);
  ASSERT_TRUE(Receive(good.GetBytes(), received));
  received = cRecord();
  cRecord next;
  next.AppendUIntPar("a", 1);
  next.AppendUIntPar("x", 2);
  EXPECT_FALSE(Receive(std::string(next.GetBytes()) + "\x61", received));
  next.AppendUIntPar("x", 3);
  ASSERT_TRUE(Receive(next.GetBytes(), received));
  EXPECT_EQ(received.GetUIntPar("a"), 1u);
  EXPECT_EQ(received.GetUIntPar("x"), 2u);
  EXPECT_EQ(received.GetUIntPar("x"), 2u);
}

TEST(RecordIndex, AnAppendedParameterIsFoundAfterReading) {
  cRecord record;
  record.AppendUIntPar("a", 1);
  EXPECT_EQ(record.GetUIntPar("a"), 1u);
  record.AppendUIntPar("b", 2);
  EXPECT_EQ(record.GetUIntPar("b"), 2u);
  record.SetUIntPar("a", 7);
  EXPECT_EQ(record.GetUIntPar("b"), 2u);
  EXPECT_EQ(record.GetUIntPar("a"), 7u);
  const cRecord moved = std::move(record);
  record.AppendUIntPar("c", 3);
  EXPECT_EQ(record.GetUIntPar("c"), 3u);
  EXPECT_FALSE(record.GetPar("a").IsValid());
  EXPECT_EQ(moved.GetUIntPar("a"), 7u);
}

TEST(RecordIndex, AppendingToACopyOrWhileLookedAtLeavesTheOtherAlone) {
  cRecord record;
  record.AppendUIntPar("a", 1);
  const cRecordPar seen = record.GetPar("a");
  cRecord copy = record;
  copy.AppendUIntPar("b", 2);
  record.AppendUIntPar("c", 3);
  EXPECT_EQ(seen.GetUInt(), 1u);
  EXPECT_FALSE(seen.Next().IsValid());
  EXPECT_EQ(copy.GetCount(), 2u);
  EXPECT_FALSE(copy.GetPar("c").IsValid());
  EXPECT_FALSE(record.GetPar("b").IsValid());
  record.AppendRecordPar("self", record);
  EXPECT_EQ(record.GetRecordPar("self").GetCount(), 2u);
}
