// SPDX-License-Identifier: Apache-2.0
// cEhzSettings: what one interface of the SML driver works by. They come from the command line, or from the interface's
// record with the meters that hang on it.
#pragma once

#include <map>
#include <string>

#include <gateway/driver/input/input_opener.h>
#include <gateway/driver/sml/simulated_input.h>
#include <tav/config/interface_record.h>

namespace tav::sml {

struct cEhzOptions;

extern const std::string kEhzDriver;  // the driver's name

struct cEhzMeter {
  std::string medium = "E";          // letter
  bool raw = false;                  // store the telegram's bytes with each reading
  unsigned int intervalSeconds = 0;  // between two stored readings; 0: every one is stored

  friend bool operator==(const cEhzMeter&, const cEhzMeter&) = default;
};

struct cEhzSettings {
  std::string name;        // of the interface, as the readings tell it
  bool simulated = false;  // then simulation, else input says where the bytes come from
  cInputSpec input;
  cSimulatedInputOptions simulation;
  unsigned int light = 1;                   // that flashes for a reading: 1 or 2, 0 none
  cEhzMeter others;                         // what holds for meters that are not named
  std::map<std::string, cEhzMeter> meters;  // by identifier
  bool onlyNamed = false;                   // readings of other meters are left out

  // The settings of the meter with that identifier; null when its readings are not wanted.
  const cEhzMeter* Find(const std::string& meterId) const;
  // Whether the same bytes come the same way: then an open interface need not be opened anew.
  bool HasSameInput(const cEhzSettings& other) const;
  // For messages: "simulated meters", or the input's text.
  std::string DescribeInput() const;
};

cEhzSettings SettingsOf(const cEhzOptions& options);

// The settings of a configured interface. Its options are "input" (a device, tcp://host:port, a file, or "sim"; without
// one the interface SIM is simulated), "baud", "framing", and for the simulation "seed", "meters", "period", "solar";
// "light" is the one that flashes for its readings, 1, 2 or 0 for none;
// "interval" holds for the interface's meters, or as an option of one meter for that one. Only meters whose driver is
// ehzif count. False, and in error which option of what is wrong.
bool ReadSettings(const cInterfaceRecord& record, cEhzSettings& settings, std::string& error);

}  // namespace tav::sml
