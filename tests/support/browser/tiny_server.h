// SPDX-License-Identifier: Apache-2.0
// cTinyServer: an HTTP server in small, for tests of what a browser does with answers. Each connection has a thread of
// its own, since a browser also opens connections that it then does not use.
#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

class cTinyServer {
 public:
  struct cRequest {
    std::string method;
    std::string path;  // with the query
    std::string body;
  };
  struct cAnswer {
    int status = 200;
    std::string type = "text/html; charset=utf-8";
    std::string body;
  };
  // Called by the threads, one at a time.
  using Handler = std::function<cAnswer(const cRequest&)>;

  // Listens on a free port of the loopback.
  explicit cTinyServer(Handler handler);
  ~cTinyServer();
  cTinyServer(const cTinyServer&) = delete;
  cTinyServer& operator=(const cTinyServer&) = delete;

  const std::string& GetHost() const { return m_host; }
  std::string Url(const std::string& path) const { return "http://" + m_host + path; }

  // Answers of type text/event-stream stay open: what is told to all of them, how many there are, and their end.
  void Tell(const std::string& event, const std::string& data);
  std::size_t CountStreams();
  void CutStreams();

 private:
  void Accept();
  void Serve(int peer);
  bool Read(int peer, cRequest& request) const;

  const Handler m_handler;
  int m_socket;
  std::string m_host;
  std::mutex m_mutex;  // guards handler and streams
  std::vector<int> m_streams;
  std::thread m_thread;
  std::vector<std::pair<int, std::thread>> m_peers;  // of the accepting thread, until that has ended
};
