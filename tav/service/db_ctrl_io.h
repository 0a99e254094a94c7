// SPDX-License-Identifier: Apache-2.0
// cDbCtrlIO: the client side of the database control service, channel "data". A process that produces meter data holds
// one, registers under its driver name when the channel comes up, and hands over readings and events.
//
// Readings and events wait in one bounded queue while the channel is down or busy: one message goes out per call, per
// acknowledgement and per (re)connection, in order; on overflow the oldest is dropped. Nothing waits for a reply. All
// calls belong to the thread of the owning service.
#pragma once

#include <deque>
#include <list>
#include <string>

#include <tav/export.h>
#include <tav/framework/map.h>
#include <tav/framework/msg.h>
#include <tav/framework/scm_service_io.h>
#include <tav/record/meter_record.h>

namespace tav {

class TAV_API cDbCtrlIO : public vorn::cScmServiceIO {
 public:
  static constexpr unsigned int kQueueLimit = 50;

  // An empty driver name: a client that is no driver.
  cDbCtrlIO(vorn::cScmService* service, const std::string& driver);
  // What is queued and unsent is discarded.
  ~cDbCtrlIO() override;

  void OnConnect() override;
  void OnClose() override;
  // False for answers to configuration and query requests: the owning service matches them by their identifier.
  bool DispatchMessage(const vorn::cMsg& msg) override;

  // ---- storing; true: sent, or queued with room left
  bool StoreMeterRec(const cMeterRecord& rec);
  // All in one message.
  bool StoreMeterRec(const std::list<cMeterRecord>& recs);
  // Queues a ready message and sends the front of the queue.
  bool StoreMeterRecQueued(const vorn::cMsg& msg);
  // Shares the queue. Unlike a reading it is sent whether connected or not, and never asks for a health check.
  bool StoreEvent(const vorn::cRecord& rec);

  // ---- the key/value store: the driver's, or the named one of a client that is no driver
  // The named store to attach to, from the next connection on.
  void SetStoreName(const std::string& name) { m_storeName = name; }
  // Replaces the local copy by the "store-value" records of a message.
  void SetStore(const vorn::cMsg& msg);
  // Sets the local copy, then tells the service, once. Without driver and store name nothing is done, and that is true.
  bool SetStoreValue(const std::string& key, const std::string& value);
  // Empty when there is no such key.
  std::string GetStoreValue(const std::string& key) const;
  bool TryGetStoreValue(const std::string& key, std::string& value) const;

  std::deque<vorn::cMsg> m_queue;  // store messages not yet handed to the channel, oldest first
  unsigned int m_queueLimit = kQueueLimit;
  std::string m_driver;
  vorn::cMap<std::string, std::string> m_store;
  std::string m_storeName;

 private:
  // What became of the front of the queue.
  enum class eFront { None, Sent, Refused };

  void RegisterDriver();
  void AttachStore();
  eFront SendFront();
  void Acknowledged();
  // False when the queue was full and its oldest message had to go.
  bool Enqueue(const vorn::cMsg& msg, const char* operation);
};

}  // namespace tav
