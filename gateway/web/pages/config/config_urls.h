// SPDX-License-Identifier: Apache-2.0
// Where each configured thing is shown.
#pragma once

#include <string>

#include <gateway/web/pages/core/html.h>
#include <tav/config/meter_config.h>

namespace tav::pages {

inline constexpr const char* kInterfacesPath = "/interfaces";
inline constexpr const char* kInterfacePath = "/interface";
inline constexpr const char* kMeterConfigsPath = "/meter-configs";
inline constexpr const char* kMeterConfigPath = "/meter-config";
inline constexpr const char* kCollectorPath = "/collector";
inline constexpr const char* kPushTargetsPath = "/push-targets";
inline constexpr const char* kPushTargetPath = "/push-target";
inline constexpr const char* kTemplatesPath = "/templates";
inline constexpr const char* kTemplatePath = "/template";

inline std::string InterfaceUrl(const std::string& name) { return MakeUrl(kInterfacePath, {{"name", name}}); }
inline std::string MeterConfigUrl(const cMeterConfig& meter) {
  return MakeUrl(kMeterConfigPath, {{"id", meter.meterID}, {"medium", meter.medium}, {"mfct", meter.mfct}});
}
// Without an address: of a new one.
inline std::string CollectorUrl(const cMeterConfig& meter, const std::string& addr) {
  return MakeUrl(kCollectorPath,
                 {{"meter", meter.meterID}, {"medium", meter.medium}, {"mfct", meter.mfct}, {"addr", addr}});
}
inline std::string PushTargetUrl(unsigned long long idx) {
  return MakeUrl(kPushTargetPath, {{"idx", std::to_string(idx)}});
}
inline std::string TemplateUrl(const std::string& name) { return MakeUrl(kTemplatePath, {{"name", name}}); }

}  // namespace tav::pages
