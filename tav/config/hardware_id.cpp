// SPDX-License-Identifier: Apache-2.0
#include <tav/config/hardware_id.h>

#include <string_view>
#include <vector>

#include <tav/framework/helper.h>

namespace tav {

namespace {

struct cHardwareRow {
  std::string_view code;
  const char* name;
};

// 011 and 013 are written without blanks.
constexpr cHardwareRow kHardware[] = {
    {"001", "RS485 / LAN / GPRS"},
    {"002", "RS485 / WMBUS / LAN / GPRS"},
    {"003", "RS485 / LAN / WAN / GPRS"},
    {"004", "RS485 / WMBUS / LAN / WAN / GPRS"},
    {"005", "RS485 / LAN"},
    {"006", "RS485 / WMBUS / LAN"},
    {"007", "RS485 / LAN / WAN"},
    {"008", "RS485 / WMBUS / LAN / WAN"},
    {"011", "RS232/LAN/GPRS"},
    {"012", "RS232 / WMBUS / LAN / GPRS"},
    {"013", "RS232/LAN/WAN/GPRS"},
    {"014", "RS232 / WMBUS / LAN / WAN / GPRS"},
    {"015", "RS232 / LAN"},
    {"016", "RS232 / WMBUS / LAN"},
    {"017", "RS232 / LAN / WAN"},
    {"018", "RS232 / WMBUS / LAN / WAN"},
};

}  // namespace

std::string GetHWNameFromID(const std::string& id) {
  const std::vector<std::string> parts = vorn::cHelper::Split(id, "-");
  if (parts.size() >= 2)
    for (const cHardwareRow& row : kHardware)
      if (row.code == parts[1]) return row.name;
  return "Hardware ID unknown";
}

}  // namespace tav
