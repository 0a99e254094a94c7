// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/reading_light.h>

namespace tav {

void cReadingLight::Flash(unsigned int light) {
  if (light < 1 || light > 2) return;
  const std::int64_t now = m_ui.GetService()->GetClock().Now();
  std::int64_t& nextFlash = m_nextFlash[light - 1];
  if (now < nextFlash) return;
  nextFlash = now + kPauseMs;
  m_ui.MeterDataRecv(light == 1 ? cUiCtrlIO::eMeter1 : cUiCtrlIO::eMeter2);
}

}  // namespace tav
