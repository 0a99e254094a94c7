// SPDX-License-Identifier: Apache-2.0
// cMap: an ordered map, std::map with the few questions the system asks all the time.
#pragma once

#include <map>

namespace vorn {

template <typename K, typename V>
class cMap : public std::map<K, V> {
 public:
  using std::map<K, V>::map;

  // The value of a key; leaves value alone and returns false when there is none.
  bool Get(const K& key, V& value) const {
    const auto found = this->find(key);
    if (found == this->end()) return false;
    value = found->second;
    return true;
  }
  // Stores a value, in place of an earlier one of the key.
  void Set(const K& key, const V& value) { this->insert_or_assign(key, value); }
  // Whether there was one to remove.
  bool Remove(const K& key) { return this->erase(key) != 0; }
  bool Contains(const K& key) const { return this->find(key) != this->end(); }
};

}  // namespace vorn
