// SPDX-License-Identifier: Apache-2.0
// cDataStore: the database file, and what is stored in it. Nothing here throws; what stands in the way is a cFault.
//
// All writing is done in whole transactions: what the function given to Write has added is committed together, or none
// of it is there. After a fault the file is opened anew when that can help, so that work goes on once its cause is
// gone. A file that is damaged or of somebody else is never changed, and no file is ever deleted.
//
// docs/storage.md tells about durability, limits and recovery.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include <gateway/service/data/config/config_store.h>
#include <gateway/service/data/fault.h>
#include <gateway/service/data/profile/profile_query.h>
#include <gateway/service/data/profile/profile_store.h>
#include <gateway/service/data/query/meter_selection.h>
#include <gateway/service/data/query/stored_readings.h>
#include <gateway/service/data/storage/event_store.h>
#include <gateway/service/data/storage/reading_query.h>
#include <gateway/service/data/storage/reading_store.h>
#include <gateway/service/data/storage/value_store.h>

namespace tav::data {

enum class eDurability {
  Full,    // what is committed survives a power cut
  Normal,  // it survives the end of the process; a power cut may take the last commits, never parts of one
};

struct cDataOptions {
  std::string file;
  eDurability durability = eDurability::Full;
  std::uint64_t maxBytes = 0;  // of the database file, its log not counted; 0: no limit but the disk's
};

// The tables of an open database.
struct cTables {
  explicit cTables(SQLite::Database& connection)
      : database(connection),
        readings(database),
        query(database),
        events(database),
        values(database),
        config(database),
        meters(database),
        storedReadings(database, query),
        profiles(database, query),
        profileQuery(database, query) {
    readings.OnStored([this](std::int64_t meter, std::int64_t time) { profiles.Stored(meter, time); });
  }
  cTables(const cTables&) = delete;
  cTables& operator=(const cTables&) = delete;

  // Call before the commit: what was gathered beside the readings.
  void Flush() {
    readings.Flush();
    profiles.Flush();
  }

  SQLite::Database& database;
  cReadingStore readings;
  cReadingQuery query;
  cEventStore events;
  cValueStore values;
  cConfigStore config;
  cMeterSelection meters;
  cStoredReadings storedReadings;
  cProfileStore profiles;
  cProfileQuery profileQuery;
};

class cDataStore {
 public:
  // Size of the write-ahead log, in pages of 4 KiB: from the first on an idle service empties it, from the second on a
  // commit does, beyond the third nothing is stored until the process that holds it full lets go.
  static constexpr int kWalIdlePages = 256;
  static constexpr int kWalBusyPages = 4096;
  static constexpr int kWalMaxPages = 16384;
  // How long to stand still for another process's lock, in milliseconds: when the file is opened, and later.
  static constexpr int kOpenPatience = 1000;
  static constexpr int kPatience = 10;
  // Failures one after the other before the file is opened anew.
  static constexpr unsigned int kReopenAfter = 10;
  // A file up to this size is checked whole when it is opened, a larger one only where it is read.
  static constexpr std::uint64_t kMaxCheckedBytes = std::uint64_t{32} << 20;

  explicit cDataStore(cDataOptions options);
  ~cDataStore();
  cDataStore(const cDataStore&) = delete;
  cDataStore& operator=(const cDataStore&) = delete;

  // Opens the file, makes it when there is none, and brings its tables up to date. The directory must be there.
  cFault Open();
  cFault Write(const std::function<void(cTables&)>& add);
  // The same for what may turn out to be wrong on the way: when the function says false, all that it did is taken back,
  // and that is no fault. Not for readings, whose numbers are remembered.
  cFault Change(const std::function<bool(cTables&)>& change);
  cFault Read(const std::function<void(cTables&)>& ask);

  // Somebody else has written to the tables: what is remembered of them is read again.
  cFault Forget();

  // Whether an idle moment should be used for Checkpoint, which moves the log into the database file.
  bool NeedsCheckpoint() const { return m_walPages >= kWalIdlePages; }
  cFault Checkpoint();

  const cDataOptions& GetOptions() const { return m_options; }
  std::uint64_t GetFileBytes() const;
  std::uint64_t GetWalBytes() const;

 private:
  struct cConnection;

  cFault Guarded(const std::function<cFault()>& work);
  cFault Ready();
  cFault Prepare();
  void Configure();
  cFault CheckPlace();
  cFault CheckLog();
  void Recover(eFault kind);
  void MoveLog(int mode);
  static int OnCommit(void* self, struct sqlite3* database, const char* name, int pages);

  cDataOptions m_options;
  std::unique_ptr<cConnection> m_connection;
  int m_walPages = 0;
  unsigned int m_failures = 0;  // one after the other
};

}  // namespace tav::data
