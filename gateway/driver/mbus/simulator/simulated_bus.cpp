// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/simulator/simulated_bus.h>

#include <fcntl.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include <gateway/driver/mbus/master/mbus_timing.h>
#include <tav/framework/time.h>

namespace tav::mbus {

namespace {

struct cRate {
  speed_t speed;
  unsigned int baud;
};
constexpr cRate kRates[] = {{B300, 300},   {B600, 600},   {B1200, 1200},   {B2400, 2400},
                            {B4800, 4800}, {B9600, 9600}, {B19200, 19200}, {B38400, 38400}};

std::string Reason(const std::string& what) { return what + ": " + std::strerror(errno); }

void MakeRaw(int line) {
  termios settings{};
  if (tcgetattr(line, &settings) != 0) return;
  cfmakeraw(&settings);
  cfsetspeed(&settings, B2400);
  tcsetattr(line, TCSANOW, &settings);
}

// A link that is there already is one that nobody has removed.
bool MakeLink(const std::string& device, const std::string& link) {
  char target[8];
  if (readlink(link.c_str(), target, sizeof target) >= 0) unlink(link.c_str());
  return symlink(device.c_str(), link.c_str()) == 0;
}

}  // namespace

cSimulatedBus::cSimulatedBus(gateway::cServiceHost* host, cMBusBus& bus, const cSimulatedBusOptions& options)
    : now([] { return vorn::cTime::Now().GetSeconds(); }),
      m_host(host),
      m_bus(bus),
      m_options(options),
      m_due(host, [this] { OnDue(); }) {
  if (Open()) m_watch.emplace(m_host, m_line, vorn::cWatch::eEvent::Read, [this] { OnReadable(); });
}

cSimulatedBus::~cSimulatedBus() {
  m_watch.reset();
  if (m_error.empty() && !m_options.link.empty()) unlink(m_options.link.c_str());
  if (m_drivers >= 0) close(m_drivers);
  if (m_line >= 0) close(m_line);
}

bool cSimulatedBus::Open() {
  char name[64];
  m_line = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
  if (m_line < 0 || grantpt(m_line) != 0 || unlockpt(m_line) != 0 || ptsname_r(m_line, name, sizeof name) != 0) {
    m_error = Reason("no pseudo terminal");
    return false;
  }
  m_device = name;
  m_drivers = open(name, O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
  MakeRaw(m_drivers);
  if (!m_options.link.empty() && !MakeLink(m_device, m_options.link)) m_error = Reason("no link " + m_options.link);
  return m_error.empty();
}

void cSimulatedBus::OnReadable() {
  // Of a driver that is killed, the mark that keeps others away would stay; its lock goes with it.
  ioctl(m_drivers, TIOCNXCL);
  std::array<std::uint8_t, kMostFrame> block;
  const ssize_t size = read(m_line, block.data(), block.size());
  if (size <= 0) return;
  m_taken += static_cast<std::uint64_t>(size);
  cBytes bytes(block.data(), static_cast<std::size_t>(size));
  if (m_options.echo) Send(m_host->GetClock().Now(), std::string(bytes.begin(), bytes.end()));
  while (!bytes.empty()) {
    bytes = bytes.subspan(m_framer.Feed(bytes));
    for (cMBusFrame request; m_framer.Next(request);) Take(request);
  }
}

void cSimulatedBus::Take(const cMBusFrame& request) {
  const unsigned int baud = ReadBaud();
  const cBusAnswer answer = m_bus.Take(request, baud, now());
  const cMBusTiming timing{baud};
  Answer(answer, m_host->GetClock().Now() + (m_options.instant ? 0 : timing.SendMs(request.bytes.size())), baud);
  if (onRequest) onRequest(request.bytes, answer.bytes);
}

// In as many pieces as the line's rate makes of it.
void cSimulatedBus::Answer(const cBusAnswer& answer, std::int64_t after, unsigned int baud) {
  if (m_options.instant) {
    const unsigned int late = answer.delayMs >= cMBusBus::kSlowMs ? answer.delayMs : 0;
    if (!answer.bytes.empty()) Send(after + late, answer.bytes);
    return;
  }
  const std::size_t each = std::max<std::size_t>(1, std::size_t{baud} * kPieceMs / 1000 / cMBusTiming::kByteBits);
  std::int64_t due = after + answer.delayMs;
  for (std::size_t at = 0; at < answer.bytes.size(); at += each) Send(due += kPieceMs, answer.bytes.substr(at, each));
}

void cSimulatedBus::Send(std::int64_t due, const std::string& bytes) {
  const auto behind =
      std::find_if(m_pieces.begin(), m_pieces.end(), [&](const cPiece& piece) { return piece.due > due; });
  m_pieces.insert(behind, {due, bytes});
  OnDue();
}

void cSimulatedBus::OnDue() {
  const std::int64_t time = m_host->GetClock().Now();
  for (; !m_pieces.empty() && m_pieces.front().due <= time; m_pieces.pop_front()) {
    const std::string& bytes = m_pieces.front().bytes;
    if (write(m_line, bytes.data(), bytes.size()) < 0) break;  // nobody reads, and all is full: later
    m_given += bytes.size();
  }
  if (!m_pieces.empty()) m_due.Start(static_cast<unsigned int>(std::max<std::int64_t>(m_pieces.front().due - time, 1)));
}

unsigned int cSimulatedBus::ReadBaud() const {
  termios settings{};
  if (tcgetattr(m_drivers, &settings) != 0) return 0;
  for (const cRate& rate : kRates)
    if (rate.speed == cfgetospeed(&settings)) return rate.baud;
  return 0;
}

}  // namespace tav::mbus
