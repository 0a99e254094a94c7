// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/data_store.h>

#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include <gateway/database/schema.h>
#include <tests/service/data/disk_sync.h>
#include <tests/service/data/store_fixture.h>

namespace tav::data {
namespace {

using testing::HasSubstr;

class DataStore : public StoreFixture {
 protected:
  cFault TryOpen() { return cDataStore(Options()).Open(); }
  cFault TryStoreOne(unsigned int time, const std::string& value = "1") {
    return TryStore({Reading("M", time, {{"1-0:1.8.0", value}}).ToRecord()});
  }
  std::string CountValues() { return One("SELECT count(*) FROM reading_values"); }
  void Execute(const std::string& sql) {
    SQLite::Database(Options().file, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE).exec(sql);
  }
  std::string ReadFile() {
    std::ifstream file(Options().file, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  void Overwrite(std::streamoff at, std::size_t size) {
    std::fstream file(Options().file, std::ios::binary | std::ios::in | std::ios::out);
    file.seekp(at);
    file << std::string(size, '\xA5');
  }
  // A file with enough readings in it that its tables have inner pages.
  void Fill() {
    Open();
    for (unsigned int i = 0; i < 500; ++i) ASSERT_FALSE(TryStoreOne(kNoon + i));
    m_store.reset();
  }
};

TEST_F(DataStore, MakesItsFileAndFindsItAgain) {
  Open();
  ASSERT_FALSE(TryStoreOne(kNoon));
  Open();
  EXPECT_EQ(CountValues(), "1");
  EXPECT_EQ(One("PRAGMA journal_mode"), "wal");
  EXPECT_EQ(One("PRAGMA user_version"), std::to_string(kSchemaVersion));
}

TEST_F(DataStore, LeavesOneWholeFileWhenItEnds) {
  Open();
  ASSERT_FALSE(TryStoreOne(kNoon));
  EXPECT_TRUE(std::filesystem::exists(Options().file + "-wal"));
  m_store.reset();
  EXPECT_FALSE(std::filesystem::exists(Options().file + "-wal"));
}

TEST_F(DataStore, EveryCommitIsOnTheDiskUnlessNormalIsAskedFor) {
  cDataOptions options = Options();
  options.durability = cDataOptions().durability;
  Open(options);
  ASSERT_FALSE(TryStoreOne(kNoon));
  for (unsigned int i = 1; i <= 5; ++i) {
    const unsigned int before = cDiskSync::GetCount();
    ASSERT_FALSE(TryStoreOne(kNoon + i));
    EXPECT_GT(cDiskSync::GetCount(), before);
  }
  options.durability = eDurability::Normal;
  Open(options);
  ASSERT_FALSE(TryStoreOne(kNoon + 10));
  const unsigned int before = cDiskSync::GetCount();
  for (unsigned int i = 11; i <= 15; ++i) ASSERT_FALSE(TryStoreOne(kNoon + i));
  EXPECT_EQ(cDiskSync::GetCount(), before);
}

TEST_F(DataStore, ADiskThatFailsToSyncRefusesAndRecovers) {
  cDataOptions options = Options();
  options.durability = eDurability::Full;
  Open(options);
  ASSERT_FALSE(TryStoreOne(kNoon));
  cFault fault;
  {
    const cDiskSync::cFailing failing;
    fault = TryStoreOne(kNoon + 1);
  }
  EXPECT_EQ(fault.kind, eFault::Io);
  EXPECT_THAT(fault.text, HasSubstr("input/output error"));
  EXPECT_EQ(CountValues(), "1");
  EXPECT_FALSE(TryStoreOne(kNoon + 2));
  EXPECT_EQ(CountValues(), "2");
}

TEST_F(DataStore, ADiskThatFailsAgainAndAgainIsOpenedAnewAndRecovers) {
  cDataOptions options = Options();
  options.durability = eDurability::Full;
  Open(options);
  ASSERT_FALSE(TryStoreOne(kNoon));
  {
    const cDiskSync::cFailing failing;
    for (unsigned int i = 1; i <= 2 * cDataStore::kReopenAfter; ++i) {
      EXPECT_EQ(TryStoreOne(kNoon + i).kind, eFault::Io);
    }
  }
  EXPECT_FALSE(TryStoreOne(kNoon + 100));
  EXPECT_EQ(One("SELECT count(*) FROM value WHERE time IN (1700000000, 1700000100)"), "2");
  EXPECT_EQ(One("PRAGMA integrity_check"), "ok");
}

// ---- transactions

TEST_F(DataStore, NothingOfATransactionThatFailedIsThere) {
  Open();
  const cFault fault = m_store->Write([&](cTables& tables) {
    cReadingView view;
    const vorn::cRecord form = Reading("M", kNoon, {{"1-0:1.8.0", "1"}}).ToRecord();
    ASSERT_TRUE(view.Read(form));
    tables.readings.Add(view);
    throw std::runtime_error("half-way");
  });
  EXPECT_EQ(fault.kind, eFault::Internal);
  EXPECT_THAT(fault.text, HasSubstr("half-way"));
  EXPECT_EQ(One("SELECT (SELECT count(*) FROM value)+(SELECT count(*) FROM reading)+(SELECT count(*) FROM meter)+"
                "(SELECT count(*) FROM series)"),
            "0");
  // The numbers that the dictionaries gave out meanwhile are forgotten too.
  ASSERT_FALSE(TryStoreOne(kNoon));
  EXPECT_EQ(One("SELECT meter FROM reading_values"), "M");
}

// ---- locked

TEST_F(DataStore, ALockedDatabaseRefusesAndGoesOnWhenItIsFree) {
  Open();
  SQLite::Database other(Options().file, SQLite::OPEN_READWRITE);
  other.exec("BEGIN EXCLUSIVE");
  const cFault fault = TryStoreOne(kNoon);
  EXPECT_EQ(fault.kind, eFault::Busy);
  EXPECT_THAT(fault.text, HasSubstr(Options().file));
  EXPECT_THAT(fault.text, HasSubstr("another process holds its lock"));
  other.exec("ROLLBACK");
  EXPECT_FALSE(TryStoreOne(kNoon));
  EXPECT_EQ(CountValues(), "1");
}

TEST_F(DataStore, ALockedDatabaseCanStillBeRead) {
  Open();
  ASSERT_FALSE(TryStoreOne(kNoon));
  SQLite::Database other(Options().file, SQLite::OPEN_READWRITE);
  other.exec("BEGIN EXCLUSIVE");
  EXPECT_FALSE(m_store->Read([](cTables& tables) { EXPECT_EQ(tables.query.CountValues(), 1u); }));
}

TEST_F(DataStore, SaysThatAnOldFileIsLockedWhenItCannotBringItUpToDate) {
  {
    SQLite::Database old(Options().file, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
    old.exec("PRAGMA journal_mode=WAL");
    Migrate(old, 1);
  }
  SQLite::Database other(Options().file, SQLite::OPEN_READWRITE);
  other.exec("BEGIN EXCLUSIVE");
  EXPECT_EQ(TryOpen().kind, eFault::Busy);
  other.exec("ROLLBACK");
  EXPECT_FALSE(TryOpen());
}

// ---- full

TEST_F(DataStore, AFullDatabaseRefusesWholeTransactionsAndGoesOnWhenThereIsRoom) {
  cDataOptions options = Options();
  options.maxBytes = 80 * 4096;
  Open(options);
  unsigned int stored = 0;
  const std::string large(3000, 'x');
  cFault fault;
  while (!(fault = TryStoreOne(kNoon + stored, large))) ++stored;
  EXPECT_GT(stored, 0u);
  EXPECT_EQ(fault.kind, eFault::Full);
  EXPECT_THAT(fault.text, HasSubstr("no room left"));
  EXPECT_EQ(TryStoreOne(kNoon + stored, large).kind, eFault::Full);
  EXPECT_EQ(CountValues(), std::to_string(stored));
  EXPECT_FALSE(m_store->Read([&](cTables& tables) { EXPECT_EQ(tables.query.CountValues(), stored); }));
  // Room is made, as an operator would.
  Execute("DELETE FROM value WHERE time=" + std::to_string(kNoon));
  EXPECT_FALSE(TryStoreOne(kNoon + stored, large));
  EXPECT_EQ(One("PRAGMA integrity_check"), "ok");
}

// What a child process found, with files limited to some bytes: a disk that is full, for one process only.
int InChildWithFileLimit(rlim_t bytes, const std::function<int()>& check) {
  const pid_t child = fork();
  if (child == 0) {
    signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{bytes, RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &limit);
    _exit(check());
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST_F(DataStore, AFileThatMayNotGrowRefusesAndRecoversWithoutARestart) {
  const int result = InChildWithFileLimit(400'000, [&] {
    cDataStore store(Options());
    if (store.Open()) return 1;
    unsigned int stored = 0;
    cFault fault;
    const auto add = [&] {
      return store.Write([&](cTables& tables) {
        cReadingView view;
        const vorn::cRecord form = Reading("M", kNoon + stored, {{"1-0:1.8.0", std::string(3000, 'x')}}).ToRecord();
        if (view.Read(form)) tables.readings.Add(view);
      });
    };
    while (stored < 1000 && !(fault = add())) ++stored;
    if (stored == 0 || stored == 1000) return 2;
    if (fault.kind != eFault::Io && fault.kind != eFault::Full) return 3;
    const rlimit wide{RLIM_INFINITY, RLIM_INFINITY};
    setrlimit(RLIMIT_FSIZE, &wide);
    if (add()) return 4;
    bool counted = false;
    if (store.Read([&](cTables& tables) { counted = tables.query.CountValues() == stored + 1; })) return 5;
    return counted ? 0 : 6;
  });
  EXPECT_EQ(result, 0);
  EXPECT_EQ(One("PRAGMA integrity_check"), "ok");
}

TEST_F(DataStore, SaysClearlyThatThereIsNoRoomToStart) {
  const int result = InChildWithFileLimit(0, [&] {
    const cFault fault = TryOpen();
    return fault.text.find(Options().file) != std::string::npos ? static_cast<int>(fault.kind) : 0;
  });
  EXPECT_TRUE(result == static_cast<int>(eFault::Io) || result == static_cast<int>(eFault::Full)) << result;
}

// ---- read-only, not there, not a file

TEST_F(DataStore, SaysClearlyThatTheFileCannotBeOpened) {
  std::filesystem::create_directory(Options().file);
  const cFault fault = TryOpen();
  EXPECT_EQ(fault.kind, eFault::Io);
  EXPECT_THAT(fault.text, HasSubstr(Options().file));
  EXPECT_THAT(fault.text, HasSubstr("cannot be opened"));
}

TEST_F(DataStore, SaysClearlyThatTheDirectoryIsMissing) {
  cDataOptions options = Options();
  options.file = m_folder.File("missing/tav.db");
  const cFault fault = cDataStore(options).Open();
  EXPECT_EQ(fault.kind, eFault::Io);
  EXPECT_THAT(fault.text, HasSubstr("missing/tav.db"));
}

TEST_F(DataStore, SaysClearlyThatTheFileIsReadOnly) {
  Fill();
  cDataOptions options = Options();
  options.file = "file:" + options.file + "?immutable=1";
  const cFault fault = cDataStore(options).Open();
  EXPECT_EQ(fault.kind, eFault::ReadOnly);
  EXPECT_THAT(fault.text, HasSubstr("cannot be written"));
}

// Root may write everything, so somebody else has to try.
TEST_F(DataStore, RefusesWhileTheFileIsReadOnlyAndGoesOnAfterwards) {
  constexpr uid_t kNobody = 65534;
  Fill();
  std::filesystem::permissions(m_folder.GetPath(), std::filesystem::perms::all);
  std::filesystem::permissions(Options().file, static_cast<std::filesystem::perms>(0444));
  const pid_t child = fork();
  if (child == 0) {
    if (getuid() == 0 && setuid(kNobody) != 0) _exit(9);
    _exit(static_cast<int>(TryOpen().kind));
  }
  int status = 0;
  waitpid(child, &status, 0);
  EXPECT_EQ(WEXITSTATUS(status), static_cast<int>(eFault::ReadOnly));
  std::filesystem::permissions(Options().file, static_cast<std::filesystem::perms>(0644));
  EXPECT_FALSE(TryOpen());
}

TEST_F(DataStore, RefusesWhileItsFileIsTakenAwayAndGoesOnWhenItIsBack) {
  Open();
  ASSERT_FALSE(TryStoreOne(kNoon));
  std::filesystem::rename(Options().file, m_folder.File("away"));
  const cFault fault = TryStoreOne(kNoon + 1);
  EXPECT_EQ(fault.kind, eFault::Moved);
  EXPECT_THAT(fault.text, HasSubstr("was removed or replaced while in use"));
  std::filesystem::rename(m_folder.File("away"), Options().file);
  EXPECT_FALSE(TryStoreOne(kNoon + 2));
  EXPECT_EQ(CountValues(), "2");
}

// ---- damaged, foreign, newer, older

TEST_F(DataStore, RefusesADamagedFileAndLeavesItAlone) {
  struct {
    std::streamoff at;
    std::size_t size;
  } const damages[] = {{0, 16}, {0, 100}, {100, 200}, {4096 + 8, 2000}, {5 * 4096, 3 * 4096}};
  for (const auto& [at, size] : damages) {
    std::filesystem::remove(Options().file);
    Fill();
    Overwrite(at, size);
    const std::string before = ReadFile();
    const cFault fault = TryOpen();
    EXPECT_EQ(fault.kind, eFault::Corrupt) << at << " " << fault.text;
    EXPECT_THAT(fault.text, HasSubstr("is damaged"));
    EXPECT_EQ(ReadFile(), before);
  }
}

TEST_F(DataStore, RefusesAFileThatIsNoDatabase) {
  std::ofstream(Options().file) << "meter readings, hand-written, by no means a database of any kind";
  EXPECT_EQ(TryOpen().kind, eFault::Corrupt);
  EXPECT_EQ(ReadFile(), "meter readings, hand-written, by no means a database of any kind");
}

TEST_F(DataStore, DamageThatShowsLaterRefusesStoresAndDoesNotCrash) {
  Open();
  for (unsigned int i = 0; i < 500; ++i) ASSERT_FALSE(TryStoreOne(kNoon + i));
  ASSERT_FALSE(m_store->Checkpoint());
  Overwrite(4096, 60 * 4096);
  cFault fault;
  // Pages that are in memory still serve for a while.
  for (unsigned int i = 0; i < 5000 && !fault; ++i)
    fault = TryStore({Reading(std::to_string(i), kNoon, {{"1-0:1.8.0", "1"}}).ToRecord()});
  EXPECT_TRUE(fault.kind == eFault::None || fault.kind == eFault::Corrupt) << fault.text;
  EXPECT_EQ(TryOpen().kind, eFault::Corrupt);
}

TEST_F(DataStore, RefusesTheDatabaseOfAnotherProgram) {
  Execute("CREATE TABLE address(name TEXT)");
  cFault fault = TryOpen();
  EXPECT_EQ(fault.kind, eFault::Foreign);
  EXPECT_THAT(fault.text, HasSubstr("belongs to another program"));
  Execute("PRAGMA application_id=7");
  EXPECT_EQ(TryOpen().kind, eFault::Foreign);
  EXPECT_EQ(One("SELECT group_concat(name) FROM sqlite_schema"), "address");
}

TEST_F(DataStore, RefusesAFileOfALaterVersion) {
  Fill();
  Execute("PRAGMA user_version=" + std::to_string(kSchemaVersion + 1));
  const cFault fault = TryOpen();
  EXPECT_EQ(fault.kind, eFault::Newer);
  EXPECT_THAT(fault.text, HasSubstr("schema version " + std::to_string(kSchemaVersion + 1)));
  EXPECT_THAT(fault.text, HasSubstr("up to " + std::to_string(kSchemaVersion)));
}

TEST_F(DataStore, BringsAFileOfTheFirstVersionUpToDate) {
  {
    SQLite::Database old(Options().file, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
    Migrate(old, 1);
    old.exec(
        "INSERT INTO meter VALUES(1, 'M'); INSERT INTO obis VALUES(1, '1-0:1.8.0'); INSERT INTO form VALUES(1, 'Wh', "
        "3);"
        "INSERT INTO value VALUES(1, 1700000000, 1, 80, 1, NULL), (1, 1700000060, 1, 'text', 1, NULL)");
  }
  Open();
  EXPECT_EQ(One("SELECT meter||' '||time||' '||value||' '||unit||' '||count FROM last_values"),
            "M 1700000060 text Wh 2");
  EXPECT_EQ(Ask("SELECT value FROM reading_values"), (std::vector<std::string>{"5", "text"}));
  EXPECT_FALSE(TryStoreOne(kNoon + 120));
}

TEST_F(DataStore, AMigrationThatFailsLeavesTheEarlierVersion) {
  {
    SQLite::Database old(Options().file, SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
    Migrate(old, 1);
    old.exec("CREATE TABLE series(in_the_way)");
  }
  EXPECT_TRUE(TryOpen());
  EXPECT_EQ(One("PRAGMA user_version"), "1");
  Execute("DROP TABLE series");
  EXPECT_FALSE(TryOpen());
}

// ---- the write-ahead log

TEST_F(DataStore, TheLogIsEmptiedWhenTheServiceIsIdle) {
  Open();
  ASSERT_FALSE(m_store->Checkpoint());
  EXPECT_FALSE(m_store->NeedsCheckpoint());
  for (unsigned int i = 0; !m_store->NeedsCheckpoint(); ++i) ASSERT_FALSE(TryStoreOne(kNoon + i));
  const std::uint64_t size = m_store->GetWalBytes();
  EXPECT_GE(size, std::uint64_t{cDataStore::kWalIdlePages} * 4096);
  ASSERT_FALSE(m_store->Checkpoint());
  EXPECT_FALSE(m_store->NeedsCheckpoint());
  for (unsigned int i = 0; i < 20; ++i) ASSERT_FALSE(TryStoreOne(kNoon + 10'000 + i));
  EXPECT_EQ(m_store->GetWalBytes(), size);
}

TEST_F(DataStore, TheLogStaysBoundedWithoutAnIdleMoment) {
  cDataOptions options = Options();
  options.durability = eDurability::Normal;
  Open(options);
  const std::string large(200'000, 'x');
  for (unsigned int i = 0; i < 200; ++i) {
    ASSERT_FALSE(TryStoreOne(kNoon + i, large));
    ASSERT_LE(m_store->GetWalBytes(), std::uint64_t{cDataStore::kWalBusyPages + 100} * 4120);
  }
}

TEST_F(DataStore, AReaderThatNeverEndsCannotMakeTheLogGrowForEver) {
  cDataOptions options = Options();
  options.durability = eDurability::Normal;
  Open(options);
  ASSERT_FALSE(TryStoreOne(kNoon));
  SQLite::Database reader(Options().file, SQLite::OPEN_READONLY);
  reader.exec("BEGIN; SELECT count(*) FROM value");
  const std::string large(2'000'000, 'x');
  cFault fault;
  unsigned int stored = 1;
  for (; stored < 100 && !fault; ++stored) fault = TryStoreOne(kNoon + stored, large);
  EXPECT_EQ(fault.kind, eFault::Full);
  EXPECT_THAT(fault.text, HasSubstr("another process keeps a transaction open"));
  EXPECT_LE(m_store->GetWalBytes(), std::uint64_t{cDataStore::kWalMaxPages + 1000} * 4120);
  reader.exec("COMMIT");
  EXPECT_FALSE(TryStoreOne(kNoon + stored, large));
}

}  // namespace
}  // namespace tav::data
