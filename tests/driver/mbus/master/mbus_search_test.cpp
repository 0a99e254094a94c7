// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/master/mbus_search.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace tav::mbus {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Not;
using testing::UnorderedElementsAreArray;

using Texts = std::vector<std::string>;

// A whole secondary address or a mask.
cMBusAddress Address(const std::string& text) {
  cMBusAddress address;
  std::string error;
  EXPECT_TRUE(cMBusAddress::Parse(text, address, error)) << error;
  return address;
}

// A bus that answers without a fault.
class MBusSearch : public testing::Test {
 protected:
  static constexpr std::size_t kMostQuestions = 20'000;

  void Search(const Texts& meters, const std::string& mask = "FFFFFFFF") {
    m_asked.clear();
    m_found.clear();
    m_leftOver.clear();
    m_done.clear();
    std::vector<cMBusHeader> headers;
    for (const std::string& meter : meters) headers.push_back(HeaderOf(Address(meter)));
    cMBusSearch search(Address(mask));
    EXPECT_EQ(search.GetDone(), 0);
    for (cMBusAddress next; search.Next(next);) {
      ASSERT_LT(m_asked.size(), kMostQuestions);
      if (search.IsLeftOver()) {
        m_leftOver.push_back(next.ToString());
        continue;
      }
      m_done.push_back(search.GetDone());
      m_asked.push_back(next.ToString());
      Answer(search, next, headers);
    }
    EXPECT_EQ(search.GetDone(), 1);
  }
  std::size_t CountTwice() const {
    return m_asked.size() - std::set<std::string>(m_asked.begin(), m_asked.end()).size();
  }

  Texts m_asked, m_found, m_leftOver;
  std::vector<double> m_done;

 private:
  static cMBusHeader HeaderOf(const cMBusAddress& address) {
    cMBusHeader header;
    header.id = address.id;
    header.manufacturer = address.manufacturer;
    header.version = address.version;
    header.medium = address.medium;
    return header;
  }
  void Answer(cMBusSearch& search, const cMBusAddress& mask, const std::vector<cMBusHeader>& headers) {
    std::vector<cMBusHeader> heard;
    for (const cMBusHeader& header : headers)
      if (mask.Matches(header)) heard.push_back(header);
    if (heard.size() == 1) {
      search.NoteFound(heard[0].manufacturer);
      m_found.push_back(cMBusAddress::Of(heard[0]).ToString());
    } else if (heard.size() > 1 && !search.Narrow()) {
      m_leftOver.push_back(mask.ToString());
    }
  }
};

Texts Digits(const std::string& before, const std::string& behind, const std::string& digits = "0123456789") {
  Texts masks;
  for (const char digit : digits) masks.push_back(before + digit + behind);
  return masks;
}

TEST_F(MBusSearch, AsksOnceWhereNobodyOrOneAnswers) {
  Search({});
  EXPECT_THAT(m_asked, ElementsAre("FFFFFFFF"));
  EXPECT_THAT(m_found, IsEmpty());
  Search({"4495014650770104"});
  EXPECT_THAT(m_asked, ElementsAre("FFFFFFFF"));
  EXPECT_THAT(m_found, ElementsAre("4495014650770104"));
}

TEST_F(MBusSearch, FillsTheFirstDigitWhereSeveralAnswer) {
  Search({"1100000050770104", "2200000050770104"});
  Texts asked = Digits("", "FFFFFFF");
  asked.insert(asked.begin(), "FFFFFFFF");
  EXPECT_THAT(m_asked, ElementsAreArray(asked));
}

TEST_F(MBusSearch, GoesDownBeforeItGoesOn) {
  Search({"1100000050770104", "1200000050770104", "2200000050770104"});
  Texts asked{"FFFFFFFF", "0FFFFFFF", "1FFFFFFF"};
  for (const std::string& mask : Digits("1", "FFFFFF")) asked.push_back(mask);
  for (const std::string& mask : Digits("", "FFFFFFF", "23456789")) asked.push_back(mask);
  EXPECT_THAT(m_asked, ElementsAreArray(asked));
}

