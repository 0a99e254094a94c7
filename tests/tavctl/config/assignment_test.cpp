// SPDX-License-Identifier: Apache-2.0
#include <tavctl/config/assignment.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include <tests/support/temp_folder.h>

namespace tav::ctl {
namespace {

cAssignment Read(const std::string& word, const std::string& input = {}) {
  std::istringstream in(input);
  return ReadAssignment(word, in);
}

std::string Refused(const std::function<void()>& work) {
  try {
    work();
  } catch (const cFailure& failure) {
    return failure.what();
  }
  return "not refused";
}

}  // namespace

TEST(Assignment, IsAFieldAndItsValue) {
  EXPECT_EQ(Read("options=a=1,b=2").field, "options");
  EXPECT_EQ(Read("options=a=1,b=2").value, "a=1,b=2");
  EXPECT_EQ(Read("medium=").value, "");
  EXPECT_EQ(Read("host=@@home").value, "@home");
}

TEST(Assignment, TakesAValueFromAFileOrStandardInputWithoutItsLineEnd) {
  cTempFolder folder;
  std::ofstream(folder.File("key")) << "0011 22\r\n\n";
  EXPECT_EQ(Read("key=@" + folder.File("key")).value, "0011 22");
  EXPECT_EQ(Read("key=@-", "secret\n").value, "secret");
  EXPECT_EQ(Refused([] { Read("key=@/nowhere/key"); }), "/nowhere/key: cannot be read: No such file or directory");
}

TEST(Assignment, RefusesAWordThatIsNone) {
  EXPECT_EQ(Refused([] { Read("medium"); }), "expected FIELD=VALUE, found \"medium\"");
  EXPECT_EQ(Refused([] { Read("=E"); }), "expected FIELD=VALUE, found \"=E\"");
}

TEST(Assignment, SetsFieldsOfEveryTypeAndRefusesWhatDoesNotFit) {
  cCollectorConfig collector;
  Assign(collector, kCollectorFields, {"addr", "lp"});
  Assign(collector, kCollectorFields, {"activation", "true"});
  Assign(collector, kCollectorFields, {"countRP", "4294967295"});
  Assign(collector, kCollectorFields, {"push-target-idx", "18446744073709551615"});
  Assign(collector, kCollectorFields, {"push-random-offset", "65535"});
  EXPECT_EQ(collector.addr, "lp");
  EXPECT_TRUE(collector.activation);
  EXPECT_EQ(collector.countRP, 4294967295u);
  EXPECT_EQ(collector.pushTargetIdx, 18446744073709551615ull);
  EXPECT_EQ(collector.pushRandomOffset, 65535);
  const auto refused = [&](const cAssignment& field) {
    return Refused([&] { Assign(collector, kCollectorFields, field); });
  };
  EXPECT_EQ(refused({"activation", "yes"}), "activation: expected true or false, found \"yes\"");
  EXPECT_EQ(refused({"countRP", "4294967296"}),
            "countRP: expected a whole number from 0 to 4294967295, found \"4294967296\"");
  EXPECT_EQ(refused({"countRP", "-1"}), "countRP: expected a whole number from 0 to 4294967295, found \"-1\"");
  EXPECT_EQ(refused({"push-random-offset", "65536"}),
            "push-random-offset: expected a whole number from 0 to 65535, found \"65536\"");
  EXPECT_THAT(refused({"color", "red"}),
              testing::StartsWith("there is no field 'color'; there are addr, activation, "));
}

}  // namespace tav::ctl
