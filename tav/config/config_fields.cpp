// SPDX-License-Identifier: Apache-2.0
#include <tav/config/config_fields.h>

#include <vector>

#include <tav/framework/helper.h>
#include <tav/unit_tav.h>

namespace tav {

bool ReadConfigVersion(const vorn::cRecord& rec, const char* reader, unsigned int& version, std::string& error) {
  version = rec.GetUIntPar("version");
  if (version == kConfigVersion) return true;
  vorn::Trace(UnitTAV(), 2, reader, ": unknown version");
  error = "unknown message version";
  return false;
}

void SetOption(vorn::cMap<std::string, std::string>& map, const std::string& option, eNoPair noPair) {
  const std::vector<std::string> parts = vorn::cHelper::Split(option, "=");
  if (parts.size() > 2 && noPair == eNoPair::Ignored) return;
  map.Set(parts[0], parts.size() == 2 ? parts[1] : std::string());
}

vorn::cMap<std::string, std::string> ParseOptions(const std::string& options, eNoPair noPair) {
  vorn::cMap<std::string, std::string> map;
  for (const std::string& option : vorn::cHelper::GetStringTokens(options, ",")) SetOption(map, option, noPair);
  return map;
}

}  // namespace tav