TEST_F(MBusSearch, AsksForOtherDigitsWhereTenDoNotTellWhoCollided) {
  Search({"1A00000050770104", "1300000050770104"});
  for (const std::string& mask : Digits("1", "FFFFFF", "ABCDE")) EXPECT_THAT(m_asked, Contains(mask));
  EXPECT_THAT(m_found, UnorderedElementsAreArray({"1A00000050770104", "1300000050770104"}));
  Search({"1100000050770104", "1300000050770104"});
  EXPECT_THAT(m_asked, Not(Contains("1AFFFFFF")));
}

TEST_F(MBusSearch, KeepsToItsMask) {
  const Texts meters{"4495014650770104", "4495014750770107", "4496014750770104", "5595014650770104"};
  const struct {
    const char* mask;
    Texts found;
  } cases[] = {
      {"4495FFFF", {meters[0], meters[1]}},
      {"44950146", {meters[0]}},
      {"FFFF0147", {meters[1], meters[2]}},
      {"F4FFFFF7FFFFFF04", {meters[2]}},
      {"FFFFFFFFFFFFFF04", {meters[0], meters[2], meters[3]}},
      {"1FFFFFFF", {}},
  };
  for (const auto& [mask, found] : cases) {
    Search(meters, mask);
    EXPECT_THAT(m_found, UnorderedElementsAreArray(found)) << mask;
    EXPECT_EQ(m_asked[0], mask);
    EXPECT_EQ(CountTwice(), 0u) << mask;
  }
}

TEST_F(MBusSearch, AsksForVersionThenMediumThenMakerWhereIdentificationsAreAlike) {
  const struct {
    Texts meters;
    const char* asked;  // the mask that tells them apart
    std::size_t most;
  } cases[] = {
      {{"1111111150770104", "1111111150770204"}, "11111111FFFF01FF", 1 + 80 + 255},
      {{"1111111150770104", "1111111150770107"}, "11111111FFFF0104", 1 + 80 + 2 * 255},
      {{"11111111507701FE", "1111111150770107"}, "11111111FFFF01FE", 1 + 80 + 2 * 255},
      {{"111111114D250104", "111111112C2D0104"}, "111111112C2D0104", 1 + 80 + 2 * 255 + 100},
  };
  for (const auto& [meters, asked, most] : cases) {
    Search(meters);
    EXPECT_THAT(m_found, UnorderedElementsAreArray(meters)) << asked;
    EXPECT_THAT(m_asked, Contains(asked));
    EXPECT_LE(m_asked.size(), most) << asked;
  }
}

TEST_F(MBusSearch, AsksForMakersThatAreOnTheBusFirst) {
  const std::string unknown = "0000000046310104";  // of a maker in no list, QQQ
  Search({unknown, "1111111146310104", "111111112C2D0104"});
  EXPECT_THAT(m_found,
              UnorderedElementsAreArray({unknown, std::string("1111111146310104"), std::string("111111112C2D0104")}));
  EXPECT_THAT(m_leftOver, IsEmpty());
  const auto firstMaker = std::ranges::find(m_asked, "1111111146310104");
  ASSERT_NE(firstMaker, m_asked.end());
  EXPECT_EQ(*(firstMaker - 1), "11111111FFFF0104") << "nobody else was asked for before";
}

TEST_F(MBusSearch, LeavesOverWhatCannotBeToldApart) {
  Search({"1111111146310104", "11111111463A0104"});  // makers that nobody knows
  EXPECT_THAT(m_found, IsEmpty());
  EXPECT_THAT(m_leftOver, ElementsAre("11111111FFFF0104"));
  Search({"1111111150770104", "1111111150770104", "1111111250770104"});  // the same in every part
  EXPECT_THAT(m_found, ElementsAre("1111111250770104"));
  EXPECT_THAT(m_leftOver, Contains("11111111FFFF0104"));
}

