// SPDX-License-Identifier: Apache-2.0
// cDbCtrlRequest: which stored data of which meters the database control service is asked for: meter, OBIS identifiers,
// time range, number of entries, profile, raw telegrams.
//
// Whatever is empty selects nothing and is left out of the record form. What the modes and profiles mean is the
// service's.
#pragma once

#include <list>
#include <string>

#include <tav/export.h>
#include <tav/framework/record.h>

namespace tav {

class TAV_API cDbCtrlRequest {
 public:
  static constexpr unsigned int kVersion = 2;
  static constexpr unsigned int kOpenEnd = 0xFFFFFFFF;
  static constexpr unsigned int kDefaultMaxLen = 100;

  cDbCtrlRequest() = default;
  cDbCtrlRequest(const cDbCtrlRequest&) = default;
  cDbCtrlRequest& operator=(const cDbCtrlRequest&) = default;
  virtual ~cDbCtrlRequest();

  void Init();
  // Asks for raw telegrams: "base64" or "other". It is not checked here; FromRecord accepts no other.
  void EnableRaw(const std::string& format) { m_rawFormat = format; }
  bool IsRawEnabled(std::string& format) const;
  // An empty one is ignored.
  void AddObisID(const std::string& id);
  // Each takes the number that the text begins with, 0 when it begins with none; one out of range becomes the nearest
  // in range. An empty text sets the default: 100 entries, from 0, open end.
  void SetMaxLen(const std::string& s);
  void SetFromUTC(const std::string& s);
  void SetToUTC(const std::string& s);

  // Rebuilds m_record; the reference is to it.
  vorn::cRecord& ToRecord();
  // False with m_error "bad version" or "unknown raw-format"; what was read up to there stays. A record without a
  // version is taken for the present one, a parameter of another type for a missing one.
  bool FromRecord(const vorn::cRecord& rec);
  // "meterID=? addr=? vendor=? medium=? mfct=? mode=?", the question marks for empty fields. Here the medium comes
  // before the manufacturer, in the record behind it.
  virtual std::string ToString() const;

  vorn::cRecord m_record;
  unsigned int m_version = kVersion;
  std::string m_meterID;
  std::string m_addr;
  std::string m_vendor;
  std::string m_mfct;
  std::string m_medium;
  std::string m_mode;
  std::string m_rawFormat;
  unsigned int m_fromUTC = 0;  // seconds UTC
  unsigned int m_toUTC = kOpenEnd;
  unsigned int m_maxLen = kDefaultMaxLen;  // most entries of the answer
  std::string m_profile;
  std::list<std::string> m_obisIds;
  std::string m_error;
};

}  // namespace tav
