// SPDX-License-Identifier: Apache-2.0
// cRuleService: the mapping rules that the gateway's OBIS service keeps.
#pragma once

#include <tav/obis/obis_map.h>
#include <tavctl/service_link.h>

namespace tav::ctl {

class cRuleService {
 public:
  // Throws a cFailure when the service cannot be reached, as all of this do when it gives no answer or refuses.
  explicit cRuleService(cContext& context);

  cObisMap GetMap();
  // In place of the one with its ID.
  void Set(const cObisMapEntry& rule);
  void Remove(const cObisMapEntry& rule);
  // All of them or none. replace: the service's other rules go. How many were set or removed.
  unsigned int Apply(const cObisMap& map, bool replace);

 private:
  cServiceLink m_link;
};

}  // namespace tav::ctl
