// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/sml/dlms_units.h>

#include <tav/record/meter_tav.h>

namespace tav::sml {

void AddDlmsUnits() {
  cMeterTav::ObisUnitInit();
  for (const cDlmsUnit& unit : kDlmsUnits)
    if (!_obisUnits.Contains(unit.code)) _obisUnits.Set(unit.code, unit.text);
}

}  // namespace tav::sml
