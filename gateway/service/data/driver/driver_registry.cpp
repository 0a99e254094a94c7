// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/driver/driver_registry.h>

#include <algorithm>

namespace tav::data {

void cDriverRegistry::Register(const Channel& channel, const std::string& driver) {
  if (channel == nullptr) return;
  Remove(*channel);
  m_drivers.push_back({channel, driver});
}

void cDriverRegistry::Remove(const vorn::cScmChannel& channel) {
  std::erase_if(m_drivers, [&](const cDriver& driver) { return driver.channel.get() == &channel; });
}

cDriverRegistry::Channel cDriverRegistry::Find(const std::string& driver) const {
  const std::vector<Channel> all = FindAll(driver);
  return all.empty() ? nullptr : all.back();
}

std::vector<cDriverRegistry::Channel> cDriverRegistry::FindAll(const std::string& driver) const {
  std::vector<Channel> all;
  for (const cDriver& known : m_drivers)
    if (known.name == driver) all.push_back(known.channel);
  return all;
}

std::string cDriverRegistry::NameOf(const vorn::cScmChannel* channel) const {
  const auto found = std::find_if(m_drivers.begin(), m_drivers.end(),
                                  [&](const cDriver& driver) { return driver.channel.get() == channel; });
  return found == m_drivers.end() ? "" : found->name;
}

std::set<std::string> cDriverRegistry::GetNames() const {
  std::set<std::string> names;
  for (const cDriver& driver : m_drivers) names.insert(driver.name);
  return names;
}

}  // namespace tav::data
