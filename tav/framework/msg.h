// SPDX-License-Identifier: Apache-2.0
// cMsg: what travels over a channel and through a service's loop: a type, an identifier and a record.
//
// The identifier is the caller's (a transaction, request or message id); the transport never creates or changes one.
#pragma once

#include <memory>
#include <string>

#include <tav/framework/export.h>
#include <tav/framework/record.h>
#include <tav/framework/scm_channel.h>
#include <tav/framework/uuid.h>

namespace vorn {

class VORN_API cMsg {
 public:
  cMsg(unsigned int type = 0) : m_type(type) {}  // NOLINT(google-explicit-constructor): a type alone is a message

  unsigned int GetType() const { return m_type; }
  void SetType(unsigned int type) { m_type = type; }
  const cUuid& GetId() const { return m_id; }
  void SetId(const cUuid& id) { m_id = id; }
  cRecord& Record() { return m_record; }
  const cRecord& Record() const { return m_record; }

  // The channel the message came over, to answer on; null when it came over none. Safe to keep and to use after its
  // peer is gone: a closed channel's Send gives 0.
  const std::shared_ptr<cScmChannel>& GetReplyChannel() const { return m_replyChannel; }
  void SetReplyChannel(std::shared_ptr<cScmChannel> channel) { m_replyChannel = std::move(channel); }

  // Type, identifier and record only: the same before and after sending.
  std::string ToString() const;

 private:
  unsigned int m_type;
  cUuid m_id;
  cRecord m_record;
  std::shared_ptr<cScmChannel> m_replyChannel;
};

}  // namespace vorn
