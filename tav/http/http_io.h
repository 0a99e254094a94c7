// SPDX-License-Identifier: Apache-2.0
// cHttpIO: the channel of a page process to the web front end. It registers the process once; requests and all else
// come to the owning service, which makes a cHttpRequest of them and runs a page.
#pragma once

#include <memory>
#include <string>

#include <tav/export.h>
#include <tav/framework/msg.h>
#include <tav/framework/scm_service_io.h>

namespace tav {

class TAV_API cHttpIO : public vorn::cScmServiceIO {
 public:
  // registration: sent once, with the first connection only, and copied here; null: none is sent. A process that wants
  // to be served again when the front end has been restarted sends its registration itself, from its OnConnect.
  cHttpIO(vorn::cScmService* service, const std::string& name, vorn::cMsg* registration);
  ~cHttpIO() override;

  void OnConnect() override;
  void OnClose() override;
  // True for the acknowledgement of the registration only.
  bool DispatchMessage(const vorn::cMsg& msg) override;

  // Whether the registration still waits for the first connection.
  bool HoldsRegistration() const { return m_registration != nullptr; }

 private:
  std::unique_ptr<vorn::cMsg> m_registration;
};

}  // namespace tav
