// SPDX-License-Identifier: Apache-2.0
#include <tavctl/store_command.h>

#include <tests/tavctl/tavctl_world.h>

namespace tav::ctl {
namespace {

class StoreCommand : public TavctlWithGateway {
 protected:
  void SetUp() override {
    TavctlWithGateway::SetUp();
    SetValue("ehzif", "baud", "9600");
    SetValue("ehzif", "place", "cellar");
    SetValue("mbif", "a", "b");
  }
};

TEST_F(StoreCommand, ListsTheNames) { EXPECT_EQ(Run({"store"}).out, "STORE\nehzif\nmbif\n"); }

TEST_F(StoreCommand, ShowsTheValuesOfOne) {
  EXPECT_EQ(Run({"store", "ehzif"}).out, "KEY    VALUE\nbaud   9600\nplace  cellar\n");
  EXPECT_EQ(Run({"store", "mbif", "--json"}).out, "[\n {\"key\":\"a\",\"value\":\"b\"}\n]\n");
}

TEST_F(StoreCommand, FailsForOneThatIsNotThere) {
  const cOutput output = Run({"store", "none"});
  EXPECT_EQ(output.exit, eExitNegative);
  EXPECT_EQ(output.err, "tavctl: store 'none' holds nothing; see tavctl store\n");
}

}  // namespace
}  // namespace tav::ctl
