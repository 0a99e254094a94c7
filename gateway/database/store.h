// SPDX-License-Identifier: Apache-2.0
// cStore: the tables that one service uses, in the gateway's database file. Tables is constructed from the open
// SQLite::Database; its operations throw, the store's do not.
#pragma once

#include <functional>
#include <optional>

#include <gateway/database/database.h>

namespace tav::data {

template <typename Tables>
class cStore : public cDatabase {
 public:
  using cDatabase::cDatabase;

  // In one transaction. When the function says false, all that it did is taken back, and that is no fault.
  cFault Change(const std::function<bool(Tables&)>& change) {
    return InTransaction([&] { return change(*m_tables); });
  }
  cFault Read(const std::function<void(Tables&)>& ask) {
    return WithTables([&] { ask(*m_tables); });
  }

 private:
  void MakeTables(SQLite::Database& database) final { m_tables.emplace(database); }
  void DropTables() final { m_tables.reset(); }
  bool HasTables() const final { return m_tables.has_value(); }

  std::optional<Tables> m_tables;
};

}  // namespace tav::data
