// SPDX-License-Identifier: Apache-2.0
// cPageExchange: one request that a page process answers: asked, accepted, a header block, the body, the end. It knows
// nothing of HTTP connections: the connection is woken when there is something for it, and takes it.
//
// What breaks before the header has gone out becomes an error's page; what breaks behind it, a broken transfer.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include <gateway/web/front/answer.h>
#include <gateway/web/front/body_stream.h>
#include <gateway/web/front/header_block.h>
#include <gateway/web/front/page_registry.h>
#include <tav/framework/msg.h>

namespace tav::gateway::web {

class cPageServer;

// What the client is able to take.
struct cClientTraits {
  bool isHead = false;
  bool acceptsGzip = false;
};

class cPageExchange {
 public:
  // Sends the request. wake: called when there is an answer, or more of it; never from within another call. The server
  // outlives it.
  cPageExchange(cPageServer* server, const cPageProcess& process, const vorn::cRecord& request,
                const cClientTraits& client, std::function<void()> wake);
  // The client has all, or is gone.
  ~cPageExchange();
  cPageExchange(const cPageExchange&) = delete;
  cPageExchange& operator=(const cPageExchange&) = delete;

  // ---- from the page process
  void OnTaken();
  void OnRefused(const std::string& reason);
  void OnOutput(const vorn::cRecord& output);
  void OnNonsense(const std::string& fault);
  void OnProcessGone();
  // Time passes.
  void OnTime(std::int64_t now);

  // ---- for the client
  // The answer's beginning; nothing while there is none. A body that goes on is not in it, but taken with Read.
  struct cBeginning {
    cAnswer answer;
    bool isStream = false;
  };
  std::optional<cBeginning> Begin();
  enum class eRead { Bytes, Nothing, End, Broken };
  eRead Read(char* to, std::size_t most, std::size_t& size);
  // Whether there is something to begin or to read.
  bool IsReady() const;

  const vorn::cUuid& GetId() const { return m_id; }
  const vorn::cScmChannel* GetChannel() const { return m_process.channel.get(); }
  // Called by the server, at the end of a turn.
  void Wake() { m_wake(); }

 private:
  enum class eState { Asked, Taken, Header, Begun, Broken };

  void Fail(const cHttpFault& fault);
  void TakeContent(std::string_view content);
  void TakeHeader();
  void TakeBody(std::string bytes);
  void TakeEnd(bool isWhole);
  bool MayCompress() const;
  bool HasNoBody() const;
  // The page is told of outputs that went on to the client, and, once, that no more are wanted.
  void TellPassed();
  void TellLost(const std::string& reason);
  void Tell(unsigned int type, const vorn::cRecord& record);
  void SetWaiting();

  cPageServer* m_server;
  cPageProcess m_process;
  cClientTraits m_client;
  std::function<void()> m_wake;
  vorn::cUuid m_id;
  eState m_state = eState::Asked;
  std::int64_t m_deadline;
  cHeaderBlock m_block;
  cBodyStream m_stream;
  cHttpFault m_fault;
  unsigned int m_headerOutputs = 0;  // that the header block came in, not yet told
  bool m_isLost = false;             // no more outputs are wanted
  std::size_t m_counted = 0;         // of the server's bytes that wait
};

}  // namespace tav::gateway::web
