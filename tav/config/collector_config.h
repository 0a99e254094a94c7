// SPDX-License-Identifier: Apache-2.0
// cCollectorConfig: one collection job of a meter: which OBIS identifiers are logged on which event, how many values
// are kept, and whether and how they are pushed to a push target.
//
// The distance is written as "distanecRP" and read as "distanceRP": the database control service uses both names, so a
// collector that reads what it wrote itself loses it.
#pragma once

#include <string>

#include <tav/export.h>
#include <tav/framework/record.h>

namespace tav {

class TAV_API cCollectorConfig {
 public:
  void Init() { *this = cCollectorConfig(); }
  void SetAddr(const std::string& newAddr) { addr = newAddr; }
  void SetActivation(bool newActivation) { activation = newActivation; }
  void SetLogger(unsigned int newCountRP, unsigned int newDistanceRP, const std::string& newEventType);
  void SetLoggedObisID(const std::string& newObisIds) { obisIds = newObisIds; }
  void SetPushTarget(unsigned long long idx, const std::string& period, bool enabled, bool rawEnabled,
                     unsigned short randomOffset);
  void SetPushTargetName(const std::string& name) { pushTargetName = name; }

  // One to be removed needs its address only, any other one OBIS identifiers and an event type too.
  bool IsValid() const;
  vorn::cRecord ToRecord() const;
  // IsValid of what was read. What is missing or of another type is read as empty; error is set for an unknown version
  // only. Of the random offset the low 16 bits are taken.
  bool FromRecord(const vorn::cRecord& rec);
  // "1[15min] push=ON 1-0:1.8.0"; push is "ON with RAW", "ON" or "OFF".
  std::string ToString() const;

  unsigned int version = 1;
  std::string error;
  std::string addr;  // its name within the meter
  bool activation = false;
  unsigned int countRP = 0;     // register periods kept
  unsigned int distanceRP = 0;  // between register periods
  std::string eventType;        // on which values are logged
  std::string obisIds;          // all in one text
  unsigned long long pushTargetIdx = 0;
  std::string pushTargetName;
  std::string pushPeriod;
  bool pushEnabled = false;
  bool pushRawEnabled = false;  // raw data too
  unsigned short pushRandomOffset = 0;
  bool shouldRemoved = false;
};

}  // namespace tav
