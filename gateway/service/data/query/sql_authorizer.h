// SPDX-License-Identifier: Apache-2.0
// cSqlAuthorizer: what a client's SQL may do on a connection while the object lives, and why something was denied.
//
// Nobody attaches files, changes tables or settings, or controls transactions. Secrets (meter keys, passwords of push
// targets, meter templates) are read only by those who may write.
#pragma once

#include <string>
#include <string_view>

struct sqlite3;

namespace tav::data {

enum class eSqlRight {
  Read,         // everything but secrets
  ReadSecrets,  // everything
  Write,        // and change rows
};

class cSqlAuthorizer {
 public:
  cSqlAuthorizer(sqlite3* database, eSqlRight right);
  ~cSqlAuthorizer();
  cSqlAuthorizer(const cSqlAuthorizer&) = delete;
  cSqlAuthorizer& operator=(const cSqlAuthorizer&) = delete;

  // Of what was denied first; empty when nothing was.
  const std::string& GetDenied() const { return m_denied; }

 private:
  static int Ask(void* self, int action, const char* first, const char* second, const char* database,
                 const char* source);
  std::string Judge(int action, std::string_view first, std::string_view second) const;
  std::string JudgeRead(std::string_view table, std::string_view column) const;
  std::string JudgeWrite(std::string_view what, std::string_view table) const;

  sqlite3* m_database;
  eSqlRight m_right;
  std::string m_denied;
};

}  // namespace tav::data
