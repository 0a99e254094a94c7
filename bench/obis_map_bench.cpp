// SPDX-License-Identifier: Apache-2.0
// One lookup in a map of 10, 100, 1000 rules. Asked for is the last rule, so that all are looked at. The limit is a
// bare loop that compares texts which stand side by side, and hands out the same copy of the rule.
#include <benchmark/benchmark.h>

#include <string>
#include <utility>
#include <vector>

#include <bench/support/figures.h>
#include <tav/framework/helper.h>
#include <tav/obis/obis_map.h>

using namespace tav::bench;
using tav::cObisMap;
using tav::cObisMapEntry;

namespace {

// Rules of as many different identifiers and data blocks.
class cRules {
 public:
  explicit cRules(benchmark::State& state) {
    for (unsigned int i = 0; i < static_cast<unsigned int>(state.range(0)); ++i) {
      const std::string obis = vorn::FormatString("1-%u:%u.8.%u", i % 4, i / 100 + 10, i % 100 + 100);
      const std::string dif = vorn::FormatString("0C %02X", i / 256);
      const std::string vif = vorn::FormatString("%02X", i % 256);
      m_map.Add(cObisMapEntry(i + 1, "value " + std::to_string(i), obis,
                              "protocol=mbus,medium=E,dif=" + dif + ",vif=" + vif));
      m_identifiers.push_back(obis);
      m_blocks.emplace_back(dif, vif);
    }
    m_last = m_map.GetEntries().rbegin()->second;
  }

  const cObisMap& Map() const { return m_map; }
  const cObisMapEntry& Last() const { return m_last; }

  // The bare loops: the place of a match, or of the end.
  std::size_t FindIdentifier(const std::string& wanted) const {
    std::size_t at = 0;
    while (at < m_identifiers.size() && m_identifiers[at] != wanted) ++at;
    return at;
  }
  std::size_t FindBlocks(const std::string& dif, const std::string& vif) const {
    std::size_t at = 0;
    while (at < m_blocks.size() && (m_blocks[at].first != dif || m_blocks[at].second != vif)) ++at;
    return at;
  }

 private:
  cObisMap m_map;
  cObisMapEntry m_last;
  std::vector<std::string> m_identifiers;
  std::vector<std::pair<std::string, std::string>> m_blocks;
};

template <typename Ours, typename Limit>
void Measure(benchmark::State& state, const cRules& rules, const Ours& ours, const Limit& limit) {
  if (cObisMapEntry found; !ours(found) || found.GetID() != rules.Last().GetID())
    return state.SkipWithError("the last rule was not found");
  cObisMapEntry entry;
  const auto ourCall = [&] { benchmark::DoNotOptimize(ours(entry)); };
  const auto limitCall = [&] {
    benchmark::DoNotOptimize(limit());
    entry = rules.Last();
  };
  CountAllocations(state, ourCall);
  CompareTimes(state, ourCall, limitCall);
}

void ByObisId(benchmark::State& state) {
  const cRules rules(state);
  const std::string wanted = rules.Last().GetObisID();
  Measure(
      state, rules, [&](cObisMapEntry& entry) { return rules.Map().GetEntryByObisId(wanted, entry, false); },
      [&] { return rules.FindIdentifier(wanted); });
}
BENCHMARK(ByObisId)->Name("obis_map/by_obis_id")->Arg(10)->Arg(100)->Arg(1000)->Iterations(1);

void ByDibVib(benchmark::State& state) {
  const cRules rules(state);
  const std::string dif(rules.Last().GetKeys().dif);
  const std::string vif(rules.Last().GetKeys().vif);
  vorn::cData dib, vib;
  vorn::cData::FromHex(dif, dib);
  vorn::cData::FromHex(vif, vib);
  Measure(
      state, rules,
      [&](cObisMapEntry& entry) { return rules.Map().GetEntryByDibVibFromMBUS("12345678", "", "E", dib, vib, entry); },
      [&] { return rules.FindBlocks(dif, vif); });
}
BENCHMARK(ByDibVib)->Name("obis_map/by_dib_vib")->Arg(10)->Arg(100)->Arg(1000)->Iterations(1);

}  // namespace
