// SPDX-License-Identifier: Apache-2.0
#include <gateway/host/status_publisher.h>

#include <list>

#include <tav/framework/time.h>
#include <tav/service/status_protocol.h>

namespace tav::gateway {

void cStatusPublisher::AddSource(const std::string& prefix, Source source) {
  m_sources.push_back({prefix, StatusTime(vorn::cTime::Now().GetSeconds()), std::move(source)});
}

void cStatusPublisher::Publish() {
  const cStatusValues values = Collect();
  std::list<std::string> gone;
  for (const auto& [name, value] : m_published)
    if (!values.Contains(name)) gone.push_back(name);
  cStatusValues fresh;
  for (const auto& [name, value] : values) {
    std::string known;
    if (!m_published.Get(name, known) || known != value) fresh.Set(name, value);
  }
  m_proxy.MultiRemove(gone);
  m_proxy.MultiSet(fresh);
  m_published = values;
}

cStatusValues cStatusPublisher::Collect() const {
  cStatusValues all;
  for (const cEntry& entry : m_sources) {
    cStatusValues values;
    values.Set("version", TAV_VERSION);
    values.Set("started", entry.started);
    entry.source(values);
    for (const auto& [name, value] : values)
      if (const std::string full = entry.prefix + "." + name;
          full.size() <= status::kMaxNameBytes && value.size() <= status::kMaxValueBytes)
        all.Set(full, value);
  }
  return all;
}

std::string StatusText(bool value) { return value ? "true" : "false"; }

std::string StatusTime(unsigned int utc) {
  return utc != 0 ? vorn::cTime::FromSeconds(utc, true).ToISO8601String() : std::string();
}

}  // namespace tav::gateway
