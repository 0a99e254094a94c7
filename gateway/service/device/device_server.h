// SPDX-License-Identifier: Apache-2.0
// cDeviceServer: what the device services share: their state as rows of name and value, for whoever asks on their
// channel, and for the process that hosts them.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <gateway/host/protocol_server.h>

namespace tav::gateway {

using cStateRows = std::vector<std::pair<std::string, std::string>>;

class cDeviceServer : public cProtocolServer {
 public:
  virtual cStateRows GetState() const = 0;
  // Called behind each change of the state, from the loop; not for each blink of a light.
  void SetOnStateChanged(std::function<void()> onStateChanged) { m_onStateChanged = std::move(onStateChanged); }

 protected:
  // getState: the number of the request for the state.
  cDeviceServer(cServiceHost* host, const cProtocol& protocol, unsigned int getState);

  void StateChanged() const;

 private:
  std::function<void()> m_onStateChanged;
};

}  // namespace tav::gateway
