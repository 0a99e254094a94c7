// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/config/config_apply.h>

#include <algorithm>
#include <cstdint>

#include <tav/service/db_ctrl_protocol.h>

namespace tav::data {

namespace {

using vorn::cRecord;

// Why a thing that the message does not hold has to stay all the same.
constexpr const char* kReplaced = "to be deleted";

constexpr std::uint64_t kMaxTemplateNumber = INT64_MAX;  // what the database takes

bool AreSame(const cMeterConfig& a, const cMeterConfig& b) {
  return a.meterID == b.meterID && a.medium == b.medium && a.mfct == b.mfct;
}

}  // namespace

// ---- reading

bool cConfigApply::Read(const cRecord& request) {
  m_replace = request.GetBoolPar(db_ctrl::kReplace);
  ReadAll(request, db_ctrl::kInterfaceRecord, m_interfaces, ReadInterface);
  ReadAll(request, db_ctrl::kMeterConfigRecord, m_meters, ReadMeter);
  ReadAll(request, db_ctrl::kPushTargetRecord, m_targets, ReadPushTarget);
  ReadAll(request, db_ctrl::kMeterTemplateRecord, m_templates,
          [](const cRecord& record, const cPlace& at, cTemplate& to) {
            return ReadTemplate(record, at, to.name, to.form);
          });
  if (m_good) ReadTemplateNumbers(request);
  RefuseTwins(m_interfaces, [](const cInterfaceRecord& interface) { return Describe(interface); });
  RefuseTwins(m_meters, [](const cMeterConfig& meter) { return Describe(meter); });
  RefuseTwins(m_targets, [](const cPushTarget& target) { return Describe(target); });
  RefuseTwinNumbers();
  RefuseTwins(m_templates, [](const cTemplate& preset) { return DescribeTemplate(preset.name); });
  return m_good;
}

template <typename Thing, typename ReadOne>
void cConfigApply::ReadAll(const cRecord& request, std::string_view name, std::vector<cPlaced<Thing>>& things,
                           const ReadOne& readOne) {
  unsigned int number = 0;
  cRecord record;
  for (auto par = request.GetPar(name); par.GetRecord(record); par = par.NextSame()) {
    cPlaced<Thing> placed{m_at.In(std::string(name) + " " + std::to_string(++number)), {}};
    if (readOne(record, placed.at, placed.thing))
      things.push_back(std::move(placed));
    else
      m_good = false;
  }
}

template <typename Thing, typename NameOf>
void cConfigApply::RefuseTwins(const std::vector<cPlaced<Thing>>& things, const NameOf& nameOf) {
  std::set<std::string> names;
  for (const auto& [at, thing] : things) {
    if (names.insert(nameOf(thing)).second) continue;
    at.Fault(nameOf(thing) + " is there twice");
    m_good = false;
  }
}

void cConfigApply::RefuseTwinNumbers() {
  std::set<unsigned long long> numbers;
  for (const auto& [at, target] : m_targets) {
    if (target.idx == 0 || numbers.insert(target.idx).second) continue;
    at.Fault(Describe(target) + ": number " + std::to_string(target.idx) + " is there twice");
    m_good = false;
  }
}

// The numbers stand beside the templates, in their order, or there is none at all.
void cConfigApply::ReadTemplateNumbers(const cRecord& request) {
  std::vector<std::uint64_t> numbers;
  for (auto par = request.GetPar(db_ctrl::kIdx); par.IsValid(); par = par.NextSame())
    numbers.push_back(par.GetUInt64());
  if (numbers.empty()) return;
  m_good = numbers.size() == m_templates.size();
  if (!m_good) {
    m_at.In("idx").Fault(std::to_string(numbers.size()) + " numbers for " + std::to_string(m_templates.size()) +
                         " templates");
    return;
  }
  std::set<std::uint64_t> seen;
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    auto& [at, preset] = m_templates[i];
    preset.idx = numbers[i];
    const bool tooLarge = preset.idx > kMaxTemplateNumber;
    if (!tooLarge && (preset.idx == 0 || seen.insert(preset.idx).second)) continue;
    at.Fault(DescribeTemplate(preset.name) + ": number " + std::to_string(preset.idx) +
             (tooLarge ? " is over " + std::to_string(kMaxTemplateNumber) : " is there twice"));
    m_good = false;
  }
}

