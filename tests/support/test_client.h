// SPDX-License-Identifier: Apache-2.0
// cTestClient: a client of any service that keeps what it is told, and waits for it with a bound.
#pragma once

#include <deque>
#include <functional>
#include <string>

#include <tav/framework/scm_service_io.h>

class cTestClient : public vorn::cScmServiceIO {
 public:
  static constexpr unsigned int kPatienceMs = 10'000;

  using vorn::cScmServiceIO::cScmServiceIO;

  bool DispatchMessage(const vorn::cMsg& msg) override {
    m_messages.push_back(msg);
    return true;
  }

  // Drives the loop until it holds; false when it takes too long.
  bool Await(const std::function<bool()>& holds) {
    for (unsigned int waited = 0; !holds(); waited += kStepMs) {
      if (waited >= kPatienceMs) return false;
      // What was handled without waiting does not count.
      while (GetService()->Poll(0) && !holds()) {
      }
      if (holds()) return true;
      if (GetService()->Poll(kStepMs)) waited -= kStepMs;
    }
    return true;
  }
  bool AwaitConnection() {
    return Await([this] { return IsConnected(); });
  }
  // The next message; one of type 0 when none comes.
  vorn::cMsg Next() {
    if (!Await([this] { return !m_messages.empty(); })) return vorn::cMsg();
    const vorn::cMsg msg = m_messages.front();
    m_messages.pop_front();
    return msg;
  }
  // Sends a request under a fresh identifier; its answer.
  vorn::cMsg Ask(unsigned int type, const vorn::cRecord& record = {}) {
    SendRequest(type, record);
    return Next();
  }
  vorn::cUuid SendRequest(unsigned int type, const vorn::cRecord& record = {}) {
    vorn::cMsg request(type);
    vorn::cUuid id;
    id.Create();
    request.SetId(id);
    request.Record() = record;
    return Send(request) == 1 ? id : vorn::cUuid();
  }
  std::size_t CountWaiting() const { return m_messages.size(); }

 private:
  static constexpr unsigned int kStepMs = 10;

  std::deque<vorn::cMsg> m_messages;
};
