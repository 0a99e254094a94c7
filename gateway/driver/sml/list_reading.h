// SPDX-License-Identifier: Apache-2.0
// The reading that a list of values makes: the library's import of the list's record form (get_list_record.h), and what
// that import would lose.
//
// The import gives all values of one identifier whose group F is not 255 the same name, and keeps the first: of the
// values of the last day, week, month, year that some meters send as 1-0:1.8.0*96 to *100 one would be left. The others
// are added behind it, under their full identifiers.
#pragma once

#include <string>

#include <gateway/driver/sml/sml_message.h>
#include <tav/record/meter_record.h>

namespace tav::sml {

// timestamp: seconds since 1970-01-01 UTC. False when the list has no value to store, or no server id.
bool ToReading(const cSmlList& list, const std::string& driver, const std::string& medium,
               cMeterTav::eTimeSource timesource, unsigned int timestamp, cMeterRecord& reading);

}  // namespace tav::sml