TEST_F(MBusSearch, DoesNotNarrowAWholeAddress) {
  cMBusSearch search(Address("1111111150770104"));
  cMBusAddress mask;
  ASSERT_TRUE(search.Next(mask));
  EXPECT_FALSE(search.Narrow());
  EXPECT_FALSE(search.Next(mask));
  EXPECT_EQ(search.GetDone(), 1);
}

TEST_F(MBusSearch, TellsHowFarItIsAndNeverGoesBack) {
  Search({"1100000050770104", "1200000050770104", "9A00000050770104", "9900000050770104", "1111111150770104",
          "1111111150770204"});
  EXPECT_TRUE(std::ranges::is_sorted(m_done));
  EXPECT_EQ(m_done.front(), 0);
  EXPECT_LE(m_done.back(), 1);
  const auto half = std::ranges::find(m_asked, "5FFFFFFF");
  ASSERT_NE(half, m_asked.end());
  EXPECT_NEAR(m_done[static_cast<std::size_t>(half - m_asked.begin())], 0.5, 1e-9);
}

// ---- whole populations

// Identifications begin + step * i, all of one maker.
Texts Series(unsigned int begin, unsigned int step, unsigned int count) {
  Texts meters;
  for (unsigned int i = 0; i < count; ++i) {
    const std::string digits = std::to_string(begin + step * i);
    meters.push_back(std::string(8 - digits.size(), '0') + digits + "50770104");
  }
  return meters;
}

// Beginnings of identifications that several share, the empty one with them.
std::size_t CountShared(const Texts& meters) {
  std::map<std::string, unsigned int> beginnings;
  for (const std::string& meter : meters)
    for (std::size_t digits = 0; digits < 8; ++digits) ++beginnings[meter.substr(0, digits)];
  return static_cast<std::size_t>(std::ranges::count_if(beginnings, [](const auto& row) { return row.second > 1; }));
}

// Ten questions for each beginning that several share, and no more.
TEST_F(MBusSearch, FindsEveryMeterOfAPopulationOnce) {
  const struct {
    const char* name;
    Texts meters;
  } cases[] = {
      {"one", Series(12345678, 1, 1)},
      {"two that differ in the last digit", Series(12345678, 1, 2)},
      {"two that differ in the first", Series(0, 90'000'000, 2)},
      {"ten in a row", Series(44'950'140, 1, 10)},
      {"a box of meters", Series(30'000'001, 1, 250)},
      {"scattered", Series(1'234'567, 397'531, 200)},
      {"hardly alike", Series(7, 9'999'991, 10)},
      {"all zeros and all nines", Series(0, 99'999'999, 2)},
  };
  for (const auto& [name, meters] : cases) {
    SCOPED_TRACE(name);
    Search(meters);
    EXPECT_THAT(m_found, UnorderedElementsAreArray(meters));
    EXPECT_THAT(m_leftOver, IsEmpty());
    EXPECT_EQ(CountTwice(), 0u);
    EXPECT_EQ(m_asked.size(), 1 + 10 * CountShared(meters));
  }
}

// A line of which nothing can be read has an end as well.
TEST_F(MBusSearch, EndsWhereEveryMaskOfALevelIsGarbled) {
  cMBusSearch search(Address("1234567FFFFF0104"));
  std::size_t asked = 0, leftOver = 0;
  for (cMBusAddress mask; asked < kMostQuestions && search.Next(mask);) {
    leftOver += search.IsLeftOver();
    asked += !search.IsLeftOver();
    if (!search.IsLeftOver()) search.Narrow();
  }
  EXPECT_LT(asked, kMostQuestions);
  EXPECT_EQ(leftOver, 15u) << "every identification of it, of any maker";
}

}  // namespace
}  // namespace tav::mbus
