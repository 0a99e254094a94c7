// SPDX-License-Identifier: Apache-2.0
// cResult: rows that a client fetches page by page. Between two pages it holds no statement and no transaction of the
// database, only the place to go on from.
#pragma once

#include <cstddef>

#include <gateway/service/data/query/result_page.h>

namespace tav::data {

struct cTables;

class cResult {
 public:
  virtual ~cResult() = default;

  // Adds the next rows until the page takes no more, or enough was looked at. True when nothing is behind them.
  // Throws SQLite::Exception.
  virtual bool Fetch(cTables& tables, cResultPage& page) = 0;
  // Bytes of rows that it holds in memory.
  virtual std::size_t GetBytes() const { return 0; }
};

}  // namespace tav::data
