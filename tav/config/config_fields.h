// SPDX-License-Identifier: Apache-2.0
// What the configuration records share in reading: their version, and the options of an option string. Internal to
// them.
#pragma once

#include <string>

#include <tav/framework/map.h>
#include <tav/framework/record.h>

namespace tav {

constexpr unsigned int kConfigVersion = 1;

// Takes "version". False for any but kConfigVersion, with the error text set and a line that names the reader.
bool ReadConfigVersion(const vorn::cRecord& rec, const char* reader, unsigned int& version, std::string& error);

// What becomes of an option with more than one "=", which is no pair.
enum class eNoPair { KeyOnly, Ignored };

// Takes one option, "key=value" or "key", which has an empty value; a later one of the same key replaces it.
void SetOption(vorn::cMap<std::string, std::string>& map, const std::string& option, eNoPair noPair);
// The map of an option string, options separated by ",".
vorn::cMap<std::string, std::string> ParseOptions(const std::string& options, eNoPair noPair);

}  // namespace tav
