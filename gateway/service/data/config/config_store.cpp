// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/config/config_store.h>

#include <SQLiteCpp/Database.h>

#include <gateway/service/data/config/config_limits.h>

namespace tav::data {

namespace {

// Things that a refusal names.
constexpr std::size_t kMaxNamed = 4;

std::string Join(const std::vector<std::string>& names) {
  std::string text;
  for (std::size_t i = 0; i < names.size() && i < kMaxNamed; ++i) text += (i == 0 ? "" : ", ") + names[i];
  return names.size() > kMaxNamed ? text + " and " + std::to_string(names.size() - kMaxNamed) + " more" : text;
}

std::string DescribeAll(const std::vector<cStoredMeter>& meters) {
  std::vector<std::string> names;
  names.reserve(meters.size());
  for (const cStoredMeter& meter : meters) names.push_back(Describe(meter.config));
  return Join(names);
}

std::string DescribeKey(const cMeterKey& key) {
  std::string text = "meter";
  if (!key.meterId.empty()) text += " " + QuotedName(key.meterId);
  if (!key.medium.empty()) text += " medium " + QuotedName(key.medium);
  if (!key.mfct.empty()) text += " manufactor " + QuotedName(key.mfct);
  return text;
}

// Finds by number and name in a table that has both; 0 and a fault when there is none.
template <typename Table>
std::int64_t Find(Table& table, const char* kind, std::uint64_t idx, const std::string& name, const cPlace& at) {
  const auto number = static_cast<std::int64_t>(idx);
  const std::string text = std::string(kind) + " " + (idx != 0 ? std::to_string(idx) : QuotedName(name));
  const std::int64_t found = idx != 0 ? number : table.Find(name);
  const std::string foundName = found > 0 ? table.NameOf(found) : "";
  if (idx == 0 && name.empty())
    at.Fault(std::string(kind) + ": neither number nor name is given");
  else if (foundName.empty())
    at.Fault(text + " is not there");
  else if (!name.empty() && name != foundName)
    at.Fault(text + " is " + QuotedName(foundName) + ", not " + QuotedName(name));
  else
    return found;
  return 0;
}

}  // namespace

cConfigStore::cConfigStore(SQLite::Database& database)
    : m_interfaces(database), m_meters(database), m_collectors(database), m_targets(database), m_templates(database) {}

// ---- interfaces

void cConfigStore::DeleteInterface(const std::string& name, const cPlace& at, cRemoved& removed) {
  const std::string text = "interface " + QuotedName(name);
  if (!m_interfaces.Has(name)) return at.Fault(text + " is not there");
  if (const auto meters = m_meters.ListByInterface(name); !meters.empty())
    return at.Fault(text + " is needed by " + DescribeAll(meters));
  m_interfaces.Delete(name);
  removed.push_back(text);
}

// ---- meters

void cConfigStore::SetMeter(const cMeterConfig& meter, const cPlace& at) {
  const cPlace place = at.In("meter " + QuotedName(meter.meterID));
  if (!m_interfaces.Has(meter.interfaceName))
    return place.Fault("interface " + QuotedName(meter.interfaceName) + " is not there");
  const std::int64_t id = m_meters.Set(meter);
  for (const cCollectorConfig& collector : meter.collectors)
    if (collector.shouldRemoved)
      m_collectors.Delete(id, collector.addr);
    else
      SetCollector(id, collector, place.In(DescribeCollector(collector.addr)));
}

void cConfigStore::SetCollector(std::int64_t meter, cCollectorConfig collector, const cPlace& at) {
  if (collector.pushTargetIdx != 0 || !collector.pushTargetName.empty()) {
    const std::int64_t target = Find(m_targets, "push target", collector.pushTargetIdx, collector.pushTargetName, at);
    if (target == 0) return;
    collector.pushTargetIdx = static_cast<unsigned long long>(target);
  }
  m_collectors.Set(meter, collector);
}

void cConfigStore::DeleteMeter(const cMeterKey& key, const cPlace& at, cRemoved& removed) {
  auto meter = FindMeter(key, at);
  if (!meter) return;
  Fill(*meter, eCollectors::With);
  m_meters.Delete(meter->id);
  removed.push_back(Describe(meter->config));
  for (const cCollectorConfig& collector : meter->config.collectors)
    removed.push_back(DescribeCollector(collector.addr) + " of meter " + QuotedName(meter->config.meterID));
}

std::vector<cMeterConfig> cConfigStore::GetMeters(const std::string& addr) {
  if (addr.empty()) return Finish(m_meters.ListAll(), eCollectors::With);
  std::vector<cStoredMeter> meters = m_meters.ListByAddr(addr);
  if (meters.empty()) meters = m_meters.ListByKey({addr, "", ""});
  return Finish(std::move(meters), eCollectors::With);
}

std::vector<cMeterConfig> cConfigStore::GetMetersOf(const std::string& interfaceName, eCollectors collectors) {
  return Finish(m_meters.ListByInterface(interfaceName), collectors);
}

std::optional<cStoredMeter> cConfigStore::FindMeter(const cMeterKey& key, const cPlace& at) {
  if (key.meterId.empty() && key.medium.empty() && key.mfct.empty()) return at.Fault("no meter is named"), std::nullopt;
  const std::vector<cStoredMeter> meters = m_meters.ListByKey(key);
  if (meters.size() == 1) return meters[0];
  // A meter that has just these, empty ones included, is meant when others only fit too.
  for (const cStoredMeter& meter : meters)
    if (meter.config.meterID == key.meterId && meter.config.medium == key.medium && meter.config.mfct == key.mfct)
      return meter;
  at.Fault(DescribeKey(key) + (meters.empty() ? " is not there" : " may be any of " + DescribeAll(meters)));
  return std::nullopt;
}

void cConfigStore::Fill(cStoredMeter& meter, eCollectors collectors) {
  if (collectors == eCollectors::With) meter.config.collectors = m_collectors.List(meter.id);
}

std::vector<cMeterConfig> cConfigStore::Finish(std::vector<cStoredMeter> meters, eCollectors collectors) {
  std::vector<cMeterConfig> configs;
  for (cStoredMeter& meter : meters) {
    Fill(meter, collectors);
    configs.push_back(std::move(meter.config));
  }
  return configs;
}

// ---- push targets

std::int64_t cConfigStore::SetPushTarget(const cPushTarget& target, const cPlace& at) {
  const std::int64_t same = m_targets.Find(target.name);
  if (same == 0 || static_cast<std::uint64_t>(same) == target.idx) return m_targets.Set(target);
  at.Fault(Describe(target) + ": number " + std::to_string(same) + " has this name");
  return 0;
}

void cConfigStore::DeletePushTarget(std::uint64_t idx, const std::string& name, const cPlace& at, cRemoved& removed) {
  const std::int64_t found = Find(m_targets, "push target", idx, name, at);
  if (found == 0) return;
  const std::string text = "push target " + QuotedName(m_targets.NameOf(found));
  if (const auto users = m_collectors.UsersOf(found); !users.empty())
    return at.Fault(text + " is needed by " + Join(users));
  m_targets.Delete(found);
  removed.push_back(text);
}

// ---- templates

void cConfigStore::DeleteTemplate(std::uint64_t idx, const std::string& name, const cPlace& at, cRemoved& removed) {
  const std::int64_t found = Find(m_templates, "template", idx, name, at);
  if (found == 0) return;
  removed.push_back(DescribeTemplate(m_templates.NameOf(found)));
  m_templates.Delete(found);
}

void cConfigStore::CheckLimits(const cPlace& at) {
  const struct {
    std::int64_t count;
    unsigned int limit;
    const char* what;
  } kinds[] = {
      {m_interfaces.Count(), kMaxInterfaces, "interfaces"},
      {m_meters.Count(), kMaxMeters, "meters"},
      {m_collectors.CountMost(), kMaxCollectors, "collectors of one meter"},
      {m_targets.Count(), kMaxPushTargets, "push targets"},
      {m_templates.Count(), kMaxTemplates, "templates"},
  };
  for (const auto& [count, limit, what] : kinds)
    if (count > limit) at.Fault("at most " + std::to_string(limit) + " " + what + " are kept");
}

}  // namespace tav::data
