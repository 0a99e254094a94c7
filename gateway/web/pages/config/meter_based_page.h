// SPDX-License-Identifier: Apache-2.0
// cMeterBasedPage: a page about something in the configuration of one meter.
#pragma once

#include <functional>
#include <string>

#include <gateway/web/pages/config/edit_page.h>
#include <tav/config/meter_config.h>

namespace tav::pages {

class cMeterBasedPage : public cEditPage {
 public:
  using cEditPage::cEditPage;

 protected:
  // What tells a meter from others.
  struct cIdentity {
    std::string meterId;
    std::string medium;
    std::string mfct;
  };
  // Just this one, or, where nothing else fits, the only one that differs from it in nothing but what it leaves empty.
  enum class eFit { Exact, Meant };
  using Found = std::function<void(const cMeterConfig* meter)>;  // null when there is none

  void FindMeter(const cIdentity& identity, eFit fit, Found found);
};

}  // namespace tav::pages
