// SPDX-License-Identifier: Apache-2.0
// cMeterConfig: the configuration of one meter as the database control service keeps it: identification, key, the
// interface it is read through, and its collectors.
//
// Which driver serves the meter follows from interface name and protocol. The key travels as plain text in the record
// and never stands in ToString.
#pragma once

#include <list>
#include <string>
#include <utility>

#include <tav/config/collector_config.h>
#include <tav/export.h>
#include <tav/framework/map.h>
#include <tav/framework/record.h>

namespace tav {

class TAV_API cMeterConfig {
 public:
  void Init() { *this = cMeterConfig(); }
  // Valid with a meterID; else not, and the error text is "missing meterID".
  void SetIdentification(const std::string& newMeterID, const std::string& newAddr, const std::string& newMedium,
                         const std::string& newMfct);
  // Also finds the driver, "unknown" for a pair of name and protocol that none serves. options: "key=value" or "key",
  // separated by ","; one with more than one "=" does not come into the map.
  void SetInterfaceOptions(const std::string& name, const std::string& protocol, const std::string& options);
  void SetKey(std::string newKey) { key = std::move(newKey); }
  void SetVendor(const std::string& newVendor) { vendor = newVendor; }
  void AddCollector(const cCollectorConfig& collector) { collectors.push_back(collector); }
  // False, value left alone, when there is no such option, and always while the configuration is not valid.
  bool GetInterfaceOption(const std::string& option, std::string& value) const;

  vorn::cRecord ToRecord() const;
  // Whether it is valid then. What is missing or of another type is read as empty, so an absent "store-raw-enabled" as
  // false. The records from the first "collector-config" on are collectors, whatever their names, up to the first
  // parameter that is no record; those that are not valid are dropped.
  bool FromRecord(const vorn::cRecord& rec);
  // "12345678(5)/04/ABCinterface=MBUS(MBUS) baud=2400"; nothing stands before "interface=".
  std::string ToString() const;

  unsigned int version = 1;
  bool valid = false;
  std::string meterID;
  std::string addr;  // on its interface
  std::string medium;
  std::string mfct;
  std::string key;
  std::string vendor;
  std::string interfaceDriver;
  std::string interfaceName;
  std::string interfaceProtocol;
  std::string interfaceOptions;  // as set
  std::string error;
  bool pushEnabled = false;
  bool storeRawEnabled = true;  // raw telegrams are stored
  vorn::cMap<std::string, std::string> interfaceOptionMap;
  std::list<cCollectorConfig> collectors;
};

}  // namespace tav
