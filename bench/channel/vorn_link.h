// SPDX-License-Identifier: Apache-2.0
// cVornLink: readings as records over a channel of the framework, written, validated and read whole on both sides.
#pragma once

#include <bench/channel/link.h>
#include <bench/support/child.h>
#include <bench/support/sample_reading.h>
#include <tav/framework/scm_service_io.h>

namespace tav::bench {

class cVornLink : public cLink, private vorn::cScmService, private vorn::cScmServiceIO {
 public:
  // The socket is made in the directory.
  explicit cVornLink(const std::string& directory);

  bool IsConnected() const override { return vorn::cScmServiceIO::IsConnected(); }
  bool RoundTrip(std::uint64_t number) override;
  std::uint64_t Stream(unsigned int window, double end) override;
  pid_t GetServer() const override { return m_server.GetPid(); }

  // The record of a reading, and of an acknowledgement: what the bare socket carries too.
  static vorn::cRecord MakeReading(std::uint64_t number);
  static vorn::cRecord MakeAcknowledgement(std::uint64_t number);

 private:
  bool DispatchMessage(const vorn::cMsg& msg) override;
  bool SendReading(unsigned int type, std::uint64_t number);

  cChild m_server;
  cReading m_reading = SampleReading();
  std::uint64_t m_answered = 0;      // number of the last answer
  std::uint64_t m_acknowledged = 0;  // how many were
};

}  // namespace tav::bench
