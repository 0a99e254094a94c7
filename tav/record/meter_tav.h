// SPDX-License-Identifier: Apache-2.0
// cMeterTav: the vocabulary of metering. Forms of OBIS identifiers, unit texts, media, time sources, M-Bus status.
//
// An OBIS identifier (IEC 62056-61) is a text A-B:C.D.E with an optional *F, each group one byte: "1-0:1.8.0*255". It
// travels so through the whole system. All helpers are pure; the unit table is filled when it is first asked for.
#pragma once

#include <string>

#include <tav/export.h>
#include <tav/framework/map.h>

namespace tav {

class cObisMap;

// Unit code (DLMS/COSEM, IEC 62056-62) to unit text. Process-wide and unguarded: fill it before a second thread looks.
TAV_API extern vorn::cMap<unsigned int, std::string> _obisUnits;

class TAV_API cMeterTav {
 public:
  // Where a timestamp came from.
  enum eTimeSource : unsigned int {
    eTsUnknown = 0,
    eTsNetworkTime = 1,
    eTsMeter = 2,
    eTsMeterUtc = 3,
    eTsMeterDs = 4,     // meter, daylight saving time
    eTsMeterNonDs = 5,  // meter, standard time
    eTsRtc = 6,         // the gateway's own clock
    eTsUndefined = 7,
  };

  // Without a neutral F group: drops a tail that is exactly "*255" or "*FF".
  static std::string ObisNormalize(const std::string& obis);
  // Whether the text has the form; groups are runs of letters and digits, their values are not checked.
  static bool ObisIsValid(const std::string& obis);
  // Whether it names a due-date or historic value: holds a "*".
  static bool ObisIsDuedate(const std::string& obis);
  // Twelve hexadecimal digits, the groups read in the given radix, the F byte always FF; empty when a separator of
  // A-B:C.D.E is missing. Groups are not checked: one above 255 gives more digits.
  static std::string ObisHexform(const std::string& obis, int base);
  // A text is in its long form already.
  static std::string ObisLangform(const std::string& obis);
  // Of an identifier packed as 0x0000AABBCCDDEEFF. A group F other than 255 appends "*" and the low 32 bits of the
  // packed value, their lowest byte forced to 255, as a signed number: readers of stored data know these texts.
  static std::string ObisLangform(unsigned long long obis);
  // The readable name of an identifier: the map's, or that of a reserved one, else "unknown".
  static std::string ObisName(const std::string& obis, const cObisMap& map);

  static void ObisUnitInit();
  // "other" for a code that the table does not hold.
  static std::string ObisUnit(unsigned int code);

  // eTsUndefined for a text that is none of the time sources'.
  static eTimeSource GetTimeSource(const std::string& text);
  static std::string GetTimeSourceText(eTimeSource ts);

  // Medium byte of an M-Bus header (EN 13757-3) to the medium letter that records carry; "X" for those without one.
  static std::string GetMbusMediumText(unsigned char medium);
  // And back; 255 for anything else. "Y" (the gateway itself) has no byte either.
  static unsigned int GetMbusMediumValue(const std::string& letter);
  // Readable text of a medium letter, "unknown" for anything else.
  static std::string MediumToString(const std::string& letter);

  // "ok", or "error: " and the M-Bus status byte in hexadecimal.
  static std::string GetMbusStatusText(unsigned char status);
};

}  // namespace tav
