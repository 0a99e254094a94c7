// SPDX-License-Identifier: Apache-2.0
// cGsmIO: the mobile modem's data connection, channel "gsm". Operations return what the channel's Send gives; what the
// service answers is swallowed.
#pragma once

#include <string>

#include <tav/export.h>
#include <tav/framework/msg.h>
#include <tav/framework/scm_service_io.h>

namespace tav {

class TAV_API cGsmIO : public vorn::cScmServiceIO {
 public:
  explicit cGsmIO(vorn::cScmService* service);
  ~cGsmIO() override;

  void OnConnect() override {}
  void OnClose() override {}
  bool DispatchMessage(const vorn::cMsg& msg) override;

  // All four are sent, empty ones too. Nothing of them is kept here.
  int Start(const std::string& pin, const std::string& apn, const std::string& user, const std::string& password);
  int Stop();
};

}  // namespace tav