// ---- setting

void cConfigApply::Set() {
  NumberTargets();
  if (m_replace) {
    DeleteOtherMeters();
    DeleteOtherTargets();
    DeleteOtherTemplates();
  }
  for (const auto& [at, interface] : m_interfaces) m_config.SetInterface(interface);
  for (const auto& [at, target] : m_targets) m_config.SetPushTarget(target, at);
  for (const auto& [at, meter] : m_meters) m_config.SetMeter(meter, at);
  for (const auto& [at, preset] : m_templates) SetTemplate(at, preset);
  if (m_replace) DeleteOtherInterfaces();
}

void cConfigApply::SetTemplate(const cPlace& at, const cTemplate& preset) {
  const auto idx = static_cast<std::int64_t>(preset.idx);
  const std::string holder = idx != 0 ? m_config.NameOfTemplate(idx) : std::string();
  if (holder.empty() || holder == preset.name)
    m_config.SetTemplate(preset.name, preset.form, idx);
  else
    at.Fault(DescribeTemplate(preset.name) + ": number " + std::to_string(idx) + " is that of " +
             DescribeTemplate(holder));
}

// A target without a number is the one of its name when there is one, so that the same message may come again.
void cConfigApply::NumberTargets() {
  for (auto& [at, target] : m_targets)
    if (target.idx == 0) target.idx = static_cast<unsigned long long>(m_config.FindPushTarget(target.name));
}

void cConfigApply::DeleteOtherMeters() {
  for (const cStoredMeter& stored : m_config.GetMeterTable().ListAll()) {
    const auto held = std::find_if(m_meters.begin(), m_meters.end(), [&](const cPlaced<cMeterConfig>& placed) {
      return AreSame(placed.thing, stored.config);
    });
    if (held == m_meters.end())
      m_config.GetMeterTable().Delete(stored.id);
    else
      DeleteOtherCollectors(stored, held->thing);
  }
  // Those that are held come with their targets again; till then nothing keeps a target from being deleted.
  m_config.GetCollectorTable().ForgetTargets();
}

void cConfigApply::DeleteOtherCollectors(const cStoredMeter& meter, const cMeterConfig& held) {
  for (const cCollectorConfig& stored : m_config.GetCollectorTable().List(meter.id))
    if (std::none_of(held.collectors.begin(), held.collectors.end(),
                     [&](const cCollectorConfig& collector) { return collector.addr == stored.addr; }))
      m_config.GetCollectorTable().Delete(meter.id, stored.addr);
}

void cConfigApply::DeleteOtherTargets() {
  for (const cPushTarget& stored : m_config.GetPushTargets(""))
    if (std::none_of(m_targets.begin(), m_targets.end(),
                     [&](const cPlaced<cPushTarget>& placed) { return placed.thing.idx == stored.idx; }))
      m_config.DeletePushTarget(stored.idx, stored.name, m_at.In(kReplaced), m_removed);
}

void cConfigApply::DeleteOtherInterfaces() {
  for (const cInterfaceRecord& stored : m_config.GetInterfaces(""))
    if (std::none_of(m_interfaces.begin(), m_interfaces.end(),
                     [&](const cPlaced<cInterfaceRecord>& placed) { return placed.thing.name == stored.name; }))
      m_config.DeleteInterface(stored.name, m_at.In(kReplaced), m_removed);
}

void cConfigApply::DeleteOtherTemplates() {
  for (const cStoredTemplate& stored : m_config.GetTemplates(""))
    if (std::none_of(m_templates.begin(), m_templates.end(),
                     [&](const cPlaced<cTemplate>& placed) { return placed.thing.name == stored.name; }))
      m_config.DeleteTemplate(static_cast<std::uint64_t>(stored.idx), stored.name, m_at.In(kReplaced), m_removed);
}

}  // namespace tav::data
