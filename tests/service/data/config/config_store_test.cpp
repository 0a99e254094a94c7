// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/config/config_store.h>

#include <SQLiteCpp/Exception.h>

#include <tests/service/data/config/config_world.h>

namespace tav::data {
namespace {

using testing::HasSubstr;

class ConfigStore : public StoreFixture {
 protected:
  void SetUp() override {
    Open();
    cPushTarget target = Target("cloud", 3);
    cCollectorConfig collector = Collector();
    collector.pushTargetIdx = 3;
    Change([&](cConfigStore& config, const cPlace& at) {
      config.SetInterface(Interface());
      config.SetPushTarget(target, at);
      config.SetMeter(With(Meter(), collector), at);
      config.SetTemplate("t", Template("t").ToRecord());
    });
    ASSERT_TRUE(m_committed);
  }

  void Change(const std::function<void(cConfigStore& config, const cPlace& at)>& change) {
    cConfigFaults faults;
    const cFault fault = m_store->Change([&](cTables& tables) {
      change(tables.config, cPlace(faults));
      m_committed = faults.IsEmpty();
      return m_committed;
    });
    ASSERT_FALSE(fault) << fault.text;
  }

  bool m_committed = false;
};

// Whoever writes to the file, these hold.
TEST_F(ConfigStore, TheFileItselfKeepsToTheKeys) {
  const struct {
    const char* sql;
    const char* fault;
  } cases[] = {
      {"INSERT INTO interface VALUES('', '', 1)", "CHECK"},
      {"INSERT INTO interface VALUES('RS232', '', 1)", "UNIQUE"},
      {"UPDATE interface SET enabled=2", "CHECK"},
      {"UPDATE interface SET options=NULL", "NOT NULL"},
      {"DELETE FROM interface", "FOREIGN KEY"},
      {"UPDATE meter_config SET meter_id=''", "CHECK"},
      {"UPDATE meter_config SET interface_name='none'", "FOREIGN KEY"},
      {"INSERT INTO meter_config SELECT 9, meter_id, medium, mfct, addr, key, vendor, interface_name, "
       "interface_protocol, interface_options, 0, 0 FROM meter_config",
       "UNIQUE"},
      {"UPDATE collector SET addr=''", "CHECK"},
      {"UPDATE collector SET event_type=''", "CHECK"},
      {"UPDATE collector SET obis_ids=''", "CHECK"},
      {"UPDATE collector SET push_random_offset=65536", "CHECK"},
      {"UPDATE collector SET push_target=4", "FOREIGN KEY"},
      {"UPDATE collector SET meter=99", "FOREIGN KEY"},
      {"DELETE FROM push_target", "FOREIGN KEY"},
      {"UPDATE push_target SET collect=51", "CHECK"},
      {"UPDATE push_target SET collect=0", "CHECK"},
      {"UPDATE push_target SET maxruntime=4", "CHECK"},
      {"UPDATE push_target SET idx=0", "CHECK"},
      {"UPDATE push_target SET host=''", "CHECK"},
      {"INSERT INTO meter_template(name, record) VALUES('t', x'00')", "UNIQUE"},
      {"UPDATE meter_template SET name=''", "CHECK"},
  };
  SQLite::Database file(Options().file, SQLite::OPEN_READWRITE);
  file.exec("PRAGMA foreign_keys=ON");
  for (const auto& [sql, fault] : cases) try {
      file.exec(sql);
      ADD_FAILURE() << sql;
    } catch (const SQLite::Exception& exception) {
      EXPECT_THAT(exception.what(), HasSubstr(fault)) << sql;
    }
}

TEST_F(ConfigStore, ACollectorGoesWithItsMeter) {
  cRemoved removed;
  Change([&](cConfigStore& config, const cPlace& at) { config.DeleteMeter({"M1", "", ""}, at, removed); });
  EXPECT_TRUE(m_committed);
  EXPECT_EQ(removed.size(), 2u);
  EXPECT_EQ(One("SELECT count(*) FROM collector"), "0");
}

TEST_F(ConfigStore, AMeterAndACollectorKeepTheirRows) {
  const std::string before = One("SELECT m.id || '/' || c.id FROM meter_config m, collector c");
  cMeterConfig meter = With(Meter(), Collector());
  meter.vendor = "another";
  Change([&](cConfigStore& config, const cPlace& at) { config.SetMeter(meter, at); });
  EXPECT_EQ(One("SELECT m.id || '/' || c.id FROM meter_config m, collector c"), before);
  EXPECT_EQ(One("SELECT vendor FROM meter_config"), "another");
  EXPECT_EQ(One("SELECT push_target IS NULL FROM collector"), "1");
}

TEST_F(ConfigStore, WhatIsTakenBackWasNeverThere) {
  Change([](cConfigStore& config, const cPlace& at) {
    config.SetInterface(Interface("SIM"));
    EXPECT_EQ(config.GetInterfaces("").size(), 2u);
    at.Fault("after all not");
  });
  EXPECT_FALSE(m_committed);
  EXPECT_EQ(One("SELECT count(*) FROM interface"), "1");
  // The connection goes on as if nothing had been.
  Change([](cConfigStore& config, const cPlace&) { config.SetInterface(Interface("MBUS")); });
  EXPECT_EQ(One("SELECT group_concat(name) FROM interface"), "MBUS,RS232");
}

// Texts are kept byte for byte.
TEST_F(ConfigStore, KeepsTextsAsTheyAre) {
  cMeterConfig meter = Meter("M2");
  meter.key = std::string("a\0b\xFF", 4);
  meter.vendor = "\xC3\xA4\n";
  Change([&](cConfigStore& config, const cPlace& at) { config.SetMeter(meter, at); });
  Change([&](cConfigStore& config, const cPlace&) {
    const cMeterConfig found = config.GetMeters("M2").at(0);
    EXPECT_EQ(found.key, meter.key);
    EXPECT_EQ(found.vendor, meter.vendor);
  });
}

}  // namespace
}  // namespace tav::data
