// SPDX-License-Identifier: Apache-2.0
// cMBusVIBHelper: what the value information block of an M-Bus data record (EN 13757-3) says about its value: unit,
// power of ten, and the combinable extensions.
//
// Nothing is reset by a call: where a code says nothing about unit or scaler, what the caller put there stays, and
// extensions are appended. So put the block into VIB and preset the rest before each block.
#pragma once

#include <string>
#include <vector>

#include <tav/export.h>
#include <tav/framework/data.h>
#include <tav/obis/mbus_unit.h>

namespace tav {

// What a combinable (orthogonal) VIFE adds to a value. Begin, end and duration are those of the first or last time that
// the value was below its lower or above its upper limit, or, where no limit is named, of the event it is about.
enum eUnitScalerExtension : unsigned int {
  eVifePerSecond = 0,
  eVifePerMinute = 1,
  eVifePerHour = 2,
  eVifePerDay = 3,
  eVifePerWeek = 4,
  eVifePerMonth = 5,
  eVifePerYear = 6,
  eVifePerRevolution = 7,  // or measurement
  eVifePerInputPulse0 = 8,
  eVifePerInputPulse1 = 9,
  eVifePerOutputPulse0 = 10,
  eVifePerOutputPulse1 = 11,
  eVifePerLitre = 12,
  eVifePerCubicMetre = 13,
  eVifePerKilogram = 14,
  eVifePerKelvin = 15,
  eVifePerKilowattHour = 16,
  eVifePerGigajoule = 17,
  eVifePerKilowatt = 18,
  eVifePerKelvinLitre = 19,
  eVifePerVolt = 20,
  eVifePerAmpere = 21,
  eVifeTimesSecond = 22,
  eVifeTimesSecondPerVolt = 23,
  eVifeTimesSecondPerAmpere = 24,
  eVifeStartOf = 25,
  eVifeUncorrected = 26,
  eVifePositiveOnly = 27,
  eVifeNegativeOnly = 28,
  eVifeNonMetric = 29,
  eVifeUpperLimit = 30,
  eVifeLowerLimit = 31,
  eVifeUpperLimitCount = 32,
  eVifeLowerLimitCount = 33,
  eVifeLowerLimitFirstBegin = 34,
  eVifeUpperLimitFirstBegin = 35,
  eVifeLowerLimitLastEnd = 36,
  eVifeUpperLimitLastBegin = 37,
  eVifeLowerLimitFirstEnd = 38,
  eVifeUpperLimitFirstEnd = 39,
  eVifeLowerLimitLastBegin = 40,
  eVifeUpperLimitLastEnd = 41,
  eVifeLowerLimitFirstDuration = 42,
  eVifeUpperLimitFirstDuration = 43,
  eVifeLowerLimitLastDuration = 44,
  eVifeUpperLimitLastDuration = 45,
  eVifeFirstDuration = 46,
  eVifeLastDuration = 47,
  eVifeDuringLowerLimit = 48,
  eVifeDuringUpperLimit = 49,
  eVifeLeakage = 50,
  eVifeOverflow = 51,
  eVifeFirstBegin = 52,
  eVifeLastEnd = 53,
  eVifeLastBegin = 54,
  eVifeFirstEnd = 55,
  eVifeScalerCorrection = 56,
  eVifeAddUnits = 57,       // an additive correction, in units of the value
  eVifeAddTenths = 58,      // ... in tenths of them
  eVifeAddHundredths = 59,  // ...
  eVifeAddThousandths = 60,
  eVifeScalerPlus3 = 61,
  eVifeFutureValue = 62,
  eVifeManufacturerSpecific = 63,
  eVifeNotRecognised = 64,
};

class TAV_API cMBusVIBHelper {
 public:
  // Unit and scaler by the VIF, the first byte; by the second one behind FB and FD. Nothing for an empty block.
  void GetUnitScaler();
  // By the second byte, whatever the first one is. Nothing for a block without a second byte.
  void GetUnitScalerFromFBVif();
  void GetUnitScalerFromFDVif();
  // Appends what the second and all further bytes say as combinable VIFEs, and adds their powers of ten to the scaler.
  // Behind FB and FD too, though the second byte is no VIFE there: installations' rules rely on what that gives.
  void GetUnitScalerExtension();
  // In ISO 8859-1; empty for values without a unit, and for what is no code of a unit.
  std::string GetUnitString() const;

  vorn::cData VIB;                               // the VIF, then VIFEs; the extension bit of a byte does not matter
  unsigned int unit = eMBusNoUnit;               // eMBusUnit
  int scaler = 0;                                // the value is multiplied by ten to this power
  std::vector<eUnitScalerExtension> extensions;  // in the order of the bytes
};

}  // namespace tav
