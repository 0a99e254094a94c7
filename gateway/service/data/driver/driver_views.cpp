// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/driver/driver_views.h>

#include <algorithm>

#include <tav/service/db_ctrl_protocol.h>

namespace tav::data {

namespace {

constexpr const char* kProtocols[] = {"SML", "1107", "DLMS", "MODBUS", "MODBUS-SLAVE", "MBUS"};

// A driver may hold an interface open that has no meter of its own yet, or no longer.
bool MayServe(const std::string& driver, const std::string& interfaceName) {
  return std::any_of(std::begin(kProtocols), std::end(kProtocols), [&](const char* protocol) {
    cMeterConfig meter;
    meter.SetInterfaceOptions(interfaceName, protocol, "");
    return meter.interfaceDriver == driver;
  });
}

vorn::cRecord ViewOf(const cInterfaceRecord& interface, const std::vector<cMeterConfig>& meters,
                     const std::string& driver) {
  vorn::cRecord view = interface.ToRecord();
  for (const cMeterConfig& meter : meters)
    if (meter.interfaceDriver == driver)
      view.AppendRecordPar(db_ctrl::kMeterConfigRecord, MeterForm(meter, eCollectors::Without));
  return view;
}

}  // namespace

cDriverViews ViewsOf(cConfigStore& config, const std::set<std::string>& drivers) {
  cDriverViews views;
  if (drivers.empty()) return views;
  for (const cInterfaceRecord& interface : config.GetInterfaces("")) {
    const std::vector<cMeterConfig> meters = config.GetMetersOf(interface.name, eCollectors::Without);
    for (const std::string& driver : drivers)
      if (MayServe(driver, interface.name)) views[{driver, interface.name}] = ViewOf(interface, meters, driver);
  }
  return views;
}

std::vector<cDriverNotice> Compare(const cDriverViews& before, const cDriverViews& after) {
  std::vector<cDriverNotice> notices;
  for (const auto& [key, view] : before)
    if (after.find(key) == after.end())
      notices.push_back({key.first, NoticeRecord(key.second, "interface-deleted", {})});
  for (const auto& [key, view] : after) {
    const auto known = before.find(key);
    if (known != before.end() && known->second == view) continue;
    vorn::cRecord content;
    content.AppendRecordPar(db_ctrl::kInterfaceRecord, view);
    notices.push_back({key.first, NoticeRecord(key.second, "interface-changed", content)});
  }
  return notices;
}

vorn::cRecord NoticeRecord(const std::string& interfaceName, const std::string& command, const vorn::cRecord& content) {
  vorn::cRecord record;
  record.AppendTextPar(db_ctrl::kInterfaceName, interfaceName);
  record.AppendTextPar(db_ctrl::kCommand, command);
  if (!content.IsEmpty()) record.AppendRecordPar(db_ctrl::kContent, content);
  return record;
}

}  // namespace tav::data
