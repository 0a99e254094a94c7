// SPDX-License-Identifier: Apache-2.0
// cConfigDocument: the whole configuration of a gateway, as one TOML or JSON document and back.
//
//   [[interfaces]]      [[meters]], each with its [[meters.collectors]]
//   [[push-targets]]    [[templates]], each with its [templates.meter-config] and [templates.push-config]
#pragma once

#include <string>
#include <vector>

#include <gateway/form/config_json.h>

namespace tav::form {

enum class eDocument { Toml, Json };

struct cConfigDocument {
  std::vector<cInterfaceRecord> interfaces;
  std::vector<cMeterConfig> meters;
  std::vector<cPushTarget> pushTargets;
  std::vector<cMeterTemplate> templates;

  // Secrets that are left out are not in the text at all.
  std::string ToText(eDocument form, eSecrets secrets) const;
  // Reads either form. Secrets that the text leaves out are those of the present configuration's thing of the same
  // name. Nothing but faults when there is one.
  static cConfigDocument FromText(const std::string& text, const cConfigDocument& present, Faults& faults);
};

}  // namespace tav::form
