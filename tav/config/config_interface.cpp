// SPDX-License-Identifier: Apache-2.0
#include <tav/config/config_interface.h>

#include <vector>

#include <tav/config/config_fields.h>
#include <tav/framework/helper.h>

namespace tav {

bool cConfigInterface::SetConfig(const std::string& newConfig) {
  config = newConfig;
  options.clear();
  const std::vector<std::string> tokens = vorn::cHelper::GetStringTokens(config, ",");
  valid = !tokens.empty();
  if (!valid) {
    error = "physikalischer Layer fehlt";
    return false;
  }
  physicalLayer = tokens[0];
  for (std::size_t i = 1; i < tokens.size(); ++i) {
    if (i > 1) options += ",";
    options += tokens[i];
    SetOption(optionMap, tokens[i], eNoPair::KeyOnly);
  }
  return true;
}

std::string cConfigInterface::ToString() const {
  std::string text = physicalLayer;
  char separator = ':';
  if (optionMap.empty()) text += separator;
  for (const auto& [key, value] : optionMap) {
    text += separator + key;
    if (!value.empty()) text += "=" + value;
    separator = ',';
  }
  return text;
}

}  // namespace tav
