// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/access/attempt_delay.h>

#include <arpa/inet.h>

#include <algorithm>
#include <string_view>

namespace tav::pages {

namespace {

constexpr unsigned int kNetworkBytes = 8;
// How a socket for both families shows an address of IPv4 (RFC 4291, 2.5.5.2): all of them are of one "network".
constexpr std::string_view kMapped("\0\0\0\0\0\0\0\0\0\0\xFF\xFF", 12);

// What an attacker cannot change at will.
std::string NetworkOf(const std::string& address) {
  unsigned char bytes[16];
  if (inet_pton(AF_INET6, address.c_str(), bytes) != 1) return address;
  const std::string_view all(reinterpret_cast<const char*>(bytes), sizeof bytes);
  return std::string(all.starts_with(kMapped) ? all : all.substr(0, kNetworkBytes));
}

}  // namespace

unsigned int cAttemptDelay::GetWait(const std::string& address) const {
  const auto at = m_entries.find(NetworkOf(address));
  if (at == m_entries.end() || at->second.until <= m_clock.Now()) return 0;
  return static_cast<unsigned int>((at->second.until - m_clock.Now() + 999) / 1000);
}

void cAttemptDelay::Failed(const std::string& address) {
  const std::string network = NetworkOf(address);
  if (m_entries.find(network) == m_entries.end()) MakeRoom();
  cEntry& entry = m_entries[network];
  if (entry.until + std::int64_t{kForgetSeconds} * 1000 < m_clock.Now()) entry.failures = 0;
  unsigned int seconds = kFirstSeconds;
  for (unsigned int i = 0; i < entry.failures && seconds < kMostSeconds; ++i) seconds *= 2;
  ++entry.failures;
  entry.until = m_clock.Now() + std::int64_t{std::min(seconds, kMostSeconds)} * 1000;
}

void cAttemptDelay::Succeeded(const std::string& address) { m_entries.erase(NetworkOf(address)); }

void cAttemptDelay::MakeRoom() {
  if (m_entries.size() < kMaxAddresses) return;
  m_entries.erase(std::min_element(m_entries.begin(), m_entries.end(),
                                   [](const auto& a, const auto& b) { return a.second.until < b.second.until; }));
}

}  // namespace tav::pages
