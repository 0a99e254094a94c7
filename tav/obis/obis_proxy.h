// SPDX-License-Identifier: Apache-2.0
// cObisProxy: a process's copy of the gateway's OBIS map, channel "obis". The service sends the whole map when the
// channel has come up, and each change after that; lookups are made in the copy, without a round trip.
//
// While the service is away the copy stays as it was last known. All calls belong to the thread of the owning service.
#pragma once

#include <string>

#include <tav/export.h>
#include <tav/framework/msg.h>
#include <tav/framework/scm_service_io.h>
#include <tav/obis/obis_map.h>

namespace tav {

class TAV_API cObisProxy : public vorn::cScmServiceIO {
 public:
  // Keeps the connection alive by pings.
  explicit cObisProxy(vorn::cScmService* service);
  ~cObisProxy() override;

  void OnConnect() override;
  void OnClose() override;
  // False for answers to SetEntry and RemoveEntry: the owning service matches them by their identifier.
  bool DispatchMessage(const vorn::cMsg& msg) override;

  // Ask the service to store or to delete a rule. True: the channel took the request. The answer comes to the owning
  // service under id, which is created when it is not valid; the copy changes with the service's notification.
  bool SetEntry(vorn::cUuid& id, cObisMapEntry& entry);
  bool SetEntry(cObisMapEntry& entry);
  bool RemoveEntry(vorn::cUuid& id, cObisMapEntry& entry);
  bool RemoveEntry(cObisMapEntry& entry);
  // Empties the copy.
  void Clear();

  cObisMap map;         // the rules as last known
  bool loaded = false;  // the whole map has come since the channel is up

 private:
  bool SendEntry(unsigned int type, vorn::cUuid& id, const cObisMapEntry& entry);
  bool TakeChange(const vorn::cRecord& change);
};

}  // namespace tav
