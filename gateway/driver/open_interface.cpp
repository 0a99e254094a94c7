// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/open_interface.h>

#include <tav/framework/time.h>

namespace tav {

vorn::cRecord MakeInterfaceEvent(const std::string& driver, const std::string& interfaceName, const std::string& event,
                                 const std::string& reason) {
  vorn::cRecord record;
  record.AppendUIntPar("timestamp", vorn::cTime::Now().GetSeconds());
  record.AppendTextPar("driver", driver);
  record.AppendTextPar("interface-name", interfaceName);
  record.AppendTextPar("event", event);
  if (!reason.empty()) record.AppendTextPar("reason", reason);
  return record;
}

}  // namespace tav
