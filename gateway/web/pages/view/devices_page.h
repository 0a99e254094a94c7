// SPDX-License-Identifier: Apache-2.0
// cDevicesPage: the gateway's lights, relay, clock and modem: how they are, and forms to switch them. A service that is
// away is shown so; the others are there all the same.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gateway/web/pages/core/web_page.h>

namespace tav::pages {

class cDevicesPage final : public cWebPage {
 public:
  using cWebPage::cWebPage;

 private:
  // How one service is.
  struct cState {
    std::vector<std::pair<std::string, std::string>> rows;
    std::string fault;  // why there are no rows
  };
  // What is on the page, in this order.
  enum eService : std::size_t { eUi, eTime, eGsm, eServices };

  void Start() override;
  void OnUnanswered(unsigned int status, const std::string& text) override;

  // ---- changes
  void Take();
  void SwitchLed();
  void SwitchRelay();
  void SetClock();
  void StartModem();
  // Sends a request of the service; what it says is on the page that follows.
  void Do(eService service, unsigned int request, const vorn::cRecord& record);
  // The page again, with what was typed and why it was not done.
  void Refuse(unsigned int status, const std::string& fault);

  // ---- what is shown
  void ReadStates(std::size_t next);
  void Show();
  cHtml Facts(eService service) const;
  cHtml Lights() const;
  cHtml Clock() const;
  cHtml Modem() const;
  std::string ValueOf(eService service, std::string_view name) const;
  vorn::cScmServiceIO& ClientOf(eService service);

  cState m_states[eServices];
  eService m_asked = eUi;
  bool m_isReading = false;  // the states, and not at a change
  unsigned int m_status = 200;
  std::string m_fault;
};

}  // namespace tav::pages
