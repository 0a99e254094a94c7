// SPDX-License-Identifier: Apache-2.0
// The tables of the database, as the list of steps that made them. A released step is never changed: what is new is a
// further step, and a file of any earlier version is brought up to date when it is opened.
//
// docs/storage.md tells what stands in which table.
#pragma once

#include <string>

namespace SQLite {
class Database;
}

namespace tav::data {

// Marks a file as this program's, in PRAGMA application_id: "tavd".
constexpr int kApplicationId = 0x74617664;

// The version that the last step makes, in PRAGMA user_version.
constexpr int kSchemaVersion = 5;

int GetSchemaVersion(SQLite::Database& database);
// Whether the file is this program's, or nobody's yet.
bool IsOurs(SQLite::Database& database);

// Takes the steps from the file's version to the given one, each in a transaction of its own. Throws SQLite::Exception;
// the steps before the one that failed hold.
void Migrate(SQLite::Database& database, int version = kSchemaVersion);

}  // namespace tav::data
