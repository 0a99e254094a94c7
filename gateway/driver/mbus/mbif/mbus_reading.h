// SPDX-License-Identifier: Apache-2.0
// The reading that a meter's telegrams make: each record that has a value is an entry, under the identifier of the rule
// that names its blocks.
//
// A value that no rule names is left out, or kept under its own blocks: "mbus:8C10/03" is what a rule with dif=8C 10
// and vif=03 would name. So is one that would get the identifier of a value before it: nothing a meter tells apart
// becomes one. A second one of the same blocks is "mbus:8C10/03#2". What cannot be read as a value is kept as its
// bytes, "hex:0A01", without a unit.
#pragma once

#include <string>
#include <vector>

#include <gateway/driver/mbus/mbif/mbus_settings.h>
#include <gateway/driver/mbus/reader/mbus_reader.h>
#include <gateway/driver/moment.h>
#include <tav/obis/obis_map.h>
#include <tav/record/meter_record.h>

namespace tav::mbus {

struct cMBusNaming {
  const cObisMap* rules = nullptr;  // none: every value is kept under its own blocks
  bool keepNames = false;           // under its own blocks, where a rule names it
  bool keepUnmapped = false;
};

struct cMBusReadingCounts {
  std::uint64_t telegrams = 0;
  std::uint64_t values = 0;      // in readings
  std::uint64_t unmapped = 0;    // left out, no rule names them
  std::uint64_t unreadable = 0;  // passed on as bytes

  cMBusReadingCounts& operator+=(const cMBusReadingCounts& other);
};

class cMBusReadingMaker {
 public:
  // frames: whole long frames of one meter, in their order. False when there is no meter's telegram among them. A
  // reading without entries is one whose values were all left out.
  bool Make(const std::vector<std::string>& frames, const cMBusMeter& meter, const cMBusNaming& naming,
            const cMoment& moment, cMeterRecord& reading);

  // Of the last reading: where a telegram's records could not be followed to its end, and why, or that they are
  // encrypted; else empty.
  const std::string& GetFault() const { return m_fault; }
  const cMBusReadingCounts& GetCounts() const { return m_counts; }

 private:
  struct cTarget;
  void TakeTelegram(const cMBusTelegram& telegram, cTarget& target);
  void TakeRecord(const cMBusRecord& record, cTarget& target);

  cMBusReader m_reader;
  cMBusReadingCounts m_counts;
  std::string m_fault;
};

// "mbus:8C10/03".
std::string BlockName(const cMBusRecord& record);

}  // namespace tav::mbus
