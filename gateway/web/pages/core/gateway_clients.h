// SPDX-License-Identifier: Apache-2.0
// cGatewayClients: the clients of all services that the pages ask. Each connects and reconnects by itself.
#pragma once

#include <tav/obis/obis_proxy.h>
#include <tav/service/db_ctrl_io.h>
#include <tav/service/gsm_io.h>
#include <tav/service/status_proxy.h>
#include <tav/service/tcm_io.h>
#include <tav/service/ui_ctrl_io.h>

namespace tav::pages {

// A client of a device service whose answers come to the pages: what the plain client swallows, a page waits for.
template <typename Client>
class cAsking final : public Client {
 public:
  using Client::Client;
  bool DispatchMessage(const vorn::cMsg&) override { return false; }
};

struct cGatewayClients {
  explicit cGatewayClients(vorn::cScmService* service)
      : data(service, {}), status(service), obis(service), ui(service), time(service), gsm(service) {}

  cDbCtrlIO data;
  cStatusProxy status;
  cObisProxy obis;
  cAsking<cUiCtrlIO> ui;
  cAsking<cTcmIO> time;
  cAsking<cGsmIO> gsm;
};

}  // namespace tav::pages
