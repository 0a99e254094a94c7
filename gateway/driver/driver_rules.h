// SPDX-License-Identifier: Apache-2.0
// cDriverRules: the OBIS rules that a driver filters its readings by: the gateway's as they are now, those of a file,
// or none. A rule that is changed at the gateway holds from the next reading on; while the service is away the last
// known ones do.
#pragma once

#include <functional>
#include <optional>

#include <tav/obis/obis_proxy.h>
#include <tav/record/meter_record.h>

namespace tav {

class cDriverRules {
 public:
  // No rules.
  cDriverRules() = default;
  // Of a file.
  explicit cDriverRules(const cObisMap& fixed) : m_fixed(fixed) {}
  // The gateway's; onLoaded is called when they have come, after each connection anew.
  cDriverRules(vorn::cScmService* service, std::function<void()> onLoaded);

  // Null when nothing is filtered: no rules are wanted, none have come yet, or there is not a single one. A gateway
  // without rules keeps everything that its meters send.
  const cObisMap* Get() const;
  // Whether there is nothing to wait for: the rules are there, or nobody has them.
  bool IsSettled() const;

 private:
  class cLive : public cObisProxy {
   public:
    cLive(vorn::cScmService* service, std::function<void()> onLoaded)
        : cObisProxy(service), m_onLoaded(std::move(onLoaded)) {}
    bool DispatchMessage(const vorn::cMsg& msg) override;

   private:
    std::function<void()> m_onLoaded;
  };

  std::optional<cObisMap> m_fixed;
  std::optional<cLive> m_live;
};

// The values of a reading that a rule names, under the rules' identifiers unless the names are to be kept. They are
// kept as well where two values of the reading would get one name: channels that a meter tells apart stay apart.
cMeterRecord FilterReading(cMeterRecord& reading, const cObisMap& rules, bool keepNames);

}  // namespace tav
