// SPDX-License-Identifier: Apache-2.0
#include <tav/service/db_ctrl_io_driver_notify.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tests/support/parameters.h>

using tav::cDbCtrlIODriverNotify;
using testing::ElementsAre;

TEST(DbCtrlIODriverNotify, TakesInterfaceCommandAndContent) {
  vorn::cRecord content, record;
  content.AppendTextPar("meterID", "4711");
  record.AppendTextPar("interface-name", "RS485");
  record.AppendTextPar("command", "set-valve");
  record.AppendRecordPar("content", content);
  const cDbCtrlIODriverNotify notify(record);
  EXPECT_EQ(notify.m_interfaceName, "RS485");
  EXPECT_EQ(notify.m_command, "set-valve");
  EXPECT_EQ(notify.m_content, content);
}

TEST(DbCtrlIODriverNotify, OfAnEmptyRecordAllIsEmptyAndUsable) {
  cDbCtrlIODriverNotify notify{vorn::cRecord()};
  EXPECT_EQ(notify.m_interfaceName + notify.m_command, "");
  EXPECT_TRUE(notify.m_content.IsEmpty());
  notify.m_content.AppendTextPar("meterID", "4711");
  EXPECT_THAT(Parameters(notify.m_content), ElementsAre("meterID text=4711"));
}

TEST(DbCtrlIODriverNotify, ParametersOfAnotherTypeAreEmpty) {
  vorn::cRecord record;
  record.AppendUIntPar("interface-name", 485);
  record.AppendIntPar("command", 1);
  record.AppendTextPar("content", "no record");
  const cDbCtrlIODriverNotify notify(record);
  EXPECT_EQ(notify.m_interfaceName + notify.m_command, "");
  EXPECT_TRUE(notify.m_content.IsEmpty());
}

TEST(DbCtrlIODriverNotify, OnlyTheFirstOfANameCounts) {
  vorn::cRecord content, record;
  content.AppendTextPar("meterID", "4711");
  record.AppendUIntPar("command", 1);
  record.AppendTextPar("command", "set-valve");
  record.AppendRecordPar("content", vorn::cRecord());
  record.AppendRecordPar("content", content);
  record.AppendTextPar("interface-name", "RS485");
  record.AppendTextPar("interface-name", "MBUS");
  const cDbCtrlIODriverNotify notify(record);
  EXPECT_EQ(notify.m_interfaceName, "RS485");
  EXPECT_EQ(notify.m_command, "");
  EXPECT_TRUE(notify.m_content.IsEmpty());
}

TEST(DbCtrlIODriverNotify, KeepsItsContentWhenTheRecordIsGone) {
  vorn::cRecord content;
  content.AppendTextPar("meterID", "4711");
  const cDbCtrlIODriverNotify notify = [&] {
    vorn::cRecord record;
    record.AppendRecordPar("content", content);
    return cDbCtrlIODriverNotify(record);
  }();
  EXPECT_EQ(notify.m_content, content);
}
