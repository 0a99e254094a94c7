// SPDX-License-Identifier: Apache-2.0
#include <gateway/rules/rule_match.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace tav::rules {
namespace {

using testing::ElementsAre;

vorn::cData Bytes(const char* digits) {
  vorn::cData bytes;
  EXPECT_TRUE(vorn::cData::FromHex(digits, bytes));
  return bytes;
}

cQuery ByIdentifier(const char* obis) { return {eRoad::Identifier, obis, {}, {}, {}, {}, {}}; }
cQuery ByDlms(const char* obis) { return {eRoad::Dlms, obis, {}, {}, {}, {}, {}}; }
cQuery ByMbus(const char* address, const char* medium, const char* dib, const char* vib) {
  return {eRoad::Mbus, {}, address, medium, Bytes(dib), Bytes(vib), {}};
}
cQuery ByModbus(const char* address, const char* medium, const char* reg) {
  return {eRoad::Modbus, {}, address, medium, {}, {}, reg};
}

// "7: text" for each verdict.
std::vector<std::string> Texts(const std::vector<cVerdict>& verdicts) {
  std::vector<std::string> texts;
  for (const cVerdict& verdict : verdicts) texts.push_back(std::to_string(verdict.rule->GetID()) + ": " + verdict.text);
  return texts;
}

std::string Reason(const char* obis, const char* mapping, const cQuery& query) {
  cObisMap map;
  map.Add({7, "A", obis, mapping});
  return Match(map, query).front().text;
}

TEST(RuleMatch, NamesTheOneThatTheLookupGivesAndThoseBehindIt) {
  cObisMap map;
  map.Add({5, "A", "1-0:1.8.0", "protocol=dlms"});
  map.Add({7, "B", "1-1:1.8.0", "protocol=mbus,dif=04,vif=03"});
  map.Add({9, "C", "1-0:2.8.0", "protocol=dlms"});
  EXPECT_THAT(Texts(Match(map, ByIdentifier("1-0:1.8.0*255"))),
              ElementsAre("5: names it", "7: would fit, but rule 5 has the smaller ID",
                          "9: identifier: the rule is for 1-0:2.8.0, the value is 1-0:1.8.0"));
  const std::vector<cVerdict> verdicts = Match(map, ByIdentifier("1-0:2.8.0"));
  EXPECT_EQ(verdicts[2].fit, eFit::Names);
  EXPECT_EQ(verdicts[2].distance, 0u);
  EXPECT_EQ(verdicts[0].fit, eFit::No);
  EXPECT_TRUE(Match({}, ByIdentifier("1-0:1.8.0")).empty());
}

TEST(RuleMatch, TellsTheFirstConditionThatFailsWithBothSides) {
  const char* const kMbus = "protocol=mbus,meteraddr=12,medium=H,dif=0C,vif=13";
  EXPECT_EQ(Reason("8-0:1.0.0", kMbus, ByDlms("8-0:1.0.0")), "protocol: the rule is for mbus, the value is dlms");
  EXPECT_EQ(Reason("8-0:1.0.0", "note=x", ByDlms("8-0:1.0.0")),
            "protocol: the rule is for no protocol, the value is dlms");
  EXPECT_EQ(Reason("8-0:1.0.0", kMbus, ByMbus("13", "W", "04", "14")),
            "meteraddr: the rule is for 12, the value is 13");
  EXPECT_EQ(Reason("8-0:1.0.0", kMbus, ByMbus("", "W", "04", "14")),
            "meteraddr: the rule is for 12, the value is none");
  EXPECT_EQ(Reason("8-0:1.0.0", kMbus, ByMbus("12", "W", "04", "14")), "medium: the rule is for H, the value is W");
  EXPECT_EQ(Reason("8-0:1.0.0", kMbus, ByMbus("12", "H", "84 10", "14")),
            "dif: the rule is for 0C, the value is 84 10");
  EXPECT_EQ(Reason("8-0:1.0.0", kMbus, ByMbus("12", "H", "0C", "FD 17")),
            "vif: the rule is for 13, the value is FD 17");
  EXPECT_EQ(Reason("8-0:1.0.0", kMbus, ByMbus("12", "H", "0C", "13")), "names it");
  EXPECT_EQ(Reason("8-0:1.0.0", "protocol=mbus,vif=13", ByMbus("12", "H", "0C", "13")),
            "dif: the rule is for none, the value is 0C");
  const char* const kModbus = "protocol=modbus,medium=E,register=40";
  EXPECT_EQ(Reason("1-0:1.7.0", kModbus, ByMbus("1", "E", "0C", "13")),
            "protocol: the rule is for modbus, the value is mbus");
  EXPECT_EQ(Reason("1-0:1.7.0", kModbus, ByModbus("1", "G", "41")), "medium: the rule is for E, the value is G");
  EXPECT_EQ(Reason("1-0:1.7.0", kModbus, ByModbus("1", "E", "41")), "register: the rule is for 40, the value is 41");
  EXPECT_EQ(Reason("1-0:1.7.0", kModbus, ByModbus("1", "E", "40")), "names it");
}

TEST(RuleMatch, TellsWhatIdentifiersHaveInCommon) {
  EXPECT_EQ(Reason("6-0:1.8.0", "protocol=dlms", ByIdentifier("1-3:1.8.0")),
            "identifier: the rule is for 6-0:1.8.0, the value is 1-0:1.8.0; the same C.D.E, other medium");
  EXPECT_EQ(Reason("1-0:1.8.0", "protocol=dlms", ByIdentifier("1-0:1.8.0*99")),
            "identifier: the rule is for 1-0:1.8.0, the value is 1-0:1.8.0*nn; the same C.D.E, other group F");
  EXPECT_EQ(Reason("1-0:1.8.0", "protocol=dlms", ByDlms("2-1:1.8.0*255")),
            "identifier: the rule is for 1-0:1.8.0, the value is 2-1:1.8.0*255; the same C.D.E, other medium and "
            "channel and group F");
  EXPECT_EQ(Reason("1-0:1.8.0", "protocol=dlms", ByIdentifier("1-0:1.8.1")),
            "identifier: the rule is for 1-0:1.8.0, the value is 1-0:1.8.1");
  EXPECT_EQ(Reason("1-0:1.8.0", "protocol=dlms", ByIdentifier("nonsense")),
            "identifier: the rule is for 1-0:1.8.0, the value is none");
}

TEST(RuleMatch, PutsTheNearestFirst) {
  cObisMap map;
  map.Add({1, "A", "1-0:9.9.9", "protocol=dlms"});
  map.Add({2, "A", "1-0:1.8.1", "protocol=dlms"});
  map.Add({3, "A", "6-0:1.8.0", "protocol=dlms"});
  map.Add({4, "A", "1-0:1.8.0", "protocol=dlms"});
  map.Add({5, "A", "1-0:1.8.0*1", "protocol=dlms"});
  map.Add({6, "A", "1-0:1.8.0", "protocol=modbus,register=1"});
  const auto ids = [](const std::vector<cVerdict>& verdicts) {
    std::vector<unsigned long long> all;
    for (const cVerdict& verdict : verdicts) all.push_back(verdict.rule->GetID());
    return all;
  };
  const auto verdicts = Match(map, ByIdentifier("1-0:1.8.0"));
  EXPECT_THAT(ids(Nearest(verdicts, 10)), ElementsAre(4, 6, 5, 3, 2, 1));
  EXPECT_THAT(ids(Nearest(verdicts, 1)), ElementsAre(4, 6, 5));
  EXPECT_THAT(ids(Nearest(verdicts, 0)), ElementsAre(4, 6)) << "those that fit";
  map.Clear();
  map.Add({1, "A", "8-0:1.0.0", "protocol=mbus,medium=H,dif=0C,vif=14"});
  map.Add({2, "A", "8-0:1.0.0", "protocol=mbus,medium=H,dif=0C,vif=13"});
  map.Add({3, "A", "8-0:1.0.0", "protocol=mbus,dif=04,vif=13"});
  map.Add({4, "A", "8-0:1.0.0", "protocol=dlms"});
  EXPECT_THAT(ids(Nearest(Match(map, ByMbus("1", "W", "0C", "13")), 10)), ElementsAre(2, 3, 1, 4));
}

// ---- against the look-ups themselves

TEST(RuleMatch, NamesTheRuleThatTheLookupGives) {
  std::mt19937 random(23);
  const auto pick = [&](std::initializer_list<const char*> list) { return std::data(list)[random() % list.size()]; };
  const auto identifier = [&] {
    return pick({"1-0:1.8.0", "1-1:1.8.0", "1-0:1.8.0*1", "1-0:1.8.0*255", "1-0:1.8.0*FF", "6-0:1.8.0", "1-0:2.8.0"});
  };
  std::size_t named = 0;
  for (int round = 0; round < 5000; ++round) {
    cObisMap map;
    for (unsigned int id = random() % 8; id > 0; --id)
      map.Add({id, "N", identifier(),
               std::string("protocol=") + pick({"mbus", "dlms", "modbus"}) + pick({"", ",meteraddr=1", ",meteraddr="}) +
                   pick({"", ",medium=E", ",medium=G"}) + pick({"", ",dif=0C", ",dif=84 10", ",dif=0c"}) +
                   pick({"", ",vif=13", ",vif=FD 17"}) + pick({"", ",register=1", ",register=2"})});
    const cQuery query{static_cast<eRoad>(random() % 4),
                       identifier(),
                       pick({"", "1", "2"}),
                       pick({"", "E", "G", "W"}),
                       Bytes(pick({"", "0C", "84 10"})),
                       Bytes(pick({"", "13", "FD 17"})),
                       pick({"", "1", "2"})};
    cObisMapEntry entry;
    const bool found =
        query.road == eRoad::Identifier ? map.GetEntryByObisId(query.obis, entry, true)
        : query.road == eRoad::Dlms     ? map.GetEntryByObisIdFromDLMS(query.obis, entry)
        : query.road == eRoad::Mbus
            ? map.GetEntryByDibVibFromMBUS(query.meterAddr, "", query.medium, query.dib, query.vib, entry)
            : map.GetEntryFromMODBUS(query.meterAddr, "", query.medium, query.reg, entry);
    const auto verdicts = Match(map, query);
    const auto winner =
        std::find_if(verdicts.begin(), verdicts.end(), [](const cVerdict& each) { return each.fit == eFit::Names; });
    ASSERT_EQ(verdicts.size(), map.GetEntries().size());
    ASSERT_EQ(winner != verdicts.end(), found) << map.ToString();
    for (const cVerdict& verdict : verdicts) ASSERT_EQ(verdict.distance == 0, verdict.fit != eFit::No) << verdict.text;
    if (!found) continue;
    ++named;
    ASSERT_EQ(winner->rule->GetID(), entry.GetID()) << map.ToString();
  }
  EXPECT_GT(named, 500u);
}

}  // namespace
}  // namespace tav::rules
