// SPDX-License-Identifier: Apache-2.0
// cWanDisplay: shows the link to the wide area network on its light and to the time service, as a client of both. What
// one of them misses while it is away it is told when it is back.
#pragma once

#include <optional>

#include <gateway/host/service_host.h>
#include <tav/service/tcm_io.h>
#include <tav/service/ui_ctrl_io.h>

namespace tav::gateway {

class cWanDisplay {
 public:
  enum class eWan { Off, Try, Up, Error };

  // Says nothing until something is shown: the link may be somebody else's.
  explicit cWanDisplay(cServiceHost* host);

  void Show(eWan wan);

 private:
  class cLights final : public cUiCtrlIO {
   public:
    cLights(cServiceHost* host, const cWanDisplay* display) : cUiCtrlIO(host), m_display(display) {}
    void OnConnect() override { Tell(); }
    void Tell();

   private:
    const cWanDisplay* m_display;
  };

  class cTime final : public cTcmIO {
   public:
    cTime(cServiceHost* host, const cWanDisplay* display) : cTcmIO(host), m_display(display) {}
    void OnConnect() override { Tell(); }
    void Tell();

   private:
    const cWanDisplay* m_display;
  };

  std::optional<eWan> m_wan;
  cLights m_lights;
  cTime m_time;
};

}  // namespace tav::gateway
