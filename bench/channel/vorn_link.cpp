// SPDX-License-Identifier: Apache-2.0
#include <bench/channel/vorn_link.h>

#include <bench/support/figures.h>
#include <tav/framework/scm_server.h>

namespace tav::bench {

namespace {

const std::string kService = "bench";
constexpr double kPatience = 10;  // seconds, for the connection

class cAnswering : public vorn::cScmServer {
 public:
  explicit cAnswering(vorn::cScmService* service) : cScmServer(service, kService) {}

  bool DispatchMessage(const vorn::cMsg& msg) override {
    std::uint64_t number = 0;
    benchmark::DoNotOptimize(ReadRecord(msg.Record(), number));
    vorn::cMsg answer(msg.GetType() + 1);
    if (msg.GetType() == kStore) {
      answer.Record().AppendUInt64Par("id", number);
    } else {
      m_reading.number = number;
      WriteRecord(m_reading, answer.Record());
    }
    msg.GetReplyChannel()->Send(answer);
    return true;
  }

 private:
  cReading m_reading = SampleReading();
};

void Serve(const std::string& directory, const cChild::Ready& ready) {
  vorn::cScmService service("bench-server", directory);
  const cAnswering server(&service);
  if (!server.IsListening()) return;
  ready();
  service.Run();
}

}  // namespace

cVornLink::cVornLink(const std::string& directory)
    : cScmService("bench-client", directory),
      cScmServiceIO(this, kService),
      m_server([&](const cChild::Ready& ready) { Serve(directory, ready); }) {
  for (const double end = Now() + kPatience; m_server.IsReady() && !IsConnected() && Now() < end;) Poll(1);
}

bool cVornLink::SendReading(unsigned int type, std::uint64_t number) {
  vorn::cMsg msg(type);
  m_reading.number = number;
  WriteRecord(m_reading, msg.Record());
  return Send(msg) == 1;
}

bool cVornLink::DispatchMessage(const vorn::cMsg& msg) {
  if (msg.GetType() == kStored) {
    m_answered = msg.Record().GetUInt64Par("id");
    GoOn();
  } else {
    benchmark::DoNotOptimize(ReadRecord(msg.Record(), m_answered));
    Stop();
  }
  return true;
}

void cVornLink::OnClose() {
  m_failed = true;
  Stop();
}

bool cVornLink::RoundTrip(std::uint64_t number) {
  if (!SendReading(kEcho, number)) return false;
  Run();
  return !m_failed && m_answered == number;
}

std::uint64_t cVornLink::Stream(unsigned int window, double end) {
  m_window = window;
  m_end = end;
  m_sent = m_acknowledged = 0;
  while (m_sent < window && SendReading(kStore, m_sent + 1)) ++m_sent;
  if (m_sent == window) Run();
  return m_failed ? 0 : m_acknowledged;
}

// An acknowledgement makes room for the next reading, until the time is over.
void cVornLink::GoOn() {
  if (m_answered != ++m_acknowledged) m_failed = true;
  if (Now() < m_end && SendReading(kStore, m_sent + 1)) ++m_sent;
  if (m_failed || m_acknowledged == m_sent) Stop();
}

vorn::cRecord cVornLink::MakeReading(std::uint64_t number) {
  vorn::cRecord record;
  WriteRecord(SampleReading(number), record);
  return record;
}

vorn::cRecord cVornLink::MakeAcknowledgement(std::uint64_t number) {
  vorn::cRecord record;
  record.AppendUInt64Par("id", number);
  return record;
}

}  // namespace tav::bench
