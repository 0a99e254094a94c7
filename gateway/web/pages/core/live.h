// SPDX-License-Identifier: Apache-2.0
// cLive: what changes on open pages without their being loaded again: last values and status values. It looks at the
// services while somebody listens, and tells each listener what is new to him.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include <gateway/host/task.h>
#include <gateway/web/pages/core/gateway_clients.h>

namespace tav::pages {

class cLive {
 public:
  static constexpr unsigned int kLookMs = 1000;
  // So many looks without news, and the listeners hear a sign of life.
  static constexpr unsigned int kSilentLooks = 15;

  // One open page. It is told while the object lives.
  class cListener {
   public:
    // events: whole events of a stream (text/event-stream), or a comment as a sign of life.
    cListener(cLive& live, std::function<void(const std::string& events)> tell);
    ~cListener();
    cListener(const cListener&) = delete;
    cListener& operator=(const cListener&) = delete;

   private:
    friend class cLive;
    cLive& m_live;
    std::function<void(const std::string& events)> m_tell;
    bool m_isNew = true;  // has to be told everything
  };

  // Both outlive it.
  cLive(gateway::cServiceHost* host, cGatewayClients& gateway);

  // True for the answer to its own question.
  bool DispatchMessage(const vorn::cMsg& msg);

 private:
  struct cShown {
    std::string text;   // what is shown
    std::string event;  // the event that tells it
  };
  using Shown = std::map<std::string, cShown>;

  void Look();
  void TakeValues(const vorn::cRecord& answer);
  void TakeStatus();
  void Tell();
  std::string Everything() const;
  // Notes a value; its event is made, and goes out, when it is not as it was.
  void Note(Shown& all, const std::string& key, const std::string& text, const std::function<std::string()>& event);

  cGatewayClients& m_gateway;
  gateway::cTask m_look;
  vorn::cUuid m_question;
  std::vector<cListener*> m_listeners;
  Shown m_values;
  Shown m_status;
  std::string m_news;
  unsigned int m_silent = 0;  // looks without news
};

// The key of a value on the pages: an element with data-live of this text shows it.
std::string LiveKey(const std::string& meterId, const std::string& obisId);

}  // namespace tav::pages
