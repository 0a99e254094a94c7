// SPDX-License-Identifier: Apache-2.0
// cDbCtrlIO: the client side of the database control service, channel "data". A process that produces meter data holds
// one, registers under its driver name when the channel comes up, and hands over readings and events.
//
// Readings and events wait in one bounded queue while the channel is down or busy: one message goes out per call, per
// acknowledgement and per (re)connection, in order; on overflow the oldest is dropped. Everything else is sent once or
// not at all. Nothing waits for a reply. All calls belong to the thread of the owning service.
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

class cDbCtrlRequest;
class cInterfaceRecord;
class cMeterConfig;
class cMeterTemplate;
class cPushTarget;

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

  // ---- configuration; true: the channel took the request
  // The answer comes to the owning service's DispatchMessage under tid, which is created when it is not valid. Without
  // tid the request gets an identifier that nobody learns. An empty text is left out of a request unless stated.
  // What cannot be sent is traced whole at level 2, with its keys and passwords, but for an interface.
  bool GetMeter(vorn::cUuid& tid, const std::string& addr);  // all meters without addr
  bool GetMeter(const std::string& addr);
  bool SetMeter(vorn::cUuid& tid, const cMeterConfig& config);
  bool SetMeter(const cMeterConfig& config);
  bool DeleteMeter(vorn::cUuid& tid, const std::string& meterId, const std::string& medium, const std::string& mfct);
  bool DeleteMeter(const std::string& meterId, const std::string& medium, const std::string& mfct);
  bool GetInterface(vorn::cUuid& tid, const std::string& name, bool withMeters, bool withLoggers);
  bool GetInterface(const std::string& name, bool withMeters, bool withLoggers);
  // One that is not valid is not sent.
  bool SetInterface(vorn::cUuid& tid, const cInterfaceRecord& interface);
  bool SetInterface(const cInterfaceRecord& interface);
  bool DeleteInterface(vorn::cUuid& tid, const std::string& name);  // an empty name is sent too
  bool DeleteInterface(const std::string& name);
  bool GetPushTarget(vorn::cUuid& tid, const std::string& name);
  bool GetPushTarget(const std::string& name);
  // Of one that is not valid the request is sent without the record; its error says why.
  bool SetPushTarget(vorn::cUuid& tid, cPushTarget& target);
  bool SetPushTarget(cPushTarget& target);
  bool DeletePushTarget(vorn::cUuid& tid, unsigned long long idx, const std::string& name);  // an empty name too
  bool DeletePushTarget(unsigned long long idx, const std::string& name);
  bool GetMeterTemplate(vorn::cUuid& tid, const std::string& name);
  bool GetMeterTemplate(const std::string& name);
  bool SetMeterTemplate(vorn::cUuid& tid, const cMeterTemplate& meterTemplate);
  bool SetMeterTemplate(const cMeterTemplate& meterTemplate);
  bool DeleteMeterTemplate(vorn::cUuid& tid, unsigned long long idx, const std::string& name);  // an empty name too
  bool DeleteMeterTemplate(unsigned long long idx, const std::string& name);

  // ---- one meter, and stored data; true: the channel took the request
  // The answer comes under tid, which is sent as it is. Empty texts are sent, but for vendor and key.
  bool ActivateMeter(const vorn::cUuid& tid, const std::string& meterId, const std::string& medium,
                     const std::string& mfct, const std::string& vendor, const std::string& key);
  bool SetValve(const vorn::cUuid& tid, const std::string& meterId, const std::string& mfct, const std::string& medium,
                const std::string& valve);
  // timestamp: seconds since 1970-01-01 UTC.
  bool SetTimeDate(const vorn::cUuid& tid, const std::string& meterId, const std::string& mfct,
                   const std::string& medium, unsigned int timestamp);
  // The answers of GetStoredValues and sqlExec carry a handle, to fetch the rows with, count at most at a time, and to
  // be released by CloseResult, which does nothing for a handle that is not valid.
  bool GetStoredValues(const vorn::cUuid& tid, cDbCtrlRequest& request);
  bool GetLastValues(const vorn::cUuid& tid, cDbCtrlRequest& request);
  bool GetMeterStatus(const vorn::cUuid& tid, cDbCtrlRequest& request);
  bool FetchStoredValues(const vorn::cUuid& tid, const vorn::cUuid& handle, unsigned int count);
  bool sqlExec(const vorn::cUuid& tid, const std::string& db, const std::string& sql, unsigned int options);
  bool sqlFetch(const vorn::cUuid& tid, const vorn::cUuid& handle, unsigned int count);
  bool CloseResult(const vorn::cUuid& tid, const vorn::cUuid& handle);

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
