// SPDX-License-Identifier: Apache-2.0
// cModem: a mobile modem: makes one data connection and ends it. Everything it says comes by callbacks.
#pragma once

#include <functional>
#include <string>

namespace tav::gateway {

// How to dial up. Not to be traced, and not to be kept once it is handed on.
struct cDialUp {
  std::string pin;
  std::string apn;
  std::string user;
  std::string password;
};

class cModem {
 public:
  // Empty: done. Else why not.
  using Done = std::function<void(const std::string& fault)>;

  cModem() = default;
  virtual ~cModem() = default;
  cModem(const cModem&) = delete;
  cModem& operator=(const cModem&) = delete;

  // While there is no connection. begun, once: the connection is being made, or why it is not even tried. When it is,
  // the end follows: connected, or failed. Callbacks may come from within the call.
  virtual void Connect(const cDialUp& how, Done begun) = 0;
  // At any time. What Connect still had to say is not said any more.
  virtual void Disconnect(Done done) = 0;
  // Which modem, or "simulated".
  virtual std::string GetPlace() const = 0;

  void SetOnConnected(std::function<void()> onConnected) { m_onConnected = std::move(onConnected); }
  // The connection could not be made, or it has broken.
  void SetOnFailed(std::function<void(const std::string& reason)> onFailed) { m_onFailed = std::move(onFailed); }

 protected:
  void Connected() const {
    if (m_onConnected) m_onConnected();
  }
  void Failed(const std::string& reason) const {
    if (m_onFailed) m_onFailed(reason);
  }

 private:
  std::function<void()> m_onConnected;
  std::function<void(const std::string& reason)> m_onFailed;
};

}  // namespace tav::gateway
