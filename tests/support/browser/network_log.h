// SPDX-License-Identifier: Apache-2.0
// cNetworkLog: what a browser's performance log tells of its requests: which failed, and whom it asked.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

class cNetworkLog {
 public:
  // One entry of the log; those that speak of something else are passed by.
  void Take(const nlohmann::json& entry);

  // "address: reason" each, since the last call: answers of 400 and above, and requests without an answer. Those that
  // the browser gave up itself, as it does when it leaves a page, are none.
  std::vector<std::string> TakeFailed();
  // "host:port" as the addresses say it, since the start. What needs no network has none.
  const std::set<std::string>& GetHosts() const { return m_hosts; }

 private:
  std::map<std::string, std::string> m_addresses;  // by the browser's number of the request
  std::vector<std::string> m_failed;
  std::set<std::string> m_hosts;
};
