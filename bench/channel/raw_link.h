// SPDX-License-Identifier: Apache-2.0
// cRawLink: the limit of a channel. A bare stream socket behind epoll carries frames of the same bytes, made before;
// nobody looks at more of them than their length, type and number. What one read brings is answered by one write.
#pragma once

#include <memory>

#include <bench/channel/link.h>
#include <bench/channel/raw_end.h>
#include <bench/support/child.h>

namespace tav::bench {

class cRawLink : public cLink {
 public:
  // The socket is made in the directory.
  explicit cRawLink(const std::string& directory);

  bool IsConnected() const override { return m_end != nullptr; }
  bool RoundTrip(std::uint64_t number) override;
  std::uint64_t Stream(unsigned int window, double end) override;
  pid_t GetServer() const override { return m_server.GetPid(); }

 private:
  cChild m_server;
  std::unique_ptr<cRawEnd> m_end;
};

}  // namespace tav::bench
