// SPDX-License-Identifier: Apache-2.0
// cMeterTemplate: a named preset for new meters: a meter configuration, a push target and a switch. Kept by the
// database control service, or as one XML file a template.
//
// The number names the file and is its owner's: it is not part of the record form, no assignment copies it, and reading
// (FromRecord, Load of a file that is there) sets it to 0, so that the owner gives it anew.
#pragma once

#include <string>

#include <tav/config/meter_config.h>
#include <tav/config/push_target.h>
#include <tav/export.h>
#include <tav/framework/record.h>

namespace tav {

class TAV_API cMeterTemplate {
 public:
  cMeterTemplate() = default;
  cMeterTemplate(const cMeterTemplate&) = default;
  // Leaves id and error as they are.
  cMeterTemplate& operator=(const cMeterTemplate& other);
  ~cMeterTemplate() = default;

  void Init();
  // Every template is.
  bool isValid() const { return true; }

  vorn::cRecord ToRecord() const;
  // False for an empty record and for an unknown version; what is wrong inside meterConfig and pushConfig stands in
  // their own error texts.
  bool FromRecord(const vorn::cRecord& rec);
  std::string ToString() const;

  // The file "<id>.mt" in the directory location; the current one when empty.
  // A file that does not exist is no failure: Load gives true and changes nothing.
  bool Load(const std::string& location);
  bool Store(const std::string& location) const;

  unsigned int version = 1;
  std::string name;
  unsigned long long id = 0;
  bool enable = false;
  std::string error;
  cMeterConfig meterConfig;
  cPushTarget pushConfig;

 private:
  std::string FileName() const;
};

}  // namespace tav
