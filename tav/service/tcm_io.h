// SPDX-License-Identifier: Apache-2.0
// cTcmIO: the gateway's clock and the state of its link to the wide area network, channel "time-service". Operations
// return what the channel's Send gives; what the service answers is swallowed.
#pragma once

#include <tav/export.h>
#include <tav/framework/msg.h>
#include <tav/framework/scm_service_io.h>
#include <tav/framework/time.h>

namespace tav {

class TAV_API cTcmIO : public vorn::cScmServiceIO {
 public:
  explicit cTcmIO(vorn::cScmService* service);
  ~cTcmIO() override;

  void OnConnect() override {}
  void OnClose() override {}
  bool DispatchMessage(const vorn::cMsg& msg) override;

  // Sets the clock of the gateway. tid is created when it is not valid.
  int SetTimeUTC(vorn::cUuid& tid, vorn::cTime& utc);
  int SetTimeUTC(vorn::cTime& utc);
  int WanUp();
  int WanDown();
};

}  // namespace tav
