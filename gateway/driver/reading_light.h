// SPDX-License-Identifier: Apache-2.0
// cReadingLight: flashes one of the gateway's lights for meter data whenever a reading has come; of readings that come
// faster than a light can flash, some.
#pragma once

#include <cstdint>

#include <tav/service/ui_ctrl_io.h>

namespace tav {

class cReadingLight {
 public:
  // Between two flashes: a flash takes half of it.
  static constexpr std::int64_t kPauseMs = 200;

  explicit cReadingLight(vorn::cScmService* service) : m_ui(service) {}

  // light: 1 or 2; nothing is sent for any other.
  void Flash(unsigned int light);

 private:
  cUiCtrlIO m_ui;
  std::int64_t m_nextFlash[2] = {};
};

}  // namespace tav
