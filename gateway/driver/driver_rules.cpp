// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/driver_rules.h>

#include <unistd.h>

#include <map>
#include <string>

namespace tav {

namespace {

// What a rule that names the value makes of its identifier: without the channel, with its own group F.
std::string RenamedTo(const std::string& name) {
  const std::string obis = cMeterTav::ObisNormalize(name);
  const std::string channelFree = ObisWithoutChannel(obis);
  const std::size_t star = obis.find('*');
  return channelFree.substr(0, channelFree.find('*')) + (star != std::string::npos ? obis.substr(star) : std::string());
}

// Values that have one name anyway do not collide.
bool WouldCollide(const cMeterRecord& reading) {
  std::map<std::string, std::string> names;
  for (const cMeasurementEntry& entry : reading.GetMeasurementEntries())
    if (names.emplace(RenamedTo(entry.GetName()), entry.GetName()).first->second != entry.GetName()) return true;
  return false;
}

}  // namespace

cDriverRules::cDriverRules(vorn::cScmService* service, std::function<void()> onLoaded) {
  m_live.emplace(service, std::move(onLoaded));
}

const cObisMap* cDriverRules::Get() const {
  const cObisMap* const rules = m_live ? &m_live->map : m_fixed ? &*m_fixed : nullptr;
  return rules != nullptr && !rules->GetEntries().empty() ? rules : nullptr;
}

bool cDriverRules::IsSettled() const {
  return !m_live || m_live->loaded || access(m_live->GetService()->GetSocketPath(m_live->GetName()).c_str(), F_OK) != 0;
}

bool cDriverRules::cLive::DispatchMessage(const vorn::cMsg& msg) {
  const bool wasLoaded = loaded;
  const bool handled = cObisProxy::DispatchMessage(msg);
  if (loaded && !wasLoaded) m_onLoaded();
  return handled;
}

cMeterRecord FilterReading(cMeterRecord& reading, const cObisMap& rules, bool keepNames) {
  cMeterRecord filtered;
  reading.ProcessFilter(rules, filtered, true);
  if (keepNames || WouldCollide(filtered)) return filtered;
  reading.ProcessFilter(rules, filtered, false);
  return filtered;
}

}  // namespace tav
