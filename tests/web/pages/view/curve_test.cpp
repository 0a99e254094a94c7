// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/view/curve.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tav::pages {
namespace {

using testing::HasSubstr;
using testing::Not;

TEST(Curve, IsMadeOfTimesAndExactNumbers) {
  cCurve curve;
  EXPECT_EQ(curve.ToJson(), "[]");
  curve.Add(1, "0.10");
  curve.Add(2, "-12345678901234567890.5");
  EXPECT_EQ(curve.ToJson(), "[[1,0.10],[2,-12345678901234567890.5]]");
}

TEST(Curve, WhatIsNoNumberIsAGap) {
  cCurve curve;
  for (const char* text : {"", "text", "1e5", "007", "<b>"}) curve.Add(1, text);
  EXPECT_EQ(curve.ToJson(), "[[1,null],[1,null],[1,null],[1,null],[1,null]]");
}

TEST(Curve, HasSoManyPoints) {
  cCurve curve;
  for (std::size_t i = 0; i < cCurve::kMaxPoints; ++i) curve.Add(static_cast<unsigned int>(i), "1");
  EXPECT_EQ(curve.Count(), cCurve::kMaxPoints);
  curve.Add(9999, "1");
  EXPECT_LE(curve.Count(), cCurve::kMaxPoints / 2 + 1);
  for (unsigned int i = 0; i < 100'000; ++i) curve.Add(10'000 + i, "1");
  EXPECT_LE(curve.Count(), cCurve::kMaxPoints);
}

TEST(Curve, KeepsItsPeaks) {
  cCurve curve;
  for (unsigned int i = 0; i < 20'000; ++i) curve.Add(i, i == 777 ? "1000" : i == 1234 ? "-1000" : "5");
  EXPECT_THAT(curve.ToJson(), HasSubstr("[777,1000]"));
  EXPECT_THAT(curve.ToJson(), HasSubstr("[1234,-1000]"));
}

TEST(Curve, AGapTakesNoPeaksPlace) {
  cCurve curve;
  for (unsigned int i = 0; i < 20'000; ++i) curve.Add(i, i % 2 == 0 ? "gap" : i == 777 ? "-1" : "-5");
  EXPECT_THAT(curve.ToJson(), HasSubstr("[777,-1]"));
}

TEST(Curve, AGapStaysWhereThereIsNothingElse) {
  cCurve curve;
  for (unsigned int i = 0; i <= cCurve::kMaxPoints; ++i) curve.Add(i, i < 100 ? "gap" : "1");
  EXPECT_THAT(curve.ToJson(), testing::StartsWith("[[0,null],[4,null]"));
  EXPECT_THAT(curve.ToJson(), Not(HasSubstr("[100,null]")));
}

TEST(Curve, TimesStayInTheirOrder) {
  cCurve curve;
  for (unsigned int i = 0; i <= cCurve::kMaxPoints; ++i) curve.Add(i, std::to_string(i * 7919 % 1000));
  const std::string json = curve.ToJson();
  unsigned int before = 0;
  for (std::size_t at = json.find("[", 1); at != std::string::npos; at = json.find("[", at + 1)) {
    const auto utc = static_cast<unsigned int>(std::stoul(json.substr(at + 1)));
    EXPECT_GE(utc, before);
    before = utc;
  }
}

}  // namespace
}  // namespace tav::pages
