// SPDX-License-Identifier: Apache-2.0
#include <gateway/database/database.h>

#include <SQLiteCpp/Database.h>
#include <SQLiteCpp/Exception.h>
#include <sqlite3.h>

#include <chrono>
#include <filesystem>
#include <optional>
#include <thread>
#include <utility>

#include <gateway/database/schema.h>

namespace tav::data {

namespace {

constexpr int kOpenFlags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
constexpr int kPageSize = 4096;

std::uint64_t SizeOf(const std::string& file) {
  std::error_code error;
  const std::uintmax_t size = std::filesystem::file_size(file, error);
  return error ? 0 : size;
}

}  // namespace

struct cDatabase::cConnection {
  explicit cConnection(const std::string& file) : database(file, kOpenFlags, kOpenPatience) {}

  void MakeStatements() {
    begin.reset();
    commit.reset();
    rollback.reset();
    begin.emplace(database, "BEGIN IMMEDIATE");
    commit.emplace(database, "COMMIT");
    rollback.emplace(database, "ROLLBACK");
  }
  static void Run(SQLite::Statement& statement) {
    statement.exec();
    statement.reset();
  }

  SQLite::Database database;
  bool prepared = false;
  std::optional<SQLite::Statement> begin;
  std::optional<SQLite::Statement> commit;
  std::optional<SQLite::Statement> rollback;
};

cDatabase::cDatabase(cDataOptions options) : m_options(std::move(options)) {}

cDatabase::~cDatabase() = default;

cFault cDatabase::Open() {
  // A file whose journal is just being changed, by a service that starts too, is not waited for by the database.
  return Patiently([this] { return TryToOpen(); });
}

cFault cDatabase::Patiently(const std::function<cFault()>& work) {
  using namespace std::chrono;
  const auto end = steady_clock::now() + milliseconds(kOpenPatience);
  cFault fault = work();
  for (; fault.kind == eFault::Busy && steady_clock::now() < end; fault = work())
    std::this_thread::sleep_for(milliseconds(kPatience));
  return fault;
}

cFault cDatabase::TryToOpen() {
  return Guarded([this] {
    DropTables();
    m_connection = std::make_unique<cConnection>(m_options.file);
    return Prepare();
  });
}

cFault cDatabase::InTransaction(const std::function<bool()>& change) {
  return Guarded([&] {
    if (cFault fault = Ready()) return fault;
    if (cFault fault = CheckPlace()) return fault;
    if (cFault fault = CheckLog()) return fault;
    cConnection::Run(*m_connection->begin);
    const bool good = change();
    // Some failed statements have ended the transaction themselves.
    const bool open = sqlite3_get_autocommit(m_connection->database.getHandle()) == 0;
    if (good || open) cConnection::Run(good ? *m_connection->commit : *m_connection->rollback);
    m_failures = 0;
    return cFault();
  });
}

cFault cDatabase::WithTables(const std::function<void()>& ask) {
  return Guarded([&] {
    if (cFault fault = Ready()) return fault;
    ask();
    return cFault();
  });
}

cFault cDatabase::Forget() {
  return Guarded([this] {
    if (cFault fault = Ready()) return fault;
    MakeStatements();
    return cFault();
  });
}

void cDatabase::MakeStatements() {
  DropTables();
  m_connection->MakeStatements();
  MakeTables(m_connection->database);
}

cFault cDatabase::Checkpoint() {
  return Guarded([this] {
    if (cFault fault = Ready()) return fault;
    MoveLog(SQLITE_CHECKPOINT_PASSIVE);
    return cFault();
  });
}

std::uint64_t cDatabase::GetFileBytes() const { return SizeOf(m_options.file); }

std::uint64_t cDatabase::GetWalBytes() const { return SizeOf(m_options.file + "-wal"); }

cFault cDatabase::Guarded(const std::function<cFault()>& work) {
  cFault fault;
  try {
    fault = work();
  } catch (const SQLite::Exception& exception) {
    fault = FaultOf(exception, m_options.file);
  } catch (const std::exception& exception) {
    fault = {eFault::Internal, "database '" + m_options.file + "': " + exception.what()};
  }
  if (fault) Recover(fault.kind);
  return fault;
}

cFault cDatabase::Ready() {
  if (m_connection != nullptr && HasTables()) return {};
  DropTables();
  m_connection = std::make_unique<cConnection>(m_options.file);
  return Prepare();
}

// Everything before Migrate only looks.
cFault cDatabase::Prepare() {
  SQLite::Database& database = m_connection->database;
  const std::string name = "database '" + m_options.file + "' ";
  if (sqlite3_db_readonly(database.getHandle(), "main") == 1) return {eFault::ReadOnly, name + "cannot be written"};
  if (!IsOurs(database)) return {eFault::Foreign, name + "belongs to another program"};
  const int version = GetSchemaVersion(database);
  if (version > kSchemaVersion)
    return {eFault::Newer, name + "has schema version " + std::to_string(version) +
                               ", this program knows versions up to " + std::to_string(kSchemaVersion)};
  if (GetFileBytes() <= kMaxCheckedBytes) {
    const std::string found = database.execAndGet("PRAGMA quick_check(1)").getString();
    if (found != "ok") return {eFault::Corrupt, name + "is damaged (" + found + ")"};
  }
  database.exec("PRAGMA page_size=" + std::to_string(kPageSize));
  if (database.execAndGet("PRAGMA journal_mode=WAL").getString() != "wal")
    return {eFault::Io, name + "cannot keep a write-ahead log in its directory"};
  Configure();
  Migrate(database);
  MakeStatements();
  m_connection->prepared = true;
  sqlite3_busy_timeout(database.getHandle(), kPatience);
  return {};
}

void cDatabase::Configure() {
  SQLite::Database& database = m_connection->database;
  database.exec(m_options.durability == eDurability::Full ? "PRAGMA synchronous=FULL" : "PRAGMA synchronous=NORMAL");
  database.exec("PRAGMA wal_autocheckpoint=0");
  database.exec("PRAGMA foreign_keys=ON");
  database.exec("PRAGMA journal_size_limit=" + std::to_string(std::int64_t{kWalBusyPages} * kPageSize));
  database.exec("PRAGMA cache_size=-8000");
  database.exec("PRAGMA temp_store=MEMORY");
  if (m_options.maxBytes != 0) database.exec("PRAGMA max_page_count=" + std::to_string(m_options.maxBytes / kPageSize));
  m_walPages = static_cast<int>(GetWalBytes() / kPageSize);
  sqlite3_wal_hook(database.getHandle(), &cDatabase::OnCommit, this);
}

// What would be written to a file that nobody can open any more is lost with the process.
cFault cDatabase::CheckPlace() {
  int moved = 0;
  sqlite3_file_control(m_connection->database.getHandle(), "main", SQLITE_FCNTL_HAS_MOVED, &moved);
  if (moved == 0) return {};
  return {eFault::Moved, "database '" + m_options.file +
                             "' was removed or replaced while in use: put it back, or restart the service"};
}

cFault cDatabase::CheckLog() {
  if (m_walPages < kWalBusyPages) return {};
  // Without waiting: others may only keep the log from being emptied, not the service from going on.
  sqlite3* const handle = m_connection->database.getHandle();
  sqlite3_busy_timeout(handle, 0);
  MoveLog(SQLITE_CHECKPOINT_RESTART);
  sqlite3_busy_timeout(handle, kPatience);
  if (m_walPages < kWalMaxPages) return {};
  return {eFault::Full, "database '" + m_options.file + "' takes no more: its write-ahead log has " +
                            std::to_string(m_walPages) +
                            " pages and cannot be emptied while another process keeps a transaction open"};
}

// A file that fails is kept for a while: when its log is read again, what was refused last could turn up. One that
// fails again and again may be another one by now, of a disk that was taken out and put back.
void cDatabase::Recover(eFault kind) {
  if (m_connection == nullptr) return;
  const bool passes = kind == eFault::Busy || kind == eFault::Full || kind == eFault::Moved;
  if (!passes) ++m_failures;
  const bool keep = m_connection->prepared && kind != eFault::Corrupt && m_failures < kReopenAfter;
  try {
    DropTables();
    if (sqlite3_get_autocommit(m_connection->database.getHandle()) == 0) m_connection->database.exec("ROLLBACK");
    if (keep) MakeStatements();
  } catch (const SQLite::Exception&) {
    DropTables();
  }
  if (!HasTables()) m_connection.reset();
}

void cDatabase::MoveLog(int mode) {
  int pages = 0;
  int moved = 0;
  sqlite3* const handle = m_connection->database.getHandle();
  const int result = sqlite3_wal_checkpoint_v2(handle, nullptr, mode, &pages, &moved);
  if (result != SQLITE_OK && result != SQLITE_BUSY) throw SQLite::Exception(handle, result);
  // A log that was moved whole is written from its start again, unless somebody still reads it: then the next commit
  // tells its true size.
  if (result == SQLITE_OK && moved == pages) m_walPages = 0;
}

int cDatabase::OnCommit(void* self, sqlite3*, const char*, int pages) {
  static_cast<cDatabase*>(self)->m_walPages = pages;
  return SQLITE_OK;
}

}  // namespace tav::data
