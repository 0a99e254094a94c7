// SPDX-License-Identifier: Apache-2.0
// cDatabase: the gateway's database file, opened by one service. Nothing here throws; what stands in the way is a
// cFault. Derive a store of tables from it (store.h).
//
// All writing is done in whole transactions: what one change does is committed together, or none of it is there. After
// a fault the file is opened anew when that can help, so that work goes on once its cause is gone. A file that is
// damaged or of somebody else is never changed, and no file is ever deleted.
//
// docs/storage.md tells about durability, limits and recovery.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include <gateway/database/fault.h>

struct sqlite3;
namespace SQLite {
class Database;
}

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

class cDatabase {
 public:
  // Size of the write-ahead log, in pages of 4 KiB: from the first on an idle service empties it, from the second on a
  // commit does, beyond the third nothing is stored until the process that holds it full lets go.
  static constexpr int kWalIdlePages = 256;
  static constexpr int kWalBusyPages = 4096;
  static constexpr int kWalMaxPages = 16384;
  // How long to stand still for another process's lock, in milliseconds: when the file is opened, and for seldom
  // changes; and for all others.
  static constexpr int kOpenPatience = 1000;
  static constexpr int kPatience = 10;
  // Failures one after the other before the file is opened anew.
  static constexpr unsigned int kReopenAfter = 10;
  // A file up to this size is checked whole when it is opened, a larger one only where it is read.
  static constexpr std::uint64_t kMaxCheckedBytes = std::uint64_t{32} << 20;

  explicit cDatabase(cDataOptions options);
  virtual ~cDatabase();
  cDatabase(const cDatabase&) = delete;
  cDatabase& operator=(const cDatabase&) = delete;

  // Opens the file, makes it when there is none, and brings its tables up to date. The directory must be there.
  cFault Open();

  // Does it again while another process holds the lock, for kOpenPatience at most. For what happens seldom and must not
  // fail for that: the thread stands still meanwhile.
  static cFault Patiently(const std::function<cFault()>& work);

  // Somebody else has written to the tables: what is remembered of them is read again.
  cFault Forget();

  // Whether an idle moment should be used for Checkpoint, which moves the log into the database file.
  bool NeedsCheckpoint() const { return m_walPages >= kWalIdlePages; }
  cFault Checkpoint();

  const cDataOptions& GetOptions() const { return m_options; }
  std::uint64_t GetFileBytes() const;
  std::uint64_t GetWalBytes() const;

 protected:
  // In a transaction, which is committed when the function says true, and else taken back.
  cFault InTransaction(const std::function<bool()>& change);
  cFault WithTables(const std::function<void()>& ask);

 private:
  struct cConnection;

  // The statements, and what is remembered of the tables: made anew after a fault, since a statement that failed
  // half-way would keep a lock, and numbers that are remembered may never have been committed.
  virtual void MakeTables(SQLite::Database& database) = 0;
  virtual void DropTables() = 0;
  virtual bool HasTables() const = 0;

  cFault TryToOpen();
  cFault Guarded(const std::function<cFault()>& work);
  cFault Ready();
  cFault Prepare();
  void MakeStatements();
  void Configure();
  cFault CheckPlace();
  cFault CheckLog();
  void Recover(eFault kind);
  void MoveLog(int mode);
  static int OnCommit(void* self, sqlite3* database, const char* name, int pages);

  cDataOptions m_options;
  std::unique_ptr<cConnection> m_connection;
  int m_walPages = 0;
  unsigned int m_failures = 0;  // one after the other
};

}  // namespace tav::data
