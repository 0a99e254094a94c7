// SPDX-License-Identifier: Apache-2.0
// The SML driver between the gateway's services, and the telegrams on its line.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <gateway/driver/sml/ehz_driver.h>
#include <tests/driver/driver_world.h>
#include <tests/driver/input/pseudo_line.h>
#include <tests/driver/sml/sml_telegrams.h>

namespace tav::sml {

class EhzWorld : public DriverWorld<cEhzDriver, cEhzOptions> {
 protected:
  static inline const std::string kMeter = "0A015453540001020304";  // of the telegrams
  static inline const std::string kFirst = "0A015441560000000001";  // the simulation's meters
  static inline const std::string kSecond = "0A015441560000000002";

  EhzWorld() { m_options.interfaceName = "RS232"; }

  // ---- the driver
  // A meter on a line that the test plays.
  void ReadLine() {
    m_line = std::make_unique<cPseudoLine>(m_folder.File("line"));
    TakeInput(m_folder.File("line"));
  }
  void TakeInput(const std::string& text) {
    std::string error;
    ASSERT_TRUE(cInputSpec::Parse(text, m_options.input, error)) << error;
  }
  static vorn::cRecord Interface(const std::string& name, const std::string& options,
                                 const std::vector<std::string>& meters) {
    vorn::cRecord record = cInterfaceRecord(name, options, true).ToRecord();
    for (const std::string& id : meters) {
      cMeterConfig meter;
      meter.SetIdentification(id, "", "E", "");
      meter.SetInterfaceOptions(name, "SML", "");
      record.AppendRecordPar("meterconfig-record", meter.ToRecord());
    }
    return record;
  }
  // ---- a telegram on the line
  // The names of the values that are stored for it.
  std::string Store(const std::vector<std::uint64_t>& values) {
    std::vector<cTestEntry> entries;
    for (const std::uint64_t obis : values)
      entries.push_back({obis, "", "7262026565A0BC00", "621E", "52FF", "6201", ""});
    const std::size_t before = m_stored.size();
    EXPECT_TRUE(m_line->Write(Telegram(entries)));
    EXPECT_TRUE(Await([&] { return m_stored.size() > before; }));
    Settle();
    return m_stored.empty() ? "" : m_stored.back();
  }

  std::unique_ptr<cPseudoLine> m_line;
};

}  // namespace tav::sml
