// SPDX-License-Identifier: Apache-2.0
// The device services of a gateway as tavctl shows them: rows of service, name and value.
#pragma once

#include <tav/service/device_protocol.h>
#include <tavctl/context.h>
#include <tavctl/exit_code.h>

namespace tav::ctl {

struct cDeviceService {
  const cProtocol& protocol;
  unsigned int getState;  // the request for its state
};

inline constexpr cDeviceService kUiService{ui::kProtocol, ui::eGetState};
inline constexpr cDeviceService kTimeService{time_service::kProtocol, time_service::eGetState};
inline constexpr cDeviceService kGsmService{gsm::kProtocol, gsm::eGetState};

// The state of all of them; of one that is away a row that says why. eExitUnreachable when none is there.
eExit ShowDevices(cContext& context);
// The state of one. Throws a cFailure when it is away.
void ShowDevice(cContext& context, const cDeviceService& service);
// One value of one.
void ShowDeviceValue(cContext& context, const cDeviceService& service, const std::string& name,
                     const std::string& value);

}  // namespace tav::ctl
