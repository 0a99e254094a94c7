// SPDX-License-Identifier: Apache-2.0
// A loop with a clock that a test moves, and what a device service says over its channel.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include <gateway/service/device/device_server.h>
#include <tests/support/captured_trace.h>
#include <tests/support/scm_world.h>
#include <tests/support/temp_folder.h>
#include <tests/support/test_client.h>

namespace tav::gateway {

class DeviceWorld : public testing::Test {
 protected:
  void Advance(std::int64_t milliseconds) {
    m_clock->Advance(milliseconds);
    PollUntilIdle(m_host);
  }
  // The value of a row of the state; "none" when there is no such row.
  static std::string Row(const cDeviceServer& server, const std::string& name) {
    for (const auto& [key, value] : server.GetState())
      if (key == name) return value;
    return "none";
  }
  static std::string Reason(const vorn::cMsg& answer) { return answer.Record().GetTextPar("reason"); }
  // "name=value" of each row of an answer.
  static std::vector<std::string> Rows(const vorn::cMsg& answer) {
    std::vector<std::string> rows;
    for (vorn::cRecordPar par = answer.Record().GetPar("row"); par.IsValid(); par = par.NextSame()) {
      vorn::cRecord row;
      par.GetRecord(row);
      rows.push_back(row.GetTextPar("name") + "=" + row.GetTextPar("value"));
    }
    return rows;
  }

  cCapturedTrace m_trace;
  cTempFolder m_folder;
  std::shared_ptr<vorn::cManualClock> m_clock = std::make_shared<vorn::cManualClock>();
  cServiceHost m_host{"device-test", m_folder.GetPath(), m_clock};
};

}  // namespace tav::gateway
