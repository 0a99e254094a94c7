// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/device/wan_display.h>

namespace tav::gateway {

cWanDisplay::cWanDisplay(cServiceHost* host) : m_lights(host, this), m_time(host, this) {}

void cWanDisplay::Show(eWan wan) {
  m_wan = wan;
  m_lights.Tell();
  m_time.Tell();
}

void cWanDisplay::cLights::Tell() {
  if (!m_display->m_wan) return;
  switch (*m_display->m_wan) {
    case eWan::Off:
      WAN_Off();
      break;
    case eWan::Try:
      WAN_Try();
      break;
    case eWan::Up:
      WAN_On();
      break;
    case eWan::Error:
      WAN_Error();
      break;
  }
}

void cWanDisplay::cTime::Tell() {
  // A link that is being made was told to be down, or never was up.
  if (!m_display->m_wan || *m_display->m_wan == eWan::Try) return;
  if (*m_display->m_wan == eWan::Up)
    WanUp();
  else
    WanDown();
}

}  // namespace tav::gateway
