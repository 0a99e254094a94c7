// SPDX-License-Identifier: Apache-2.0
// The vocabulary of the storage tests: readings made in a line, a store in a fresh folder, and what stands in its file.
#pragma once

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Statement.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <set>
#include <string>
#include <vector>

#include <gateway/service/data/data_store.h>
#include <tav/record/meter_record.h>
#include <tests/support/temp_folder.h>

namespace tav::data {

constexpr unsigned int kNoon = 1'700'000'000;

struct cValue {
  std::string obis;
  std::string text;
  std::string unit = "Wh";
};

inline cMeterRecord Reading(const std::string& meter, unsigned int time, const std::vector<cValue>& values) {
  cMeterRecord record("ehzif", "EMH", "E", meter, "ttyUSB0", "ok", time, cMeterTav::eTsMeterUtc, time - 1'600'000'000);
  record.SetInterfaceInfo("IR1", "SML", "baud=9600");
  for (const cValue& value : values)
    record.AddMeasurementEntry({value.obis, value.text, value.unit, time, cMeterTav::eTsMeterUtc});
  return record;
}

class StoreFixture : public testing::Test {
 protected:
  // Without waiting for the disk: most tests are about something else.
  cDataOptions Options() {
    cDataOptions options;
    options.file = m_folder.File("tav.db");
    options.durability = eDurability::Normal;
    return options;
  }

  void Open() { Open(Options()); }
  void Open(const cDataOptions& options) {
    m_store.reset();
    m_store = std::make_unique<cDataStore>(options);
    const cFault fault = m_store->Open();
    ASSERT_FALSE(fault) << fault.text;
  }

  cFault TryStore(const std::vector<vorn::cRecord>& records) {
    return m_store->Write([&](cTables& tables) {
      for (const vorn::cRecord& record : records) {
        cReadingView view;
        ASSERT_TRUE(view.Read(record)) << view.GetError();
        m_outcomes.push_back(tables.readings.Add(view));
      }
    });
  }
  void Store(const cMeterRecord& reading) { Store(reading.ToRecord()); }
  void Store(const vorn::cRecord& record) {
    const cFault fault = TryStore({record});
    ASSERT_FALSE(fault) << fault.text;
  }
  cReadingStore::eOutcome LastOutcome() const { return m_outcomes.back(); }

  // The first column of every row, seen by somebody who only has the file.
  std::vector<std::string> Ask(const std::string& sql) {
    SQLite::Database database(Options().file, SQLite::OPEN_READONLY);
    SQLite::Statement statement(database, sql);
    std::vector<std::string> rows;
    while (statement.executeStep()) rows.push_back(statement.getColumn(0).getString());
    return rows;
  }
  std::string One(const std::string& sql) {
    const std::vector<std::string> rows = Ask(sql);
    return rows.size() == 1 ? rows[0] : std::to_string(rows.size()) + " rows";
  }

  cTempFolder m_folder;
  std::unique_ptr<cDataStore> m_store;
  std::vector<cReadingStore::eOutcome> m_outcomes;
};

}  // namespace tav::data
