// SPDX-License-Identifier: Apache-2.0
#include <gateway/database/fault.h>

#include <SQLiteCpp/Exception.h>
#include <sqlite3.h>

namespace tav::data {

namespace {

struct cKnown {
  int code;
  eFault kind;
  const char* text;
};

constexpr cKnown kKnown[] = {
    {SQLITE_BUSY, eFault::Busy, "another process holds its lock"},
    {SQLITE_LOCKED, eFault::Busy, "another statement holds its lock"},
    {SQLITE_FULL, eFault::Full, "no room left"},
    {SQLITE_READONLY, eFault::ReadOnly, "cannot be written"},
    {SQLITE_PERM, eFault::ReadOnly, "access denied"},
    {SQLITE_AUTH, eFault::ReadOnly, "access denied"},
    {SQLITE_IOERR, eFault::Io, "input/output error"},
    {SQLITE_CANTOPEN, eFault::Io, "cannot be opened"},
    {SQLITE_CORRUPT, eFault::Corrupt, "is damaged"},
    {SQLITE_NOTADB, eFault::Corrupt, "is damaged, or no database"},
};

}  // namespace

cFault FaultOf(const SQLite::Exception& exception, const std::string& file) {
  cKnown found{0, eFault::Internal, "failed"};
  for (const cKnown& known : kKnown)
    if (known.code == exception.getErrorCode()) found = known;
  return {found.kind, "database '" + file + "' " + found.text + " (" + exception.what() + ", code " +
                          std::to_string(exception.getExtendedErrorCode()) + ")"};
}

}  // namespace tav::data
