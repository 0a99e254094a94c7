// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/config/meter_based_page.h>

#include <algorithm>
#include <vector>

#include <gateway/web/pages/config/config_answers.h>
#include <gateway/web/pages/core/gateway_clients.h>

namespace tav::pages {

// All are asked for: the service looks by addresses first, and one meter's address may be another one's identifier.
void cMeterBasedPage::FindMeter(const cIdentity& identity, eFit fit, Found found) {
  Await(db_ctrl::kProtocol, db_ctrl::eGetMeter, Gateway().data.GetMeter(Id(), ""),
        [identity, fit, found = std::move(found)](const vorn::cRecord& answer) {
          std::vector<cMeterConfig> meters = ThingsOf<cMeterConfig>(answer, db_ctrl::kMeterConfigRecord);
          std::erase_if(meters, [&](const cMeterConfig& meter) { return meter.meterID != identity.meterId; });
          const auto exact = std::find_if(meters.begin(), meters.end(), [&](const cMeterConfig& meter) {
            return meter.medium == identity.medium && meter.mfct == identity.mfct;
          });
          if (exact != meters.end()) return found(&*exact);
          std::erase_if(meters, [&](const cMeterConfig& meter) {
            return (!identity.medium.empty() && meter.medium != identity.medium) ||
                   (!identity.mfct.empty() && meter.mfct != identity.mfct);
          });
          found(fit == eFit::Meant && meters.size() == 1 ? &meters.front() : nullptr);
        });
}

}  // namespace tav::pages
