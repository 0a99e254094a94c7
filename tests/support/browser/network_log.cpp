// SPDX-License-Identifier: Apache-2.0
#include <tests/support/browser/network_log.h>

#include <string_view>
#include <utility>

using nlohmann::json;

namespace {

// Of an address of the network; empty for data, files and the like.
std::string HostOf(const std::string& address) {
  for (const std::string_view scheme : {"http://", "https://", "ws://", "wss://"}) {
    if (address.rfind(scheme, 0) != 0) continue;
    const std::size_t end = address.find_first_of("/?#", scheme.size());
    return address.substr(scheme.size(), end == std::string::npos ? end : end - scheme.size());
  }
  return {};
}

}  // namespace

void cNetworkLog::Take(const json& entry) {
  const json event = json::parse(entry.value("message", ""), nullptr, false);
  if (!event.is_object() || !event.contains("message")) return;
  const json& message = event["message"];
  const std::string method = message.value("method", "");
  const json parameters = message.value("params", json::object());
  const std::string id = parameters.value("requestId", "");
  if (method == "Network.requestWillBeSent") {
    const std::string address = parameters["request"].value("url", "");
    m_addresses[id] = address;
    if (const std::string host = HostOf(address); !host.empty()) m_hosts.insert(host);
  } else if (method == "Network.responseReceived") {
    const int status = parameters["response"].value("status", 0);
    if (status >= 400) m_failed.push_back(parameters["response"].value("url", "") + ": " + std::to_string(status));
  } else if (method == "Network.loadingFailed" && !parameters.value("canceled", false)) {
    const std::string blocked = parameters.value("blockedReason", "");
    m_failed.push_back(m_addresses[id] + ": " + parameters.value("errorText", "") + (blocked.empty() ? "" : " ") +
                       blocked);
  }
}

std::vector<std::string> cNetworkLog::TakeFailed() { return std::exchange(m_failed, {}); }
