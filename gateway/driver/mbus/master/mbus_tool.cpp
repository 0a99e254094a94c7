// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/master/mbus_tool.h>

#include <algorithm>
#include <chrono>
#include <iterator>
#include <optional>

#include <gateway/driver/mbus/master/mbus_requests.h>

namespace tav::mbus {

namespace {

constexpr unsigned int kTurnMs = 100;

}  // namespace

cMBusTool::cMBusTool(const cMBusLineSettings& settings, std::function<bool()> interrupted)
    : m_host("mbus-tool"), m_interrupted(std::move(interrupted)), m_master(&m_host, settings) {
  m_master.onLost = [this](const std::string& why) { m_lost = why; };
  m_master.onOpen = [this] { m_lost.clear(); };
}

bool cMBusTool::Await(const std::function<bool()>& holds, std::string& error) {
  while (!holds()) {
    if (m_interrupted()) {
      error = "interrupted";
      return false;
    }
    m_host.Poll(kTurnMs);
  }
  return true;
}

bool cMBusTool::Open(unsigned int timeoutMs, std::string& error) {
  using namespace std::chrono;
  const auto end = steady_clock::now() + milliseconds(timeoutMs);
  const auto isOver = [&] { return m_master.IsOpen() || !m_lost.empty() || steady_clock::now() >= end; };
  if (!Await(isOver, error)) return false;
  if (!m_master.IsOpen()) error = m_lost.empty() ? "the line was not there in time" : m_lost;
  return m_master.IsOpen();
}

bool cMBusTool::Scan(const cMBusScanOptions& options, const std::function<void(const cMBusFound&)>& onFound,
                     const std::function<void(const cMBusScanProgress&)>& onProgress, std::string& error) {
  std::optional<std::string> ended;
  cMBusScan scan(m_master, options);
  scan.onFound = onFound;
  scan.onProgress = onProgress;
  scan.onEnd = [&](const std::string& why) { ended = why; };
  scan.Start();
  if (!Await([&] { return ended.has_value(); }, error)) return false;
  error = *ended;
  return error.empty();
}

bool cMBusTool::Read(const cMBusAddress& address, std::vector<std::string>& frames, std::string& error) {
  std::optional<cMBusReadoutResult> result;
  cMBusLink link;
  cMBusReadout readout(m_master, link, address, [&](const cMBusReadoutResult& done) { result = done; });
  readout.Start();
  if (!Await([&] { return result.has_value(); }, error)) return false;
  frames = result->frames;
  error = result->cause;
  return result->outcome == eOutcome::Answered;
}

bool cMBusTool::SetAddress(const cMBusAddress& address, std::uint8_t newAddress, std::string& error) {
  return Select(address, error) &&
         Ask(MakeSetAddress(address.primary, newAddress), "the meter did not acknowledge its new address", error);
}

bool cMBusTool::CheckBaud(unsigned int baud, std::string& error) {
  if (std::ranges::find(kBauds, baud) != std::end(kBauds)) return true;
  error = "there is no code for " + std::to_string(baud) +
          " baud; expected 300, 600, 1200, 2400, 4800, 9600, 19200 or 38400";
  return false;
}

bool cMBusTool::SetBaud(const cMBusAddress& address, unsigned int baud, std::string& error) {
  if (!CheckBaud(baud, error) || !Select(address, error) ||
      !Ask(MakeSetBaud(address.primary, baud), "the meter did not acknowledge its new rate", error))
    return false;
  m_master.SetBaud(baud);
  if (address.IsSecondary()) return Select(address, error);
  return Ask(MakeInitialise(address.primary), "the meter does not answer at its new rate", error);
}

bool cMBusTool::ResetApplication(const cMBusAddress& address, int subCode, std::string& error) {
  return Select(address, error) && Ask(MakeApplicationReset(address.primary, subCode),
                                       "the meter did not acknowledge the reset of its application", error);
}

// A primary address needs none.
bool cMBusTool::Select(const cMBusAddress& address, std::string& error) {
  return !address.IsSecondary() || Ask(MakeSelection(address), "no meter acknowledged its selection", error);
}

bool cMBusTool::Ask(const std::string& frame, const std::string& what, std::string& error) {
  std::optional<eOutcome> outcome;
  std::string cause;
  m_master.Exchange({frame, eExpected::Ack}, [&](const cMBusAnswer& answer) {
    outcome = answer.outcome;
    cause = answer.cause;
  });
  const bool done = Await([&] { return outcome.has_value(); }, error);
  if (!done) m_master.Abandon();
  if (done && outcome != eOutcome::Answered) error = what + ": " + cause;
  return done && outcome == eOutcome::Answered;
}

}  // namespace tav::mbus
