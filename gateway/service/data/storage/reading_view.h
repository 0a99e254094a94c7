// SPDX-License-Identifier: Apache-2.0
// cReadingView: a reading as it stands in a received "meter-record", for storing it without building a cMeterRecord.
//
// It accepts and refuses exactly what tav::cMeterRecord::FromRecord does and reads the same values, an entry whose name
// was there before left out. The texts are views into the record, which must live as long and unchanged.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include <tav/framework/record.h>

namespace tav::data {

struct cEntryView {
  std::string_view name;
  std::string_view value;
  std::string_view unit;
  unsigned int timestamp = 0;   // seconds UTC
  unsigned int timeSource = 0;  // tav::cMeterTav::eTimeSource
  std::string_view signature;
};

class cReadingView {
 public:
  // False when it is no reading; GetError says why, in the record class's words.
  bool Read(const vorn::cRecord& record);
  const std::string& GetError() const { return m_error; }

  std::string_view driver;
  std::string_view meterId;
  std::string_view addr;
  std::string_view manufactor;
  std::string_view medium;
  std::string_view status;
  std::string_view interfaceName;
  std::string_view interfaceProtocol;
  std::string_view interfaceOptions;
  std::string_view raw;
  unsigned int timestamp = 0;
  unsigned int timeSource = 0;
  unsigned int osc = 0;
  unsigned int storeUtc = 0;
  unsigned int storeOsc = 0;
  unsigned int eventRaster = 0;
  int rssi = 0;
  bool learning = false;
  std::vector<cEntryView> entries;

 private:
  bool Fail(const char* error);
  bool CheckMandatory(const vorn::cRecord& record);
  void ReadFields(const vorn::cRecord& record);
  void ReadEntries(const vorn::cRecord& measurement);
  void ReadEntry(const vorn::cRecord& record);
  bool IsNew(std::string_view name);
  std::string_view TextOf(const vorn::cRecordPar& parameter);
  unsigned int TimeSourceOf(const vorn::cRecordPar& parameter);

  std::string m_error;
  std::deque<std::string> m_texts;               // of parameters that are texts only in their text form
  std::unordered_set<std::string_view> m_names;  // of the entries, once there are many
};

}  // namespace tav::data
