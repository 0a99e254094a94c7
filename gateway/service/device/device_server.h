// SPDX-License-Identifier: Apache-2.0
// cDeviceServer: what the device services share: their state as rows of name and value, for whoever asks on their
// channel, and for the process that hosts them.
#pragma once

#include <functional>
#include <string>
#include <string_view>
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

// The check of an option that is one of two words: empty, or what is wrong with it, beginning with its key.
std::string CheckChoice(const char* key, std::string_view found, std::string_view first, std::string_view second);

}  // namespace tav::gateway
