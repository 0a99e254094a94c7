// SPDX-License-Identifier: Apache-2.0
// cOptionReader: reads the options that an interface's or a meter's configuration has; the first wrong one is the
// error.
#pragma once

#include <string>
#include <utility>

#include <tav/config/interface_record.h>

namespace tav {

// A whole number within limits; false, and number left alone, for anything else.
bool ReadOptionNumber(const std::string& text, unsigned int least, unsigned int most, unsigned int& number);

template <typename Thing, typename Getter>
class cOptionReader {
 public:
  // what: whose options they are, for the error: "interface 'RS232'".
  cOptionReader(const Thing& thing, Getter getter, std::string what, std::string& error)
      : m_thing(thing), m_getter(getter), m_what(std::move(what)), m_error(error) {}

  // Each leaves its target alone when the option is not there.
  void Text(const char* key, std::string& text) { (m_thing.*m_getter)(key, text); }
  void Number(const char* key, unsigned int least, unsigned int most, unsigned int& number) {
    std::string text;
    if (!(m_thing.*m_getter)(key, text) || ReadOptionNumber(text, least, most, number)) return;
    Fault(key, "'" + text + "' is no number from " + std::to_string(least) + " to " + std::to_string(most));
  }
  // 0 or 1.
  void Flag(const char* key, bool& flag) {
    unsigned int number = flag ? 1 : 0;
    Number(key, 0, 1, number);
    flag = number != 0;
  }
  void Fault(const char* key, const std::string& why) {
    if (m_error.empty()) m_error = m_what + ": option '" + key + "': " + why;
  }

 private:
  const Thing& m_thing;
  Getter m_getter;
  std::string m_what;
  std::string& m_error;
};

using cInterfaceOptions = cOptionReader<cInterfaceRecord, decltype(&cInterfaceRecord::GetOption)>;
using cMeterOptions = cOptionReader<cMeterConfig, decltype(&cMeterConfig::GetInterfaceOption)>;

inline cInterfaceOptions OptionsOf(const cInterfaceRecord& record, std::string& error) {
  return {record, &cInterfaceRecord::GetOption, "interface '" + record.name + "'", error};
}
inline cMeterOptions OptionsOf(const cMeterConfig& meter, std::string& error) {
  return {meter, &cMeterConfig::GetInterfaceOption, "meter '" + meter.meterID + "'", error};
}

// Whether one of the interface's meters is that driver's.
bool HasMeterOf(const cInterfaceRecord& record, const std::string& driver);

}  // namespace tav
