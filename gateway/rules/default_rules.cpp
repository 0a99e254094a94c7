// SPDX-License-Identifier: Apache-2.0
#include <gateway/rules/default_rules.h>

#include <cstddef>
#include <limits>
#include <string>
#include <string_view>

#include <tav/framework/helper.h>

namespace tav::rules {

namespace {

// Named by their identifier: values of SML meters, whose channel and group F do not count, and of DLMS meters.
struct cIdentifierRow {
  unsigned int id;
  const char* obis;
  const char* name;
};

// Found by the blocks of an M-Bus record. A row is one rule for each DIF (separated by ",") and each medium letter, the
// IDs counting on.
struct cBlockRow {
  unsigned int id;
  const char* obis;
  const char* name;
  std::string_view media;  // empty: of any medium
  const char* vif;
  const char* difs;
};

struct cRegisterRow {
  unsigned int id;
  const char* obis;
  const char* name;
  const char* reg;
};

// clang-format off

// IEC 62056-61 and EN 13757-1, OBIS identifiers. Ordered by ID.
constexpr cIdentifierRow kIdentifiers[] = {
  // electricity (A = 1), IEC 62056-61 tables of C (quantity), D (processing) and E (tariff): identification and state
  {1000, "1-0:0.0.0",          "Serial number of the meter"},
  {1005, "1-0:0.0.5",          "Metering point"},
  {1010, "1-0:0.0.9",          "Server id"},
  {1015, "1-0:0.2.0",          "Firmware version of the meter"},
  {1020, "1-0:0.2.0*0",        "Firmware version"},
  {1025, "1-0:0.2.129",        "Push list version"},
  {1030, "1-0:0.9.1",          "Time of the meter, local"},
  {1035, "1-0:0.9.2",          "Date of the meter, local"},
  {1040, "1-0:96.1.0",         "Device id"},
  {1045, "1-0:96.1.1",         "Device id, second"},
  {1050, "1-0:96.5.0",         "Status word"},
  {1055, "1-0:96.5.5",         "Status word, manufacturer"},
  {1060, "1-0:96.50.1*1",      "Manufacturer or hardware version"},
  {1065, "1-0:96.50.4*4",      "Parameter version"},
  {1070, "1-0:96.90.2*1",      "Firmware checksum"},
  {1075, "1-0:97.97.0",        "Error word"},
  {1080, "1-0:97.97.0*0",      "Error word, stored"},
  // energy: C 1 to 8, D 8 time integral, E tariff; a group F is a stored value of the past
  {1100, "1-0:1.8.0",          "Active energy import, total"},
  {1102, "1-0:1.8.1",          "Active energy import, tariff 1"},
  {1104, "1-0:1.8.2",          "Active energy import, tariff 2"},
  {1106, "1-0:1.8.3",          "Active energy import, tariff 3"},
  {1108, "1-0:1.8.4",          "Active energy import, tariff 4"},
  {1112, "1-0:1.8.0*96",       "Active energy import, past period"},
  {1120, "1-0:2.8.0",          "Active energy export, total"},
  {1122, "1-0:2.8.1",          "Active energy export, tariff 1"},
  {1124, "1-0:2.8.2",          "Active energy export, tariff 2"},
  {1126, "1-0:2.8.3",          "Active energy export, tariff 3"},
  {1128, "1-0:2.8.4",          "Active energy export, tariff 4"},
  {1132, "1-0:2.8.0*96",       "Active energy export, past period"},
  {1140, "1-0:3.8.0",          "Reactive energy import, total"},
  {1142, "1-0:3.8.1",          "Reactive energy import, tariff 1"},
  {1144, "1-0:3.8.2",          "Reactive energy import, tariff 2"},
  {1160, "1-0:4.8.0",          "Reactive energy export, total"},
  {1162, "1-0:4.8.1",          "Reactive energy export, tariff 1"},
  {1164, "1-0:4.8.2",          "Reactive energy export, tariff 2"},
  {1180, "1-0:5.8.0",          "Reactive energy, quadrant 1, total"},
  {1182, "1-0:5.8.1",          "Reactive energy, quadrant 1, tariff 1"},
  {1184, "1-0:5.8.2",          "Reactive energy, quadrant 1, tariff 2"},
  {1200, "1-0:6.8.0",          "Reactive energy, quadrant 2, total"},
  {1202, "1-0:6.8.1",          "Reactive energy, quadrant 2, tariff 1"},
  {1204, "1-0:6.8.2",          "Reactive energy, quadrant 2, tariff 2"},
  {1220, "1-0:7.8.0",          "Reactive energy, quadrant 3, total"},
  {1222, "1-0:7.8.1",          "Reactive energy, quadrant 3, tariff 1"},
  {1224, "1-0:7.8.2",          "Reactive energy, quadrant 3, tariff 2"},
  {1240, "1-0:8.8.0",          "Reactive energy, quadrant 4, total"},
  {1242, "1-0:8.8.1",          "Reactive energy, quadrant 4, tariff 1"},
  {1244, "1-0:8.8.2",          "Reactive energy, quadrant 4, tariff 2"},
  {1260, "1-0:9.8.0",          "Apparent energy import, total"},
  {1280, "1-0:10.8.0",         "Apparent energy export, total"},
  {1300, "1-0:15.8.0",         "Active energy, absolute, total"},
  {1320, "1-0:16.8.0",         "Active energy, import less export, total"},
  // power: D 7 instantaneous value
  {1400, "1-0:1.7.0",          "Active power import"},
  {1402, "1-0:1.7.1",          "Active power import, tariff 1"},
  {1405, "1-0:2.7.0",          "Active power export"},
  {1410, "1-0:3.7.0",          "Reactive power import"},
  {1415, "1-0:4.7.0",          "Reactive power export"},
  {1420, "1-0:9.7.0",          "Apparent power import"},
  {1425, "1-0:10.7.0",         "Apparent power export"},
  {1430, "1-0:15.7.0",         "Active power, absolute"},
  {1435, "1-0:16.7.0",         "Active power, import less export"},
  // powers of the phases: C 20, 40 and 60 above the quantity of all phases
  {1450, "1-0:21.7.0",         "Active power import, phase L1"},
  {1452, "1-0:22.7.0",         "Active power export, phase L1"},
  {1454, "1-0:23.7.0",         "Reactive power import, phase L1"},
  {1456, "1-0:24.7.0",         "Reactive power export, phase L1"},
  {1458, "1-0:29.7.0",         "Apparent power import, phase L1"},
  {1460, "1-0:30.7.0",         "Apparent power export, phase L1"},
  {1462, "1-0:36.7.0",         "Active power, import less export, phase L1"},
  {1470, "1-0:41.7.0",         "Active power import, phase L2"},
  {1472, "1-0:42.7.0",         "Active power export, phase L2"},
  {1474, "1-0:43.7.0",         "Reactive power import, phase L2"},
  {1476, "1-0:44.7.0",         "Reactive power export, phase L2"},
  {1478, "1-0:49.7.0",         "Apparent power import, phase L2"},
  {1480, "1-0:50.7.0",         "Apparent power export, phase L2"},
  {1482, "1-0:56.7.0",         "Active power, import less export, phase L2"},
  {1490, "1-0:61.7.0",         "Active power import, phase L3"},
  {1492, "1-0:62.7.0",         "Active power export, phase L3"},
  {1494, "1-0:63.7.0",         "Reactive power import, phase L3"},
  {1496, "1-0:64.7.0",         "Reactive power export, phase L3"},
  {1498, "1-0:69.7.0",         "Apparent power import, phase L3"},
  {1500, "1-0:70.7.0",         "Apparent power export, phase L3"},
  {1502, "1-0:76.7.0",         "Active power, import less export, phase L3"},
  // energies of the phases
  {1520, "1-0:21.8.0",         "Active energy import, phase L1"},
  {1522, "1-0:22.8.0",         "Active energy export, phase L1"},
  {1530, "1-0:41.8.0",         "Active energy import, phase L2"},
  {1532, "1-0:42.8.0",         "Active energy export, phase L2"},
  {1540, "1-0:61.8.0",         "Active energy import, phase L3"},
  {1542, "1-0:62.8.0",         "Active energy export, phase L3"},
  // voltage, current, power factor, frequency
  {1600, "1-0:11.7.0",         "Current"},
  {1605, "1-0:12.7.0",         "Voltage"},
  {1610, "1-0:13.7.0",         "Power factor"},
  {1615, "1-0:14.7.0",         "Frequency"},
  {1650, "1-0:31.7.0",         "Current, phase L1"},
  {1653, "1-0:32.7.0",         "Voltage, phase L1"},
  {1656, "1-0:33.7.0",         "Power factor, phase L1"},
  {1660, "1-0:51.7.0",         "Current, phase L2"},
  {1663, "1-0:52.7.0",         "Voltage, phase L2"},
  {1666, "1-0:53.7.0",         "Power factor, phase L2"},
  {1670, "1-0:71.7.0",         "Current, phase L3"},
  {1673, "1-0:72.7.0",         "Voltage, phase L3"},
  {1676, "1-0:73.7.0",         "Power factor, phase L3"},
  {1690, "1-0:91.7.0",         "Current, neutral"},
  // phase angles: E in tens the reference, in units the angle measured (0 to 2 voltages, 4 to 6 currents of L1 to L3)
  {1700, "1-0:81.7.1",         "Phase angle, voltage L2 to voltage L1"},
  {1705, "1-0:81.7.2",         "Phase angle, voltage L3 to voltage L1"},
  {1710, "1-0:81.7.4",         "Phase angle, current L1 to voltage L1"},
  {1715, "1-0:81.7.15",        "Phase angle, current L2 to voltage L2"},
  {1720, "1-0:81.7.26",        "Phase angle, current L3 to voltage L3"},
  // maximum demand: D 6
  {1750, "1-0:1.6.0",          "Active power import, maximum demand"},
  {1755, "1-0:2.6.0",          "Active power export, maximum demand"},
  // identifiers of the German meter makers
  {1900, "129-129:199.130.3",  "Manufacturer"},
  {1905, "129-129:199.130.5",  "Public key"},
  {1910, "129-129:199.240.6",  "Text of the display"},
  // abstract objects (A = 0), IEC 62056-61 clause on abstract objects: C 0 general, 1 clock, 96 service, 97 errors
  {8000, "0-0:0.2.0",          "Firmware version"},
  {8010, "0-0:0.1.2",          "Due date"},
  {8020, "0-0:1.0.0",          "Time of the meter"},
  {8030, "0-0:42.0.0",         "Logical device name"},
  {8040, "0-0:96.1.0",         "Serial number"},
  {8045, "0-0:96.1.1",         "Equipment identifier"},
  {8050, "0-0:96.1.7",         "Meter model"},
  {8055, "0-0:96.1.255",       "Serial number of the meter's owner"},
  {8060, "0-0:96.5.0",         "Status word, abstract"},
  {8070, "0-0:96.8.0",         "Operating time"},
  {8080, "0-0:96.7.21",        "Power failures"},
  {8085, "0-0:96.7.9",         "Long power failures"},
  {8090, "0-0:96.13.0",        "Text message"},
  {8100, "0-0:96.14.0",        "Active tariff"},
  {8110, "0-0:97.97.0",        "Error flags"},
  {8120, "0-0:25.9.0",         "Push list"},
};

// EN 13757-3, data and value information blocks: VIF 03 Wh, 06 kWh, 0E MJ, 13 l, 14 10 l, 15 100 l, 2B W, 3B l/h, 59 to
// 5B and 5D to 5F flow and return temperature, 61 and 62 their difference, 6C date, 6D time, 6E units, 78 number; DIF 02
// to 07 binary, 0A to 0E BCD, 40 more the value of the set date. Identifiers by EN 13757-1. Ordered by ID.
constexpr cBlockRow kBlocks[] = {
  // heat (A = 6): C 1 energy, 2 volume, 8 power, 9 flow rate, 10 to 12 temperatures; D 0 current value, 2 set date value
  {2000, "6-0:1.0.0",    "Heat energy",                          "hH",  "05",         "0C"},
  {2020, "6-0:1.0.0",    "Heat energy",                          "hH",  "06",         "04,0C,0E"},
  {2040, "6-0:1.0.0",    "Heat energy",                          "hH",  "07",         "04,0C"},
  {2060, "6-0:1.0.0",    "Heat energy",                          "hH",  "0E",         "04,0C"},
  {2080, "6-0:1.0.0",    "Heat energy",                          "hH",  "0F",         "04,0C"},
  {2100, "6-0:1.2.0",    "Heat energy, set date",                "hH",  "06",         "44,4C"},
  {2120, "6-0:1.2.0",    "Heat energy, set date",                "hH",  "0E",         "44,4C"},
  {2140, "6-0:2.0.0",    "Heat volume",                          "hH",  "13",         "04,0C"},
  {2160, "6-0:2.0.0",    "Heat volume",                          "hH",  "14",         "04,0C"},
  {2180, "6-0:2.0.0",    "Heat volume",                          "hH",  "15",         "04,0C"},
  {2200, "6-0:2.2.0",    "Heat volume, set date",                "hH",  "14",         "44,4C"},
  {2220, "6-0:2.2.0",    "Heat volume, set date",                "hH",  "15",         "44,4C"},
  {2240, "6-0:8.0.0",    "Heat power",                           "hH",  "2B",         "04,0B"},
  {2260, "6-0:8.0.0",    "Heat power",                           "hH",  "2D",         "02,04,0B"},
  {2280, "6-0:8.0.0",    "Heat power",                           "hH",  "2E",         "04,0B"},
  {2300, "6-0:9.0.0",    "Heat flow rate",                       "hH",  "3B",         "02,04,0B"},
  {2320, "6-0:9.0.0",    "Heat flow rate",                       "hH",  "3E",         "04,05"},
  {2340, "6-0:10.0.0",   "Heat flow temperature",                "hH",  "59",         "02,0A"},
  {2360, "6-0:10.0.0",   "Heat flow temperature",                "hH",  "5A",         "02,0A"},
  {2380, "6-0:10.0.0",   "Heat flow temperature",                "hH",  "5B",         "02,05,0A"},
  {2400, "6-0:11.0.0",   "Heat return temperature",              "hH",  "5D",         "02,0A"},
  {2420, "6-0:11.0.0",   "Heat return temperature",              "hH",  "5E",         "02,0A"},
  {2440, "6-0:11.0.0",   "Heat return temperature",              "hH",  "5F",         "02,05,0A"},
  {2460, "6-0:12.0.0",   "Heat temperature difference",          "hH",  "61",         "02,04,0B,0A"},
  {2480, "6-0:12.0.0",   "Heat temperature difference",          "hH",  "62",         "02,0A"},
  // cooling (A = 5): as heat
  {3000, "5-0:1.0.0",    "Cooling energy",                       "cC",  "06",         "04,0C"},
  {3020, "5-0:1.0.0",    "Cooling energy",                       "cC",  "0E",         "04,0C"},
  {3040, "5-0:1.2.0",    "Cooling energy, set date",             "cC",  "06",         "44,4C"},
  {3060, "5-0:2.0.0",    "Cooling volume",                       "cC",  "13",         "04,0C"},
  {3080, "5-0:2.0.0",    "Cooling volume",                       "cC",  "14",         "04,0C"},
  {3100, "5-0:8.0.0",    "Cooling power",                        "cC",  "2B",         "04"},
  {3120, "5-0:8.0.0",    "Cooling power",                        "cC",  "2D",         "02,04,0B"},
  {3140, "5-0:9.0.0",    "Cooling flow rate",                    "cC",  "3B",         "02,04,0B"},
  {3160, "5-0:10.0.0",   "Cooling flow temperature",             "cC",  "59",         "02,0A"},
  {3180, "5-0:11.0.0",   "Cooling return temperature",           "cC",  "5D",         "02,0A"},
  {3200, "5-0:12.0.0",   "Cooling temperature difference",       "cC",  "61",         "02,0A"},
  // gas (A = 7): C 3 volume at measuring conditions, F 101 the last billing period
  {4000, "7-0:3.0.0",    "Gas volume",                           "G",   "13",         "04,0C"},
  {4020, "7-0:3.0.0",    "Gas volume",                           "G",   "14",         "04,0C"},
  {4040, "7-0:3.0.0*101", "Gas volume, last period",              "G",   "13",         "44,4C"},
  {4060, "7-0:3.0.0*101", "Gas volume, last period",              "G",   "14",         "44,4C"},
  // cold water (A = 8): C 1 volume, 2 flow rate
  {5000, "8-0:1.0.0",    "Water volume",                         "wK",  "13",         "04,0C"},
  {5020, "8-0:1.0.0",    "Water volume",                         "wK",  "14",         "04,0C"},
  {5040, "8-0:1.0.0",    "Water volume",                         "wK",  "15",         "04,0C"},
  {5060, "8-0:1.2.0",    "Water volume, set date",               "wK",  "13",         "44,4C"},
  {5080, "8-0:1.2.0",    "Water volume, set date",               "wK",  "15",         "44,4C"},
  {5100, "8-0:2.0.0",    "Water flow rate",                      "wK",  "3B",         "02,04"},
  // hot water (A = 9): as cold water, C 3 temperature
  {6000, "9-0:1.0.0",    "Hot water volume",                     "W",   "13",         "04,0C"},
  {6020, "9-0:1.0.0",    "Hot water volume",                     "W",   "14",         "04,0C"},
  {6040, "9-0:1.2.0",    "Hot water volume, set date",           "W",   "13",         "44,4C"},
  {6060, "9-0:2.0.0",    "Hot water flow rate",                  "W",   "3B",         "02,04"},
  {6080, "9-0:3.0.0",    "Hot water temperature",                "W",   "5A",         "02"},
  // heat cost allocators (A = 4): C 1 units
  {7000, "4-0:1.0.0",    "Heat cost units",                      "V",   "6E",         "02,03,04"},
  {7020, "4-0:1.2.0",    "Heat cost units, set date",            "V",   "6E",         "42,43,44"},
  // meters of any medium
  {8500, "0-0:0.1.2",    "Due date",                             "",    "6C",         "42"},
  {8510, "0-0:1.0.0",    "Time of the meter",                    "",    "6D",         "04"},
  {8520, "0-0:96.1.0",   "Serial number",                        "",    "78",         "04,07,0C"},
  {8530, "0-0:96.8.0",   "Operating time",                       "",    "23",         "02,04"},
  {8540, "0-0:96.8.0",   "Operating time",                       "",    "27",         "02,0A"},
  {8550, "0-0:97.97.0",  "Error flags",                          "",    "FD 17",      "01,02,03,04"},
  // electricity (A = 1): tariffs are the DIFE's bits 4 and 5 (10, 20), export its bit 6 (40)
  {9000, "1-0:1.8.0",    "Active energy import, total",          "E",   "03",         "04,05,06,07,0C"},
  {9010, "1-0:1.8.0",    "Active energy import, total",          "E",   "04",         "04,06,0C,0E"},
  {9020, "1-0:1.8.0",    "Active energy import, total",          "E",   "05",         "04,0C"},
  {9030, "1-0:1.8.0",    "Active energy import, total",          "E",   "06",         "04,0C"},
  {9040, "1-0:1.8.1",    "Active energy import, tariff 1",       "E",   "03",         "84 10,85 10,87 10,8C 10"},
  {9050, "1-0:1.8.1",    "Active energy import, tariff 1",       "E",   "04",         "84 10,8C 10,8E 10"},
  {9060, "1-0:1.8.2",    "Active energy import, tariff 2",       "E",   "03",         "84 20,85 20,87 20,8C 20"},
  {9070, "1-0:1.8.2",    "Active energy import, tariff 2",       "E",   "04",         "84 20,8C 20,8E 20"},
  {9080, "1-0:2.8.0",    "Active energy export, total",          "E",   "03",         "84 40,85 40,87 40,8C 40"},
  {9090, "1-0:2.8.0",    "Active energy export, total",          "E",   "04",         "84 40,8C 40,8E 40"},
  {9100, "1-0:2.8.0",    "Active energy export, total",          "E",   "83 3C",      "04,07,0C"},
  {9110, "1-0:16.7.0",   "Active power, import less export",     "E",   "2A",         "04,0C"},
  {9120, "1-0:16.7.0",   "Active power, import less export",     "E",   "2B",         "02,04,0C"},
  {9130, "1-0:16.7.0",   "Active power, import less export",     "E",   "2E",         "05"},
  {9140, "1-0:12.7.0",   "Voltage",                              "E",   "FD 48",      "02,0A"},
  {9150, "1-0:11.7.0",   "Current",                              "E",   "FD 59",      "03,04"},
};

// SunSpec information models 201 to 204 (meters, integer registers) behind the common model at 40000, registers counted
// from 0. Values need the scale factors that stand behind them. Ordered by ID.
constexpr cRegisterRow kRegisters[] = {
  {9500, "1-0:11.7.0", "Current",                                    "40071"},
  {9505, "1-0:31.7.0", "Current, phase L1",                          "40072"},
  {9510, "1-0:51.7.0", "Current, phase L2",                          "40073"},
  {9515, "1-0:71.7.0", "Current, phase L3",                          "40074"},
  {9520, "1-0:32.7.0", "Voltage, phase L1",                          "40077"},
  {9525, "1-0:52.7.0", "Voltage, phase L2",                          "40078"},
  {9530, "1-0:72.7.0", "Voltage, phase L3",                          "40079"},
  {9535, "1-0:14.7.0", "Frequency",                                  "40085"},
  {9540, "1-0:16.7.0", "Active power, import less export",           "40087"},
  {9545, "1-0:2.8.0",  "Active energy export, total",                "40107"},
  {9550, "1-0:1.8.0",  "Active energy import, total",                "40115"},
};
// clang-format on

// How many rules a row stands for.
constexpr std::size_t CountRules(const cBlockRow& row) {
  const std::string_view difs = row.difs;
  std::size_t count = 1;
  for (const char character : difs) count += character == ',' ? 1 : 0;
  return row.media.empty() ? count : count * row.media.size();
}
template <typename Row>
constexpr std::size_t CountRules(const Row&) {
  return 1;
}

// Within the shipped range, and each row's rules before the next row's.
template <typename Row, std::size_t N>
constexpr bool IdsAscend(const Row (&rows)[N]) {
  unsigned long long free = kFirstDefaultId;
  for (const Row& row : rows) {
    if (row.id < free) return false;
    free = row.id + CountRules(row);
  }
  return free <= kEndOfDefaultIds;
}
static_assert(IdsAscend(kIdentifiers) && IdsAscend(kBlocks) && IdsAscend(kRegisters));

void AddBlocks(const cBlockRow& row, cObisMap& map) {
  unsigned long long id = row.id;
  for (const std::string& dif : vorn::cHelper::GetStringTokens(row.difs, ",")) {
    const std::string blocks = "dif=" + dif + ",vif=" + row.vif;
    if (row.media.empty()) map.Add({id++, row.name, row.obis, "protocol=mbus," + blocks});
    for (const char medium : row.media)
      map.Add({id++, row.name, row.obis, std::string("protocol=mbus,medium=") + medium + "," + blocks});
  }
}

}  // namespace

cObisMap MakeDefaultRules() {
  cObisMap map;
  for (const cIdentifierRow& row : kIdentifiers) map.Add({row.id, row.name, row.obis, "protocol=dlms"});
  for (const cBlockRow& row : kBlocks) AddBlocks(row, map);
  for (const cRegisterRow& row : kRegisters)
    map.Add({row.id, row.name, row.obis, std::string("protocol=modbus,register=") + row.reg});
  return map;
}

std::optional<unsigned long long> FreeRuleId(const cObisMap& map) {
  if (map.GetEntries().empty()) return 1;
  const unsigned long long largest = map.GetEntries().rbegin()->first;
  if (largest == std::numeric_limits<unsigned long long>::max()) return std::nullopt;
  const bool isShipped = largest + 1 >= kFirstDefaultId && largest + 1 < kEndOfDefaultIds;
  return isShipped ? kEndOfDefaultIds : largest + 1;
}

}  // namespace tav::rules
