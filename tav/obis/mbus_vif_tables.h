// SPDX-License-Identifier: Apache-2.0
// What a VIF of an M-Bus record (EN 13757-3) says about unit and scaler: the primary table and the two that FB and FD
// select, in the order of their codes. Internal to the library.
//
// A code is a byte without its extension bit; each table has a row for every one of the 128. Installations' rules and
// stored values rely on the readings here, also where the standard offers more.
#pragma once

#include <tav/obis/mbus_unit.h>

namespace tav::mbus {

enum eVifForm : unsigned char {
  eNoRow,     // no row has the code
  eFixed,     // the row's unit and scaler
  eScaled,    // the row's unit; the scaler is the row's for its first code, one more for each further one
  eTime,      // by the code: second, minute, hour, day
  eLongTime,  // by the code: hour, day, month, year
  eKeepUnit,  // the unit stays what it was, the scaler is 0
  eKeep,      // unit and scaler stay what they were
  eByFB,      // the next byte says it, by the table of FB
  eByFD,      // the next byte says it, by the table of FD
};

struct cVifRow {
  unsigned char first;
  unsigned char last;
  eVifForm form;
  eMBusUnit unit = eMBusNoUnit;
  int scaler = 0;
};

// clang-format off

// Primary VIF table.
inline constexpr cVifRow kPrimaryRows[] = {
  {0x00, 0x07, eScaled, eMBusWattHour,              -3},  // energy
  {0x08, 0x0F, eScaled, eMBusJoule,                  0},  // energy
  {0x10, 0x17, eScaled, eMBusCubicMetre,            -6},  // volume
  {0x18, 0x1F, eScaled, eMBusKilogram,              -3},  // mass
  {0x20, 0x23, eTime                                  },  // on time
  {0x24, 0x27, eTime                                  },  // operating time
  {0x28, 0x2F, eScaled, eMBusWatt,                  -3},  // power
  {0x30, 0x37, eScaled, eMBusJoulePerHour,           0},  // power
  {0x38, 0x3F, eScaled, eMBusCubicMetrePerHour,     -6},  // volume flow
  {0x40, 0x47, eScaled, eMBusCubicMetrePerMinute,   -7},  // volume flow
  {0x48, 0x4F, eScaled, eMBusCubicMetrePerSecond,   -9},  // volume flow
  {0x50, 0x57, eScaled, eMBusKilogramPerHour,       -3},  // mass flow
  {0x58, 0x5B, eScaled, eMBusCelsius,               -3},  // flow temperature
  {0x5C, 0x5F, eScaled, eMBusCelsius,               -3},  // return temperature
  {0x60, 0x63, eScaled, eMBusKelvin,                -3},  // temperature difference
  {0x64, 0x67, eScaled, eMBusCelsius,               -3},  // external temperature
  {0x68, 0x6B, eScaled, eMBusBar,                   -3},  // pressure
  {0x6C, 0x6D, eFixed,  eMBusCountOrTimePoint         },  // date; date and time
  {0x6E, 0x6E, eFixed,  eMBusNoUnit                   },  // units of a heat cost allocator
  {0x6F, 0x6F, eFixed,  eMBusNoUnit                   },  // reserved
  {0x70, 0x73, eTime                                  },  // averaging duration
  {0x74, 0x77, eTime                                  },  // actuality duration
  {0x78, 0x78, eFixed,  eMBusNoUnit                   },  // fabrication number
  {0x79, 0x79, eFixed,  eMBusNoUnit                   },  // identification
  {0x7A, 0x7A, eFixed,  eMBusNoUnit                   },  // address
  {0x7B, 0x7B, eByFB                                  },
  {0x7C, 0x7C, eFixed,  eMBusNoUnit                   },  // a text that follows
  {0x7D, 0x7D, eByFD                                  },
  {0x7E, 0x7E, eFixed,  eMBusNoUnit                   },  // any VIF
  {0x7F, 0x7F, eFixed,  eMBusManufacturerSpecific     },
};

// Extension table selected by VIF FB. Apparent and reactive power, calories, angles, humidity and frequencies are values
// without a unit here, as installations' rules rely on it.
inline constexpr cVifRow kFBRows[] = {
  {0x00, 0x01, eScaled, eMBusWattHour,               5},  // energy, from 0.1 MWh
  {0x02, 0x03, eScaled, eMBusVarHour,                3},  // reactive energy, from 1 kvarh
  {0x04, 0x05, eFixed,  eMBusNoUnit                   },  // apparent energy
  {0x06, 0x07, eFixed,  eMBusNoUnit                   },  // reserved
  {0x08, 0x09, eScaled, eMBusJoule,                  8},  // energy, from 0.1 GJ
  {0x0A, 0x0B, eFixed,  eMBusNoUnit                   },  // reserved
  {0x0C, 0x0F, eFixed,  eMBusNoUnit                   },  // energy in calories
  {0x10, 0x11, eScaled, eMBusCubicMetre,             2},  // volume
  {0x12, 0x13, eFixed,  eMBusNoUnit                   },  // reserved
  {0x14, 0x17, eFixed,  eMBusNoUnit                   },  // reactive power
  {0x18, 0x19, eScaled, eMBusKilogram,               5},  // mass, from 100 t
  {0x1A, 0x1B, eFixed,  eMBusNoUnit                   },  // relative humidity
  {0x1C, 0x1F, eFixed,  eMBusNoUnit                   },  // reserved
  {0x20, 0x20, eFixed,  eMBusNoUnit                   },  // volume in whole cubic feet
  {0x21, 0x21, eFixed,  eMBusCubicFoot,             -1},  // volume
  {0x22, 0x22, eFixed,  eMBusUsGallon,              -1},  // volume
  {0x23, 0x23, eFixed,  eMBusUsGallon,               0},  // volume
  {0x24, 0x24, eFixed,  eMBusUsGallonPerMinute,     -3},  // volume flow
  {0x25, 0x25, eFixed,  eMBusUsGallonPerMinute,      0},  // volume flow
  {0x26, 0x26, eFixed,  eMBusUsGallonPerHour,        0},  // volume flow
  {0x27, 0x27, eFixed,  eMBusNoUnit                   },  // reserved
  {0x28, 0x29, eScaled, eMBusWatt,                   5},  // power, from 0.1 MW
  {0x2A, 0x2B, eFixed,  eMBusNoUnit                   },  // phase angles
  {0x2C, 0x2F, eFixed,  eMBusNoUnit                   },  // frequency
  {0x30, 0x31, eScaled, eMBusJoulePerHour,           8},  // power, from 0.1 GJ/h
  {0x32, 0x33, eFixed,  eMBusNoUnit                   },  // reserved
  {0x34, 0x37, eFixed,  eMBusNoUnit                   },  // apparent power
  {0x38, 0x57, eFixed,  eMBusNoUnit                   },  // reserved
  {0x58, 0x5B, eScaled, eMBusFahrenheit,            -3},  // flow temperature
  {0x5C, 0x5F, eScaled, eMBusFahrenheit,            -3},  // return temperature
  {0x60, 0x63, eScaled, eMBusFahrenheit,            -3},  // temperature difference
  {0x64, 0x67, eScaled, eMBusFahrenheit,            -3},  // external temperature
  {0x68, 0x6F, eFixed,  eMBusNoUnit                   },  // reserved
  {0x70, 0x73, eScaled, eMBusFahrenheit,            -3},  // cold or warm temperature limit
  {0x74, 0x77, eScaled, eMBusCelsius,               -3},  // cold or warm temperature limit
  // A count of maximum power is shown as a count or time point, without its scaler, as installations' rules rely on it.
  {0x78, 0x7F, eFixed,  eMBusCountOrTimePoint         },  // cumulative count of maximum power
};

// Extension table selected by VIF FD.
inline constexpr cVifRow kFDRows[] = {
  {0x00, 0x03, eScaled, eMBusCurrency,              -3},  // credit
  {0x04, 0x07, eScaled, eMBusCurrency,              -3},  // debit
  {0x08, 0x08, eFixed,  eMBusCountOrTimePoint         },  // access number
  {0x09, 0x16, eFixed,  eMBusNoUnit                   },  // who made, owns and may use the meter; versions, passwords
  {0x17, 0x19, eFixed,  eMBusNoUnit                   },  // error flags, error mask, reserved
  {0x1A, 0x1C, eFixed,  eMBusNoUnit                   },  // digital output and input, baud rate
  {0x1D, 0x1D, eFixed,  eMBusCountOrTimePoint         },  // response delay in bit times
  {0x1E, 0x1F, eFixed,  eMBusNoUnit                   },  // retry; remote control
  {0x20, 0x22, eFixed,  eMBusCountOrTimePoint         },  // first and last number, size of a cyclic storage
  {0x23, 0x23, eFixed,  eMBusNoUnit                   },  // reserved
  {0x24, 0x27, eTime                                  },  // storage interval
  {0x28, 0x28, eFixed,  eMBusMonth                    },  // storage interval
  {0x29, 0x29, eFixed,  eMBusYear                     },  // storage interval
  {0x2A, 0x2A, eFixed,  eMBusNoUnit                   },  // operator specific data
  {0x2B, 0x2B, eFixed,  eMBusSecond                   },  // second of a time point
  {0x2C, 0x2F, eTime                                  },  // duration since the last readout
  // The start of a tariff takes its unit from the caller, who knows whether the data is a date or a time.
  {0x30, 0x30, eKeepUnit                              },  // start of a tariff
  {0x31, 0x31, eFixed,  eMBusMinute                   },  // duration of a tariff
  {0x32, 0x32, eFixed,  eMBusHour                     },  // duration of a tariff
  {0x33, 0x33, eFixed,  eMBusDay                      },  // duration of a tariff
  {0x34, 0x37, eTime                                  },  // period of a tariff
  {0x38, 0x38, eFixed,  eMBusMonth                    },  // period of a tariff
  {0x39, 0x39, eFixed,  eMBusYear                     },  // period of a tariff
  {0x3A, 0x3A, eFixed,  eMBusNoUnit                   },  // without dimension
  {0x3B, 0x3B, eFixed,  eMBusNoUnit                   },  // container of a wireless protocol
  // About transmission, not about a value: what the caller knows of it stays.
  {0x3C, 0x3F, eKeep                                  },  // period of nominal data transmissions
  {0x40, 0x4F, eScaled, eMBusVolt,                  -9},  // voltage
  {0x50, 0x5F, eScaled, eMBusAmpere,               -12},  // current
  {0x60, 0x60, eFixed,  eMBusCountOrTimePoint         },  // reset counter
  {0x61, 0x61, eFixed,  eMBusCountOrTimePoint         },  // cumulation counter
  {0x62, 0x62, eFixed,  eMBusNoUnit                   },  // control signal
  {0x63, 0x63, eFixed,  eMBusDay                      },  // day of the week
  {0x64, 0x64, eFixed,  eMBusWeek                     },  // week number
  {0x65, 0x65, eFixed,  eMBusNoUnit                   },  // time point of day change
  {0x66, 0x66, eFixed,  eMBusNoUnit                   },  // state of parameter activation
  {0x67, 0x67, eFixed,  eMBusNoUnit                   },  // special supplier information
  {0x68, 0x6B, eLongTime                              },  // duration since the last cumulation
  {0x6C, 0x6F, eLongTime                              },  // operating time of the battery
  {0x70, 0x70, eFixed,  eMBusNoUnit                   },  // date and time of battery change
  {0x71, 0x73, eFixed,  eMBusNoUnit                   },  // radio level, daylight saving, listening window
  {0x74, 0x74, eFixed,  eMBusDay                      },  // remaining life of the battery
  {0x75, 0x75, eFixed,  eMBusCountOrTimePoint         },  // how often the meter was stopped
  {0x76, 0x7F, eKeep                                  },  // container of a manufacturer's protocol; reserved
};
// clang-format on

}  // namespace tav::mbus
