// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/pages/config/record_state.h>

#include <bit>
#include <random>

#include <tav/framework/helper.h>

namespace tav::pages {

namespace {

// Aumasson and Bernstein, "SipHash: a fast short-input PRF".
class cSipHash {
 public:
  explicit cSipHash(const cStateKey& key)
      : m_v{key[0] ^ 0x736f6d6570736575, key[1] ^ 0x646f72616e646f6d, key[0] ^ 0x6c7967656e657261,
            key[1] ^ 0x7465646279746573} {}

  void Add(std::uint64_t word) {
    m_v[3] ^= word;
    Mix(2);
    m_v[0] ^= word;
  }
  std::uint64_t Finish() {
    m_v[2] ^= 0xFF;
    Mix(4);
    return m_v[0] ^ m_v[1] ^ m_v[2] ^ m_v[3];
  }

 private:
  void Mix(int rounds) {
    for (; rounds > 0; --rounds) {
      AddTurned(0, 1, 13);
      m_v[0] = std::rotl(m_v[0], 32);
      AddTurned(2, 3, 16);
      AddTurned(0, 3, 21);
      AddTurned(2, 1, 17);
      m_v[2] = std::rotl(m_v[2], 32);
    }
  }
  void AddTurned(std::size_t sum, std::size_t turned, int bits) {
    m_v[sum] += m_v[turned];
    m_v[turned] = std::rotl(m_v[turned], bits) ^ m_v[sum];
  }

  std::array<std::uint64_t, 4> m_v;
};

const cStateKey& ProcessKey() {
  static const cStateKey key = [] {
    std::random_device random;
    cStateKey drawn{};
    for (std::uint64_t& half : drawn) half = (std::uint64_t{random()} << 32) | random();
    return drawn;
  }();
  return key;
}

std::uint64_t LittleEndian(std::string_view bytes) {
  std::uint64_t word = 0;
  for (std::size_t i = bytes.size(); i > 0; --i) word = (word << 8) | static_cast<unsigned char>(bytes[i - 1]);
  return word;
}

}  // namespace

std::uint64_t KeyedHash(std::string_view bytes, const cStateKey& key) {
  const std::uint64_t length = std::uint64_t{bytes.size()} << 56;
  cSipHash hash(key);
  for (; bytes.size() >= 8; bytes.remove_prefix(8)) hash.Add(LittleEndian(bytes.substr(0, 8)));
  hash.Add(length | LittleEndian(bytes));
  return hash.Finish();
}

std::string RecordState(const vorn::cRecord& record) {
  return vorn::FormatString("%016llx", static_cast<unsigned long long>(KeyedHash(record.GetBytes(), ProcessKey())));
}

}  // namespace tav::pages
