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

TEST(Assignment, SetsAFieldOrSaysWhyItDoesNot) {
  cCollectorConfig collector;
  const auto assign = [&](const cAssignment& field) { Assign(collector, form::kCollectorFields, field); };
  assign({"addr", "lp"});
  EXPECT_EQ(collector.addr, "lp");
  EXPECT_EQ(Refused([&] { assign({"activation", "yes"}); }), "activation: expected true or false, found \"yes\"");
  EXPECT_THAT(Refused([&] {
                assign({"color", "red"});
              }),
              testing::StartsWith("there is no field 'color'; there are addr, activation, "));
}

}  // namespace tav::ctl
