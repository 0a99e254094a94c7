// SPDX-License-Identifier: Apache-2.0
// cProtocolServer: the service side of a channel whose protocol is written down as a table.
//
// A request is checked against the table before its handler sees it. What is unknown, malformed or has no handler is
// refused with a "reason"; no request stays without an answer. Derive from it and say On(...) for each request.
//
// What the table gives neither an answer nor a refusal is itself a client's answer, to something that the service has
// sent: it goes through the same check to its handler, and what is wrong with it is only traced.
#pragma once

#include <functional>
#include <map>
#include <string>

#include <gateway/host/service_host.h>
#include <tav/framework/scm_server.h>
#include <tav/protocol.h>

namespace tav::gateway {

class cProtocolServer : public vorn::cScmServer {
 public:
  using Handler = std::function<void(const vorn::cMsg& request)>;

  bool DispatchMessage(const vorn::cMsg& msg) final;

  // The answer to a request, or its refusal: sent over the request's channel under its identifier. An answer that does
  // not fit a frame becomes a refusal that says so.
  void Answer(const vorn::cMsg& request, const vorn::cRecord& record = {});
  void Refuse(const vorn::cMsg& request, const std::string& reason);
  // Something that a client has not asked for, under a fresh identifier. A client that does not read is disconnected:
  // when it is back it asks anew. False: it was not told. client: what the line of trace calls it, else the peer.
  bool Tell(vorn::cScmChannel& channel, unsigned int type, const vorn::cRecord& record, const std::string& client = {});

 protected:
  enum class eCheck {
    Table,  // by the table, before the handler is called
    Own,    // by the handler itself
  };

  cProtocolServer(cServiceHost* host, const cProtocol& protocol);

  void On(unsigned int type, Handler handler, eCheck check = eCheck::Table);

 private:
  struct cEntry {
    Handler handler;
    eCheck check;
  };

  // Why a message does not reach its handler; empty when nothing stands in the way.
  std::string FaultOf(const cProtocolMessage* row, const cEntry* entry, const vorn::cMsg& msg) const;
  std::string Describe(unsigned int type) const;

  const cProtocol& m_protocol;
  std::map<unsigned int, cEntry> m_handlers;
};

}  // namespace tav::gateway
