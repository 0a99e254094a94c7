// SPDX-License-Identifier: Apache-2.0
// cMBusSettings: what one interface of the M-Bus driver works by. They come from the command line, or from the
// interface's record with the meters that hang on it.
#pragma once

#include <string>
#include <vector>

#include <gateway/driver/mbus/master/mbus_address.h>
#include <gateway/driver/mbus/master/mbus_master.h>
#include <tav/config/interface_record.h>

namespace tav::mbus {

struct cMBusOptions;

extern const std::string kMBusDriver;  // the driver's name

inline constexpr unsigned int kUsualInterval = 900;  // seconds
inline constexpr unsigned int kMostSimulatedMeters = 250;

struct cMBusMeter {
  std::string id;  // as readings tell it; empty: what the meter itself says
  cMBusAddress address;
  std::string medium;                             // letter; empty: what the meter itself says
  bool raw = false;                               // store the telegrams' bytes with each reading
  unsigned int intervalSeconds = kUsualInterval;  // it is read once in each slot of so many seconds of the clock

  // For messages: "meter '44950146'" or "meter at 5".
  std::string Describe() const;
  friend bool operator==(const cMBusMeter&, const cMBusMeter&) = default;
};

struct cBusSimulation {
  unsigned int meters = 3;
  unsigned int seed = 1;

  friend bool operator==(const cBusSimulation&, const cBusSimulation&) = default;
};

struct cMBusSettings {
  std::string name;        // of the interface, as the readings tell it
  bool simulated = false;  // then simulation is the bus, at the end of the line's pseudo terminal
  cBusSimulation simulation;
  cMBusLineSettings line;
  unsigned int light = 1;     // that flashes for a reading: 1 or 2, 0 none
  bool keepUnmapped = false;  // values that no rule names are kept under their blocks, else left out
  std::vector<cMBusMeter> meters;

  // Whether the same bus is at the other end: then an open interface need not be opened anew.
  bool HasSameLine(const cMBusSettings& other) const;
  // For messages: "simulated bus", or the line's text.
  std::string DescribeLine() const;
};

cMBusSettings SettingsOf(const cMBusOptions& options);

// The settings of a configured interface. Its options are "input" (a device, tcp://host:port, or "sim"), "baud",
// "framing", "echo" (0 or 1), "retries", "answer" (longest time to an answer in milliseconds), "unmapped" (keep or
// drop), "light" (1, 2 or 0 for none), for the simulation "meters" and "seed"; "interval" holds for the interface's
// meters, or as an option of one meter for that one. A meter's address is its primary or secondary one; without it the
// meter is asked by its identification. Only meters whose driver is mbif count. False, and in error which option of
// what is wrong.
bool ReadSettings(const cInterfaceRecord& record, cMBusSettings& settings, std::string& error);

}  // namespace tav::mbus
