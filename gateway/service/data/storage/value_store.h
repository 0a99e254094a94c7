// SPDX-License-Identifier: Apache-2.0
// cValueStore: the key/value stores of drivers and of named clients. Operations throw SQLite::Exception.
#pragma once

#include <SQLiteCpp/Statement.h>

#include <cstddef>
#include <functional>
#include <string>

namespace tav::data {

class cValueStore {
 public:
  // Bytes of keys and values in one store, each pair counted with some room around it: the contents have to travel in
  // one message.
  static constexpr std::size_t kMaxStoreSize = std::size_t{1} << 20;
  static constexpr std::size_t kPairRoom = 32;

  explicit cValueStore(SQLite::Database& database);

  // Sets a value in place of an earlier one. False: the store would become larger than kMaxStoreSize.
  bool Set(const std::string& store, const std::string& key, const std::string& value);
  // The pairs of a store behind a key, in the order of the keys, until the function returns false.
  void Get(const std::string& store, const std::string& after,
           const std::function<bool(const std::string& key, const std::string& value)>& pair);
  // The names of the stores behind one, in order, until the function returns false.
  void List(const std::string& after, const std::function<bool(const std::string& store)>& name);

 private:
  std::size_t SizeWithout(const std::string& store, const std::string& key);

  SQLite::Statement m_set;
  SQLite::Statement m_size;
  SQLite::Statement m_get;
  SQLite::Statement m_list;
};

}  // namespace tav::data
