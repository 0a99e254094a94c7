// SPDX-License-Identifier: Apache-2.0
#include <bench/channel/vorn_link.h>

#include <bench/support/figures.h>
#include <tav/framework/scm_server.h>

namespace tav::bench {

namespace {

const std::string kService = "bench";
constexpr double kPatience = 10;  // seconds
constexpr unsigned int kTurnMs = 1000;

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
    ++m_acknowledged;
  } else {
    benchmark::DoNotOptimize(ReadRecord(msg.Record(), m_answered));
  }
  return true;
}

bool cVornLink::RoundTrip(std::uint64_t number) {
  if (!SendReading(kEcho, number)) return false;
  while (m_answered != number)
    if (!Poll(kTurnMs)) return false;
  return true;
}

std::uint64_t cVornLink::Stream(unsigned int window, double end) {
  std::uint64_t sent = 0;
  m_acknowledged = 0;
  for (bool over = false; !over || m_acknowledged<sent; over = Now()> end) {
    for (; !over && sent < m_acknowledged + window; ++sent)
      if (!SendReading(kStore, sent + 1)) return 0;
    if (!Poll(kTurnMs) || m_answered > sent) return 0;
  }
  return m_acknowledged;
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
