// SPDX-License-Identifier: Apache-2.0
// One loop with servers and clients that write down what happens to them, over real sockets in a folder of their own.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <tav/framework/scm_server.h>
#include <tav/framework/scm_service_io.h>

#include "tests/support/temp_folder.h"

// Turns a service's loop until a condition holds; false when it does not within the bound.
inline bool PollUntil(vorn::cService& service, const std::function<bool()>& condition,
                      std::chrono::milliseconds bound = std::chrono::seconds(10)) {
  const auto end = std::chrono::steady_clock::now() + bound;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    service.Poll(10);
  }
  return true;
}

// Turns the loop until it has nothing more to do.
inline void PollUntilIdle(vorn::cService& service) {
  while (service.Poll(0)) {
  }
}

class cRecordingService : public vorn::cScmService {
 public:
  using vorn::cScmService::cScmService;
  bool DispatchMessage(const vorn::cMsg& msg) override {
    messages.push_back(msg);
    if (onMessage) onMessage(msg);
    return true;
  }

  std::vector<vorn::cMsg> messages;
  std::function<void(const vorn::cMsg&)> onMessage;
};

class cRecordingServer : public vorn::cScmServer {
 public:
  using vorn::cScmServer::cScmServer;
  void OnConnect(vorn::cScmChannel& channel) override {
    ++connects;
    if (const auto call = onConnect) call(channel);
  }
  void OnClose(vorn::cScmChannel&) override { ++closes; }
  bool DispatchMessage(const vorn::cMsg& msg) override {
    messages.push_back(msg);
    const auto call = onMessage;  // copies: what is called may end this object
    const bool consumed = consume;
    if (call) call(msg);
    return consumed;
  }

  int connects = 0;
  int closes = 0;
  bool consume = true;
  std::vector<vorn::cMsg> messages;
  std::function<void(const vorn::cMsg&)> onMessage;
  std::function<void(vorn::cScmChannel&)> onConnect;
};

class cRecordingClient : public vorn::cScmServiceIO {
 public:
  using vorn::cScmServiceIO::cScmServiceIO;
  void OnConnect() override {
    ++connects;
    connectedInOnConnect = IsConnected();
    if (const auto call = onConnect) call();
  }
  void OnClose() override {
    ++closes;
    connectedInOnClose = IsConnected();
    if (const auto call = onClose) call();
  }
  bool DispatchMessage(const vorn::cMsg& msg) override {
    messages.push_back(msg);
    const auto call = onMessage;  // copies: what is called may end this object
    const bool consumed = consume;
    if (call) call(msg);
    return consumed;
  }

  int connects = 0;
  int closes = 0;
  bool connectedInOnConnect = false;
  bool connectedInOnClose = true;
  bool consume = true;
  std::vector<vorn::cMsg> messages;
  std::function<void()> onConnect;
  std::function<void()> onClose;
  std::function<void(const vorn::cMsg&)> onMessage;
};
