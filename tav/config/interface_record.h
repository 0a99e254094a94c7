// SPDX-License-Identifier: Apache-2.0
// cInterfaceRecord: the configuration of one meter interface of the gateway: a serial port, an M-Bus master, a wireless
// M-Bus receiver; its name, options, whether it is in use, and the meters attached to it.
//
// The meters come with an answer of the database control service; ToRecord does not write them.
#pragma once

#include <string>
#include <vector>

#include <tav/config/meter_config.h>
#include <tav/export.h>
#include <tav/framework/map.h>
#include <tav/framework/record.h>

namespace tav {

class TAV_API cInterfaceRecord {
 public:
  cInterfaceRecord() = default;
  explicit cInterfaceRecord(const std::string& newName) { SetName(newName); }
  cInterfaceRecord(const std::string& newName, const std::string& newOptions, bool newEnabled) {
    Set(newName, newOptions, newEnabled);
  }

  void Init() { *this = cInterfaceRecord(); }
  // Either of the two makes it valid.
  void SetName(const std::string& newName);
  // newOptions: "key=value" or "key", separated by ","; one with more than one "=" gives its key an empty value.
  void SetOptions(const std::string& newOptions);
  void Set(const std::string& newName, const std::string& newOptions, bool newEnabled);
  // False, value left alone, when there is no such option, and always while the record is not valid.
  bool GetOption(const std::string& key, std::string& value) const;

  vorn::cRecord ToRecord() const;
  // False for an empty record, and with the reason in error: "unknown message version" or "missing interface name".
  // Meters that are not valid are skipped; a "meterconfig-record" that is no record ends their list.
  bool FromRecord(const vorn::cRecord& rec);
  // "RS485(enabled):baud=9600", or "(disabled)".
  std::string ToString() const;

  unsigned int version = 1;
  bool valid = false;
  std::string name;
  std::string options;  // as set
  bool enabled = false;
  std::string error;
  vorn::cMap<std::string, std::string> optionMap;
  std::vector<cMeterConfig> meters;

 private:
  void ReadMeters(const vorn::cRecord& rec);
};

}  // namespace tav
