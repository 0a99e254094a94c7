// SPDX-License-Identifier: Apache-2.0
// cVornLink: readings as records over a channel of the framework, written, validated and read whole on both sides. Both
// processes are driven as processes are, by Run.
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
  void OnClose() override;
  bool SendReading(unsigned int type, std::uint64_t number);
  void GoOn();

  cChild m_server;
  cReading m_reading = SampleReading();
  bool m_failed = false;
  std::uint64_t m_answered = 0;  // number of the last answer

  // Of a stream.
  unsigned int m_window = 0;
  double m_end = 0;
  std::uint64_t m_sent = 0;
  std::uint64_t m_acknowledged = 0;
};

}  // namespace tav::bench
