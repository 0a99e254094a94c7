// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/storage/value_store.h>

#include <tests/service/data/store_fixture.h>

namespace tav::data {
namespace {

class ValueStore : public StoreFixture {
 protected:
  void SetUp() override { Open(); }

  bool Set(const std::string& store, const std::string& key, const std::string& value) {
    bool set = false;
    EXPECT_FALSE(m_store->Write([&](cTables& tables) { set = tables.values.Set(store, key, value); }));
    return set;
  }
  std::string Get(const std::string& store, const std::string& after = {}) {
    std::string found;
    EXPECT_FALSE(m_store->Read([&](cTables& tables) {
      tables.values.Get(store, after, [&](const std::string& key, const std::string& value) {
        found += key + "=" + value + " ";
        return true;
      });
    }));
    return found;
  }
};

TEST_F(ValueStore, KeepsAValueUntilItIsSetAnew) {
  EXPECT_TRUE(Set("s", "b", "1"));
  EXPECT_TRUE(Set("s", "a", "2"));
  EXPECT_TRUE(Set("s", "b", ""));
  EXPECT_EQ(Get("s"), "a=2 b= ");
  EXPECT_EQ(Get("s", "a"), "b= ");
  Open();
  EXPECT_EQ(Get("s"), "a=2 b= ");
}

TEST_F(ValueStore, KeepsStoresApart) {
  Set("s", "k", "1");
  Set("t", "k", "2");
  EXPECT_EQ(Get("s"), "k=1 ");
  EXPECT_EQ(Get("u"), "");
}

TEST_F(ValueStore, KeepsBytesAsTheyAre) {
  const std::string odd("\xB5\0x", 3);
  Set(odd, odd, odd);
  EXPECT_EQ(Get(odd), odd + "=" + odd + " ");
}

TEST_F(ValueStore, CountsAllPairsOfAStore) {
  const std::string half(cValueStore::kMaxStoreSize / 2 - cValueStore::kPairRoom - 1, 'x');
  EXPECT_TRUE(Set("s", "a", half));
  EXPECT_TRUE(Set("s", "b", half));
  EXPECT_FALSE(Set("s", "c", ""));
  EXPECT_FALSE(Set("s", "b", half + "x"));
  EXPECT_TRUE(Set("s", "b", half));
  EXPECT_TRUE(Set("t", "c", half));
}

TEST_F(ValueStore, ZeroBytesCountToo) {
  const std::string zeros(cValueStore::kMaxStoreSize - cValueStore::kPairRoom - 1, '\0');
  EXPECT_TRUE(Set("s", "k", zeros));
  EXPECT_FALSE(Set("s", "l", "x"));
}

}  // namespace
}  // namespace tav::data
