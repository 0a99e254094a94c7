// SPDX-License-Identifier: Apache-2.0
// Runs one SQL statement of a client to its end, within bounds, and takes its rows out of the database.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <gateway/service/data/query/sql_authorizer.h>
#include <tav/framework/record.h>
#include <tav/framework/scm_channel.h>

namespace tav::data {

struct cSqlBounds {
  unsigned int milliseconds = 5'000;
  unsigned int rows = 100'000;
  std::size_t bytes = std::size_t{8} << 20;        // of all rows together
  std::size_t rowBytes = vorn::kMaxFrameSize / 2;  // of one
  int cellBytes = 1 << 18;                         // of any text or blob that it handles
  int patternBytes = 256;                          // of a pattern of LIKE or GLOB
  int textBytes = 1 << 16;                         // of the statement
  std::int64_t memory = std::int64_t{64} << 20;    // that the database may take for it
};

struct cSqlOutcome {
  std::string error;  // empty: it was run
  std::vector<std::string> columns;
  // A record "row" a row; in it a parameter a column: int when it fits 32 bits, uint64, text, data; reals and smaller
  // negative numbers as texts, a null as a text without a text.
  vorn::cRecord rows;
  std::uint64_t changes = 0;
};

// The connection must not have another client's statement running. What a failed statement has changed is not taken
// back; run it in a transaction.
cSqlOutcome RunSql(sqlite3* database, const std::string& sql, eSqlRight right, const cSqlBounds& bounds = {});

// The same on a connection of its own that cannot write, for which the file is opened.
cSqlOutcome RunSqlReadOnly(const std::string& file, const std::string& sql, eSqlRight right,
                           const cSqlBounds& bounds = {});

}  // namespace tav::data
