// SPDX-License-Identifier: Apache-2.0
// cConfigStore: the configuration, and the rules between its parts: a meter has its interface, a collector's push
// target is there, nothing is deleted that others need.
//
// A change tells its faults to the place it is given; when there is one, the caller takes the whole transaction back.
// Operations throw SQLite::Exception. docs/configuration.md tells the rules.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <gateway/service/data/config/config_form.h>
#include <gateway/service/data/config/config_interface_table.h>
#include <gateway/service/data/config/config_meter_table.h>
#include <gateway/service/data/config/config_push_target_table.h>
#include <gateway/service/data/config/config_template_table.h>

namespace tav::data {

// A text for each thing that a change has deleted.
using cRemoved = std::vector<std::string>;

class cConfigStore {
 public:
  explicit cConfigStore(SQLite::Database& database);

  // ---- interfaces
  void SetInterface(const cInterfaceRecord& interface) { m_interfaces.Set(interface); }
  void DeleteInterface(const std::string& name, const cPlace& at, cRemoved& removed);
  // That one, or all without a name; without meters.
  std::vector<cInterfaceRecord> GetInterfaces(const std::string& name) { return m_interfaces.List(name); }

  // ---- meters
  // Its collectors are made or changed, those to be removed are, others of it stay.
  void SetMeter(const cMeterConfig& meter, const cPlace& at);
  void DeleteMeter(const cMeterKey& key, const cPlace& at, cRemoved& removed);
  // Those of an address, without any the one of that identifier; all without an address.
  std::vector<cMeterConfig> GetMeters(const std::string& addr);
  std::vector<cMeterConfig> GetMetersOf(const std::string& interfaceName, eCollectors collectors);
  // The only one that the key fits; absent, and a fault, when there is none or another one.
  std::optional<cStoredMeter> FindMeter(const cMeterKey& key, const cPlace& at);

  // ---- push targets
  // Its number. A target without one is a new one.
  std::int64_t SetPushTarget(const cPushTarget& target, const cPlace& at);
  // By number (0: any), name (empty: any), or both, which then must be one target's.
  void DeletePushTarget(std::uint64_t idx, const std::string& name, const cPlace& at, cRemoved& removed);
  std::vector<cPushTarget> GetPushTargets(const std::string& name) { return m_targets.List(name); }

  // ---- templates
  std::int64_t SetTemplate(const std::string& name, const vorn::cRecord& form, std::int64_t idx = 0) {
    return m_templates.Set(name, form, idx);
  }
  // Empty when no template has that number.
  std::string NameOfTemplate(std::int64_t idx) { return m_templates.NameOf(idx); }
  void DeleteTemplate(std::uint64_t idx, const std::string& name, const cPlace& at, cRemoved& removed);
  std::vector<cStoredTemplate> GetTemplates(const std::string& name) { return m_templates.List(name); }

  // ---- what a whole configuration needs besides
  cMeterTable& GetMeterTable() { return m_meters; }
  cCollectorTable& GetCollectorTable() { return m_collectors; }
  std::int64_t FindPushTarget(const std::string& name) { return m_targets.Find(name); }
  // At the end of every change.
  void CheckLimits(const cPlace& at);

 private:
  void Fill(cStoredMeter& meter, eCollectors collectors);
  std::vector<cMeterConfig> Finish(std::vector<cStoredMeter> meters, eCollectors collectors);
  void SetCollector(std::int64_t meter, cCollectorConfig collector, const cPlace& at);

  cInterfaceTable m_interfaces;
  cMeterTable m_meters;
  cCollectorTable m_collectors;
  cPushTargetTable m_targets;
  cTemplateTable m_templates;
};

}  // namespace tav::data
