// SPDX-License-Identifier: Apache-2.0
// cStatusPublisher: publishes how a process is, as status values "prefix.name". Sources are asked again and again; only
// what has changed since goes out, and what a source does not tell any more is removed.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include <tav/service/status_proxy.h>

namespace tav::gateway {

using cStatusValues = vorn::cMap<std::string, std::string>;

class cStatusPublisher {
 public:
  // How often the owner should publish.
  static constexpr unsigned int kIntervalMs = 5'000;
  static constexpr unsigned int kSlackMs = 1'000;

  // Adds its values, named without the prefix. What is too long is left out: the service would refuse it, and with it
  // all that is told beside it.
  using Source = std::function<void(cStatusValues& values)>;

  // The service outlives it.
  explicit cStatusPublisher(vorn::cScmService* service) : m_proxy(service) {}

  // Every source also tells "version" and "started". What the source uses outlives the publisher.
  void AddSource(const std::string& prefix, Source source);
  // Asks the sources and tells the service what is new.
  void Publish();

  const cStatusProxy& GetProxy() const { return m_proxy; }

 private:
  struct cEntry {
    std::string prefix;
    std::string started;
    Source source;
  };

  cStatusValues Collect() const;

  cStatusProxy m_proxy;
  std::vector<cEntry> m_sources;
  cStatusValues m_published;
};

// "true" and "false", and a time as "2024-03-01T12:00:00Z", empty for 0: how values are written.
std::string StatusText(bool value);
std::string StatusTime(unsigned int utc);

}  // namespace tav::gateway
