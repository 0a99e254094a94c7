// SPDX-License-Identifier: Apache-2.0
// cGatewayConfig: the configuration of a gateway over its channel: all of it, single things of it, and changes.
// Everything throws a cFailure when the service cannot be reached or refuses.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include <gateway/form/config_document.h>
#include <tavctl/service_link.h>

namespace tav::ctl {

class cGatewayConfig {
 public:
  // Bytes of a whole configuration: what one message takes.
  static constexpr std::size_t kMaxConfig = vorn::kMaxFrameSize - 64;

  explicit cGatewayConfig(cContext& context);

  // ---- what there is; an empty name: all
  std::vector<cInterfaceRecord> GetInterfaces(const std::string& name = {});
  // By identifier, or when nobody has that, by address.
  std::vector<cMeterConfig> GetMeters(const std::string& which = {});
  std::vector<cPushTarget> GetPushTargets(const std::string& name = {});
  std::vector<cMeterTemplate> GetTemplates(const std::string& name = {});
  // onStep is called after each of its kGetSteps parts.
  static constexpr std::size_t kGetSteps = 4;
  form::cConfigDocument GetAll(const std::function<void()>& onStep = [] {});

  // ---- changes; numbers are those that the service gave
  void Set(const cInterfaceRecord& interface);
  void Set(const cMeterConfig& meter);
  unsigned long long Set(const cPushTarget& pushTarget);
  unsigned long long Set(const cMeterTemplate& meterTemplate);
  // The texts say what was deleted.
  std::vector<std::string> DeleteInterface(const std::string& name);
  std::vector<std::string> DeleteMeter(const cMeterConfig& meter);
  void DeletePushTarget(unsigned long long idx, const std::string& name);
  void DeleteTemplate(unsigned long long idx, const std::string& name);
  // All of it or nothing. replace: what the document does not have is deleted.
  void Apply(const form::cConfigDocument& config, bool replace);

 private:
  cServiceLink m_link;
};

}  // namespace tav::ctl
