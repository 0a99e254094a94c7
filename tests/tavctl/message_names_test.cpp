// SPDX-License-Identifier: Apache-2.0
#include <tavctl/message_names.h>

#include <gtest/gtest.h>

#include <tav/service/db_ctrl_protocol.h>
#include <tav/service/device_protocol.h>

namespace tav::ctl {
namespace {

TEST(MessageNames, ComeFromTheTableOfTheService) {
  const cMessageNames names("data");
  EXPECT_EQ(names.NameOf(db_ctrl::eStoreMeterRec), "store-meter-records");
  EXPECT_EQ(names.NameOf(db_ctrl::eSetInterface + 1), "set-interface-done");
  EXPECT_EQ(names.NameOf(0x5fffe), "0x5fffe");
}

TEST(MessageNames, KnowTheDeviceServices) {
  EXPECT_EQ(cMessageNames("ui").NameOf(ui::eSwitchLed), "switch-led");
  EXPECT_EQ(cMessageNames("time-service").NameOf(time_service::eSetTimeFailed), "set-time-failed");
  EXPECT_EQ(cMessageNames("gsm").NameOf(gsm::eStarted), "started");
}

TEST(MessageNames, AreNumbersForAServiceWithoutATable) {
  const cMessageNames names("weather");
  EXPECT_EQ(names.NameOf(db_ctrl::eStoreMeterRec), "0x51009");
  EXPECT_EQ(names.FaultOf(vorn::cMsg(db_ctrl::eRegisterDriver)), "");
}

TEST(MessageNames, SayWhatAMessageLacks) {
  const cMessageNames names("data");
  vorn::cMsg msg(db_ctrl::eRegisterDriver);
  EXPECT_EQ(names.FaultOf(msg), "parameter \"driver\" is missing, expected type text");
  msg.Record().AppendTextPar("driver", "ehzif");
  EXPECT_EQ(names.FaultOf(msg), "");
  EXPECT_EQ(names.FaultOf(vorn::cMsg(0x5fffe)), "");
}

}  // namespace
}  // namespace tav::ctl
