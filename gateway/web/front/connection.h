// SPDX-License-Identifier: Apache-2.0
// cConnection: one client's connection: one request after the other, each read, brought to the static files or to a
// page process, and answered. While a page has nothing for it the HTTP library lets it rest, and it costs nothing.
//
// It guards itself against clients that take their time: Check looks at how far it has come.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>

#include <gateway/web/front/client_request.h>
#include <gateway/web/front/page_exchange.h>

struct MHD_Connection;
struct MHD_Response;

namespace tav::gateway::web {

class cPageServer;

struct cWebCounters {
  std::uint64_t connections = 0;  // since the start, as all of these
  std::uint64_t requests = 0;
  std::uint64_t refused = 0;        // requests that were answered with 4xx or 501 by the front end
  std::uint64_t timeouts = 0;       // connections ended because their client took its time
  std::uint64_t evicted = 0;        // ended to make room
  std::uint64_t bytesReceived = 0;  // of bodies, as the next
  std::uint64_t bytesSent = 0;
};

// What all connections share; outlives them.
struct cWebParts {
  cPageServer* pages;
  cStaticFiles* files;
  cTempFiles* tempFiles;
  cWebCounters* counters;
  std::uint64_t maxBodyBytes;
  std::string serverPort;
  bool isTls;
  std::function<void()> runLater;  // the HTTP library has something to do that no socket tells
};

class cConnection {
 public:
  cConnection(const cWebParts& parts, MHD_Connection* handle);
  cConnection(const cConnection&) = delete;
  cConnection& operator=(const cConnection&) = delete;

  // ---- what the HTTP library tells, in this order
  void BeginRequest(std::string_view target);
  std::size_t Decode(char* text);
  // Header, pieces of the body, its end, and again whenever it has been woken. False: the connection has to be closed.
  bool Handle(std::string_view path, std::string_view method, std::string_view version, const char* body,
              std::size_t* bodySize);
  void EndRequest();

  // ---- what the table of connections tells
  // The client has closed its end. Nobody waits for an answer then.
  void OnClientGone();
  void Check(std::int64_t now);
  // Ends it, whatever it is at.
  void Abort();
  // Whether it waits for its client only: for a request, or for the rest of one.
  bool IsIdle() const { return !m_isAborted && (m_phase == ePhase::Idle || m_phase == ePhase::Body); }
  bool IsWaitingForRequest() const { return !m_isAborted && m_phase == ePhase::Idle; }
  int GetSocket() const { return m_socket; }

 private:
  enum class ePhase {
    Idle,    // between requests, or in a header
    Body,    // of a request
    Page,    // a page process is at work
    Answer,  // is being sent
  };

  void Enter(ePhase phase);
  bool TakeHeader(std::string_view path, std::string_view method, std::string_view version);
  bool Route();
  bool AskPage();
  bool AnswerFile();
  bool GoOn();
  bool Answer(cAnswer answer);
  bool Refuse(const cHttpFault& fault);
  bool Queue(unsigned int status, MHD_Response* response);
  // Of the answer's body; as the HTTP library wants it.
  ssize_t Read(char* to, std::size_t most);
  void Break();
  // Lets it rest until Wake; false: its client is gone already.
  bool Rest();
  void Wake();

  void CheckIdle(std::int64_t now);
  void CheckBody(std::int64_t now);
  void CheckAnswer(std::int64_t now);
  void EndFor(const cHttpFault& fault, bool tellClient);
  std::int64_t Now() const;

  const cWebParts& m_parts;
  MHD_Connection* m_handle;
  int m_socket;
  std::string m_remoteAddress;
  std::optional<cClientRequest> m_request;
  std::unique_ptr<cPageExchange> m_exchange;
  ePhase m_phase = ePhase::Idle;
  bool m_isResting = false;
  bool m_isClientGone = false;
  bool m_isAborted = false;

  std::int64_t m_since;                       // when the phase began
  std::optional<std::int64_t> m_headerSince;  // when a header began to come
  std::uint64_t m_received = 0;               // bytes, when the last request had ended
  std::uint64_t m_taken = 0;                  // bytes that the client had acknowledged at the last look
  std::int64_t m_takenAt = 0;
};

}  // namespace tav::gateway::web
