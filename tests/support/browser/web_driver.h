// SPDX-License-Identifier: Apache-2.0
// cWebDriver: a headless Chromium behind its driver, in the words of the WebDriver protocol (W3C): JSON over HTTP on
// the loopback. cBrowser has the vocabulary that tests are written in.
#pragma once

#include <memory>
#include <stdexcept>
#include <string>

#include <tests/support/child_process.h>
#include <tests/support/temp_folder.h>
#include <nlohmann/json.hpp>

// What the driver answered to a command that failed.
class cWebDriverError : public std::runtime_error {
 public:
  using runtime_error::runtime_error;
};

class cWebDriver {
 public:
  // Why there can be no browser here, naming the packages; empty when there can.
  static std::string WhyMissing();

  // Starts both, in a folder of their own; throws when that fails. No name but localhost is ever resolved.
  cWebDriver();
  ~cWebDriver();
  cWebDriver(const cWebDriver&) = delete;
  cWebDriver& operator=(const cWebDriver&) = delete;

  // A command of the session, such as "url" or "element/4/click"; its value. Throws what the driver says of a failure.
  nlohmann::json Post(const std::string& command, const nlohmann::json& body = nlohmann::json::object());
  nlohmann::json Get(const std::string& command);
  nlohmann::json Delete(const std::string& command);
  // A command of the browser's own protocol, such as "Emulation.setEmulatedMedia".
  nlohmann::json Cdp(const std::string& command, const nlohmann::json& parameters);

 private:
  void StartDriver();
  void StartSession();
  void Stop();
  nlohmann::json Request(const char* method, const std::string& path, const nlohmann::json& body);

  cTempFolder m_folder;
  std::unique_ptr<cChildProcess> m_process;
  std::string m_address;  // http://127.0.0.1:port
  std::string m_session;  // "/session/...", empty as long as there is none
};
