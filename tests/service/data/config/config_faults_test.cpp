// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/config/config_faults.h>

#include <gtest/gtest.h>

#include <gateway/service/data/config/config_limits.h>

namespace tav::data {
namespace {

TEST(ConfigFaults, TellEachFaultWithItsPlace) {
  cConfigFaults faults;
  const cPlace at(faults);
  EXPECT_TRUE(faults.IsEmpty());
  at.In("meter 'x'").In("collector '1'").Fault("is odd");
  at.Fault("and so is this");
  EXPECT_FALSE(faults.IsEmpty());
  EXPECT_EQ(faults.GetText(), "meter 'x': collector '1': is odd; and so is this");
}

TEST(ConfigFaults, TellSomeOfVeryMany) {
  cConfigFaults faults;
  for (std::size_t i = 0; i < kMaxFaults; ++i) cPlace(faults).Fault(std::to_string(i));
  EXPECT_TRUE(faults.GetText().ends_with("; 15"));
  cPlace(faults).Fault("16");
  cPlace(faults).Fault("17");
  EXPECT_TRUE(faults.GetText().ends_with("; 15; and 2 more"));
}

TEST(ConfigFaults, QuoteNamesSoThatTheyFitALine) {
  EXPECT_EQ(QuotedName(""), "''");
  EXPECT_EQ(QuotedName("a\nb\x7F\xC3\xA4"), "'a?b?\xC3\xA4'");
  EXPECT_EQ(QuotedName(std::string(kMaxName, 'x')), "'" + std::string(kMaxName, 'x') + "'");
  EXPECT_EQ(QuotedName(std::string(kMaxName + 1, 'x')), "'" + std::string(kMaxName, 'x') + "...'");
}

}  // namespace
}  // namespace tav::data
