// SPDX-License-Identifier: Apache-2.0
#include <tav/framework/service.h>

#include <chrono>

#include "detail/loop.h"
#include "detail/socket_channel.h"

namespace vorn {

namespace {

constexpr int kMostTurns = 64;  // of one Poll: what keeps making work for itself does not hold its caller

}  // namespace

cService::cService(std::shared_ptr<const cClock> clock) : m_loop(std::make_shared<detail::cLoop>(std::move(clock))) {}

cService::~cService() { m_loop->CloseAll(); }

void cService::Run() {
  while (!m_stopped) m_loop->Turn(-1);
  m_stopped = false;
}

void cService::Stop() { m_stopped = true; }

bool cService::Poll(unsigned int milliseconds) {
  if (!m_loop->Turn(milliseconds)) return false;
  for (int turns = 1; turns < kMostTurns && m_loop->Turn(0); ++turns) {
  }
  return true;
}

void cService::Post(const cMsg& msg) {
  m_loop->Post([this, msg] { DispatchMessage(msg); });
}

bool cService::DispatchMessage(const cMsg&) { return false; }

cMsg cService::SendSyncMsg(const std::shared_ptr<cScmChannel>& channel, const cMsg& msg, unsigned int timeoutMs,
                           unsigned int replyType, unsigned int, unsigned int) {
  const auto socketChannel = std::dynamic_pointer_cast<detail::cSocketChannel>(channel);
  if (!socketChannel || socketChannel->Send(msg) < 1) return cMsg(0);
  return m_loop->WaitForReply(socketChannel, timeoutMs, replyType, msg.GetId());
}

const cClock& cService::GetClock() const { return m_loop->GetAlarms().GetClock(); }

}  // namespace vorn
