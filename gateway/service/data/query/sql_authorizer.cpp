// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/query/sql_authorizer.h>

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <utility>

namespace tav::data {

namespace {

constexpr std::array<std::pair<std::string_view, std::string_view>, 3> kSecrets = {{
    {"meter_config", "key"},
    {"push_target", "password"},
    {"meter_template", "record"},
}};

// Settings that only tell, of a table or an index, and of the file when nothing is to be set.
constexpr std::string_view kTelling[] = {"foreign_key_list", "index_info", "index_list", "index_xinfo",
                                         "table_info",       "table_list", "table_xinfo"};
constexpr std::string_view kTellingOfFile[] = {"application_id", "data_version",   "encoding",
                                               "freelist_count", "journal_mode",   "page_count",
                                               "page_size",      "schema_version", "user_version"};
// The rest of these shows the file's pages and the program's own statements.
constexpr std::string_view kInternal[] = {"sqlite_master", "sqlite_schema", "sqlite_sequence"};

template <typename List, typename Item>
bool Contains(const List& list, const Item& item) {
  return std::find(std::begin(list), std::end(list), item) != std::end(list);
}

// The name comes as the client has written it.
bool Tells(std::string_view pragma, bool alone) {
  std::string name(pragma);
  std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::tolower(c); });
  return Contains(kTelling, std::string_view(name)) || (alone && Contains(kTellingOfFile, std::string_view(name)));
}

bool IsInternal(std::string_view table) { return table.substr(0, 7) == "sqlite_"; }

std::string_view View(const char* text) { return text != nullptr ? text : ""; }

std::string NameOf(int action) {
  switch (action) {
    case SQLITE_ATTACH:
      return "ATTACH";
    case SQLITE_DETACH:
      return "DETACH";
    case SQLITE_TRANSACTION:
    case SQLITE_SAVEPOINT:
      return "control of transactions";
    case SQLITE_ANALYZE:
      return "ANALYZE";
    case SQLITE_REINDEX:
      return "REINDEX";
    default:
      return "a change of the tables";
  }
}

}  // namespace

cSqlAuthorizer::cSqlAuthorizer(sqlite3* database, eSqlRight right) : m_database(database), m_right(right) {
  sqlite3_set_authorizer(database, &cSqlAuthorizer::Ask, this);
}

cSqlAuthorizer::~cSqlAuthorizer() { sqlite3_set_authorizer(m_database, nullptr, nullptr); }

int cSqlAuthorizer::Ask(void* self, int action, const char* first, const char* second, const char* database,
                        const char*) {
  auto* const own = static_cast<cSqlAuthorizer*>(self);
  std::string denied = own->Judge(action, View(first), View(second));
  if (denied.empty() && View(database) == "temp" && action != SQLITE_READ) denied = "temporary tables are not allowed";
  if (denied.empty()) return SQLITE_OK;
  if (own->m_denied.empty()) own->m_denied = std::move(denied);
  return SQLITE_DENY;
}

std::string cSqlAuthorizer::Judge(int action, std::string_view first, std::string_view second) const {
  switch (action) {
    case SQLITE_SELECT:
    case SQLITE_RECURSIVE:
      return {};
    case SQLITE_READ:
      return JudgeRead(first, second);
    case SQLITE_FUNCTION:
      if (second != "load_extension" && second != "fts3_tokenizer") return {};
      return "function " + std::string(second) + " is not allowed";
    case SQLITE_PRAGMA:
      if (Tells(first, second.empty())) return {};
      return "PRAGMA " + std::string(first) + (second.empty() ? " is not allowed" : " with a value is not allowed");
    case SQLITE_INSERT:
      return JudgeWrite("INSERT into ", first);
    case SQLITE_UPDATE:
      // Asked when a table-valued function is made ready; the database itself refuses the statement.
      if (first == "sqlite_master") return {};
      return JudgeWrite("UPDATE of ", first);
    case SQLITE_DELETE:
      return JudgeWrite("DELETE from ", first);
    default:
      return NameOf(action) + " is not allowed";
  }
}

std::string cSqlAuthorizer::JudgeRead(std::string_view table, std::string_view column) const {
  if (IsInternal(table) && !Contains(kInternal, table)) return "table " + std::string(table) + " is not allowed";
  if (m_right != eSqlRight::Read || !Contains(kSecrets, std::pair(table, column))) return {};
  return "column " + std::string(table) + "." + std::string(column) + " is read only by those who may write";
}

std::string cSqlAuthorizer::JudgeWrite(std::string_view what, std::string_view table) const {
  if (IsInternal(table)) return "a change of the tables is not allowed";
  if (m_right == eSqlRight::Write) return {};
  return std::string(what) + std::string(table) + " needs the option to write (1)";
}

}  // namespace tav::data
