// SPDX-License-Identifier: Apache-2.0
// cSqlRows: the rows of an SQL statement as a result. They are in memory: the database has nothing more to do with
// them.
#pragma once

#include <gateway/service/data/query/result.h>

namespace tav::data {

class cSqlRows final : public cResult {
 public:
  // rows: a record "row" a row.
  explicit cSqlRows(const vorn::cRecord& rows) : m_next(rows.First()), m_bytes(rows.GetBytes().size()) {}
  bool Fetch(cTables& tables, cResultPage& page) override;
  std::size_t GetBytes() const override { return m_bytes; }

 private:
  vorn::cRecordPar m_next;  // keeps the bytes of all
  std::size_t m_bytes;
};

}  // namespace tav::data
