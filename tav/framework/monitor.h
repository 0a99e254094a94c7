// SPDX-License-Identifier: Apache-2.0
// cScmMonitor: watches the messages of one service, as its server sends and receives them. Derive from it.
//
// It is a client of the service that asks to be shown what the other clients say and hear; its own messages are not
// among it. It asks again after each reconnection. Watching is for root and the service's own user. What does not fit
// the monitor's output buffer at the server is not shown: a monitor that is too slow misses messages, and delays none.
#pragma once

#include <sys/types.h>

#include <string>

#include <tav/framework/export.h>
#include <tav/framework/scm_service_io.h>

namespace vorn {

struct cScmMirrored {
  bool incoming = false;    // from a client to the service
  std::string processName;  // the client's
  pid_t pid = 0;
  cMsg
      msg;  // type, identifier and record as they travelled; the record is empty when it is nested too deep to be shown
};

class VORN_API cScmMonitor : public cScmServiceIO {
 public:
  cScmMonitor(cScmService* service, const std::string& name);

  // The service shows its messages from now on.
  virtual void OnWatching();
  // It does not, and says why. It is asked again on the next channel only.
  virtual void OnRefused(const std::string& reason);
  virtual void OnMirrored(const cScmMirrored& mirrored);

  void OnConnect() override;
  bool DispatchMessage(const cMsg& msg) override;
};

}  // namespace vorn
