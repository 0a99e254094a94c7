// SPDX-License-Identifier: Apache-2.0
#include <gateway/rules/rule_check.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <random>
#include <set>

namespace tav::rules {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// "error 7: ..." or "warning 7 (5): ..." for every finding.
std::vector<std::string> Texts(const std::vector<cFinding>& findings) {
  std::vector<std::string> texts;
  for (const cFinding& finding : findings)
    texts.push_back((finding.level == eLevel::Error ? "error " : "warning ") + std::to_string(finding.id) +
                    (finding.other ? " (" + std::to_string(*finding.other) + ")" : "") + ": " + finding.text);
  return texts;
}

std::vector<std::string> OfMapping(const std::string& map) { return Texts(Check({{7, "A", "1-0:1.8.0", map, {}}})); }
std::vector<std::string> OfIdentifier(const std::string& obis) {
  return Texts(Check({{7, "A", obis, "protocol=dlms", {}}}));
}

TEST(RuleCheck, FindsNothingInGoodRules) {
  EXPECT_THAT(Texts(Check({{1, "Energy", "1-0:1.8.0", "protocol=dlms", {}},
                           {2, "Energy", "1-0:1.8.0", "protocol=mbus,medium=E,dif=8C 10,vif=04", {}},
                           {3, "Energy", "1-0:1.8.0", "protocol=modbus,meteraddr=1,register=40115", {}},
                           {4, "Heat", "6-0:1.0.0*1", "protocol=mbus,dif=0C,vif=FD 17,medium=X,meteraddr=", {}}})),
              IsEmpty());
  EXPECT_THAT(Check(cObisMap()), IsEmpty());
}

TEST(RuleCheck, FindsWhatIsWrongWithAMappingText) {
  const struct {
    const char* map;
    const char* finding;
  } kCases[] = {
      {"", "error 7: the map text is empty, and the OBIS service refuses such a rule; write such as protocol=dlms"},
      {"protocol=iec", "error 7: there is no protocol 'iec'; write mbus, dlms or modbus"},
      {"protocol=", "error 7: there is no protocol ''; write mbus, dlms or modbus"},
      {"protocol=dlms,free", "warning 7: 'free' has no \"=\" and is not read; write NAME=VALUE, or remove it"},
      {"protocol=dlms,colour=red",
       "warning 7: no lookup reads option 'colour'; remove it, or write one of protocol, meteraddr, medium, dif, vif, "
       "register"},
      {"protocol=dlms,dif=0C",
       "warning 7: protocol dlms does not read option 'dif'; remove it, or write protocol=mbus"},
      {"protocol=modbus,register=5,vif=13",
       "warning 7: protocol modbus does not read option 'vif'; remove it, or write protocol=mbus"},
      {"protocol=mbus,dif=0C,vif=13,register=5",
       "warning 7: protocol mbus does not read option 'register'; remove it, or write protocol=modbus"},
      {"medium=E", "warning 7: option 'medium' is not read without a protocol; add protocol=mbus"},
      {"protocol=mbus,dif=0C,vif=13,dif=0C",
       "warning 7: option 'dif' is given more than once and the last one counts; remove the others"},
      {"protocol=dlms, protocol=dlms",
       "error 7: blanks around a name or a value count: remove those in ' protocol=dlms'"},
      {"protocol=mbus,dif=0C ,vif=13", "error 7: blanks around a name or a value count: remove those in 'dif=0C '"},
      {"protocol=mbus,dif=0C,vif=\t13", "error 7: blanks around a name or a value count: remove those in 'vif=\t13'"},
      {"protocol=mbus,vif=13", "error 7: an mbus rule without dif is for no value; add dif=BYTES"},
      {"protocol=mbus,dif=0C", "error 7: an mbus rule without vif is for no value; add vif=BYTES"},
      {"protocol=mbus,dif=,vif=13", "error 7: an mbus rule without dif is for no value; add dif=BYTES"},
      {"protocol=mbus,dif=0c,vif=13", "error 7: dif is compared as a text, and '0c' is never it; write '0C'"},
      {"protocol=mbus,dif=8C10,vif=13", "error 7: dif is compared as a text, and '8C10' is never it; write '8C 10'"},
      {"protocol=mbus,dif=0C,vif=fd  17",
       "error 7: vif is compared as a text, and 'fd  17' is never it; write 'FD 17'"},
      {"protocol=mbus,dif=C,vif=13",
       "error 7: dif 'C' are no bytes; write two upper-case hexadecimal digits a byte and a blank between bytes, such "
       "as 8C 10"},
      {"protocol=mbus,dif=0C,vif=volume",
       "error 7: vif 'volume' are no bytes; write two upper-case hexadecimal digits a byte and a blank between bytes, "
       "such as 8C 10"},
      {"protocol=mbus,dif=0C 13,vif=13",
       "warning 7: dif '0C 13' is no DIF with its extensions, in which all bytes but the last are 80 or more; the "
       "bytes "
       "behind belong to vif"},
      {"protocol=modbus", "error 7: a modbus rule without register is for no value; add register=NUMBER"},
      {"protocol=modbus,register=", "error 7: a modbus rule without register is for no value; add register=NUMBER"},
      {"protocol=mbus,dif=0C,vif=13,medium=4",
       "warning 7: no meter has the medium '4'; write a medium letter, such as E electricity, G gas, H heat, W warm "
       "water, w water"},
  };
  for (const auto& [map, finding] : kCases) EXPECT_THAT(OfMapping(map), ElementsAre(finding)) << map;
}

TEST(RuleCheck, FindsATextWithoutAnyOption) {
  EXPECT_THAT(OfMapping("mbus"),
              ElementsAre("warning 7: 'mbus' has no \"=\" and is not read; write NAME=VALUE, or remove it",
                          "error 7: it has no option; write such as protocol=dlms"));
  EXPECT_THAT(OfMapping(",,"), ElementsAre("error 7: it has no option; write such as protocol=dlms"));
}

TEST(RuleCheck, KnowsEveryMediumLetter) {
  for (const char letter : std::string("ZOEGhSWwVAcCHUKPRXY"))
    EXPECT_THAT(OfMapping(std::string("protocol=mbus,dif=0C,vif=13,medium=") + letter), IsEmpty()) << letter;
  for (const char* text : {"e", "Q", "EE", "Heat"})
    EXPECT_EQ(OfMapping(std::string("protocol=mbus,dif=0C,vif=13,medium=") + text).size(), 1u) << text;
}

TEST(RuleCheck, FindsWhatIsWrongWithAnIdentifier) {
  const struct {
    const char* obis;
    const char* finding;
  } kCases[] = {
      {"", "error 7: '' is no OBIS identifier; write A-B:C.D.E, such as 1-0:1.8.0"},
      {"1.8.0", "error 7: '1.8.0' is no OBIS identifier; write A-B:C.D.E, such as 1-0:1.8.0"},
      {"1-0:1.8.0*", "error 7: '1-0:1.8.0*' is no OBIS identifier; write A-B:C.D.E, such as 1-0:1.8.0"},
      {"256-0:1.8.0", "error 7: group A of the identifier is 256, and a group is one byte; write 0 to 255"},
      {"1-999:1.8.0", "error 7: group B of the identifier is 999, and a group is one byte; write 0 to 255"},
      {"1-0:1.8.256", "error 7: group E of the identifier is 256, and a group is one byte; write 0 to 255"},
      {"1-0:1.8.0*256", "error 7: group F of the identifier is 256, and a group is one byte; write 0 to 255"},
      {"1-0:1.8.99999999999999",
       "error 7: group E of the identifier is 99999999999999, and a group is one byte; write 0 to 255"},
      {"1-0:1.8.0*255",
       "warning 7: a lookup drops the neutral end of the identifier that it asks for, so that it names past values "
       "only; write '1-0:1.8.0'"},
      {"1-0:1.8.0*FF",
       "warning 7: a lookup drops the neutral end of the identifier that it asks for, so that it names past values "
       "only; write '1-0:1.8.0'"},
  };
  for (const auto& [obis, finding] : kCases) EXPECT_THAT(OfIdentifier(obis), ElementsAre(finding)) << obis;
  for (const char* obis : {"255-255:255.255.255*254", "1-0:F.F.0", "0-0:0.0.0", "1-0:1.8.0*0"})
    EXPECT_THAT(OfIdentifier(obis), IsEmpty()) << obis;
}

TEST(RuleCheck, FindsAMissingNameAndASecondId) {
  const std::vector<cFinding> findings =
      Check({{7, "A", "1-0:1.8.0", "protocol=dlms", "file:1"}, {7, "", "1-0:2.8.0", "protocol=dlms", "file:5"}});
  EXPECT_THAT(Texts(findings), ElementsAre("error 7 (7): an earlier rule has this ID too; give one of them another ID",
                                           "error 7: the name is empty; give it one"));
  EXPECT_EQ(findings[0].place, "file:5");
  EXPECT_TRUE(HasError(findings));
}

TEST(RuleCheck, FindsRulesThatSayTheSame) {
  EXPECT_THAT(Texts(Check({{9, "A", "1-0:1.8.0", "protocol=mbus,dif=0C,vif=13", {}},
                           {5, "A", "1-0:1.8.0", "vif=13,dif=0C,protocol=mbus", {}}})),
              ElementsAre("warning 9 (5): the same as rule 5 (A); delete one of them"));
}

TEST(RuleCheck, FindsRulesThatNothingReaches) {
  const struct {
    cRawRule first, second;  // IDs 5 and 9
    bool unreachable;
  } kCases[] = {
      {{5, "A", "1-0:1.8.0", "protocol=dlms", {}}, {9, "B", "1-0:1.8.0", "protocol=dlms", {}}, true},
      {{5, "A", "1-1:1.8.0", "protocol=dlms", {}}, {9, "A", "1-0:1.8.0", "protocol=dlms", {}}, false},
      {{5, "A", "1-1:1.8.0", "protocol=dlms", {}}, {9, "A", "1-0:1.8.0", "note=x", {}}, true},
      {{5, "A", "1-0:1.8.0*1", "protocol=dlms", {}}, {9, "A", "1-0:1.8.0", "note=x", {}}, false},
      {{5, "A", "1-0:1.8.0", "note=x", {}}, {9, "A", "1-0:1.8.0", "protocol=dlms", {}}, false},
      {{5, "A", "1-0:1.8.0", "protocol=mbus,dif=0C,vif=13", {}},
       {9, "A", "1-0:2.8.0", "protocol=mbus,dif=0C,vif=13,medium=W,meteraddr=1", {}},
       true},
      {{5, "A", "1-0:1.8.0", "protocol=mbus,dif=0C,vif=13,medium=W,meteraddr=1", {}},
       {9, "A", "1-0:2.8.0", "protocol=mbus,dif=0C,vif=13,medium=W,meteraddr=1", {}},
       true},
      {{5, "A", "1-0:1.8.0", "protocol=mbus,dif=0C,vif=13,medium=W", {}},
       {9, "A", "1-0:2.8.0", "protocol=mbus,dif=0C,vif=13", {}},
       false},
      {{5, "A", "1-0:1.8.0", "protocol=mbus,dif=0C,vif=13,medium=W", {}},
       {9, "A", "1-0:2.8.0", "protocol=mbus,dif=0C,vif=13,medium=H", {}},
       false},
      {{5, "A", "1-0:1.8.0", "protocol=mbus,dif=0C,vif=13,meteraddr=1", {}},
       {9, "A", "1-0:2.8.0", "protocol=mbus,dif=0C,vif=13,medium=H", {}},
       false},
      {{5, "A", "1-0:1.8.0", "protocol=mbus,dif=0C,vif=13", {}},
       {9, "A", "1-0:2.8.0", "protocol=mbus,dif=04,vif=13", {}},
       false},
      {{5, "A", "1-0:1.8.0", "protocol=modbus,register=1", {}},
       {9, "A", "1-0:2.8.0", "protocol=modbus,register=1,meteraddr=3", {}},
       true},
      {{5, "A", "1-0:1.8.0", "protocol=modbus,register=1", {}},
       {9, "A", "1-0:2.8.0", "protocol=modbus,register=2", {}},
       false},
  };
  for (const auto& [first, second, unreachable] : kCases) {
    const auto findings = Check({second, first});
    EXPECT_EQ(std::any_of(findings.begin(), findings.end(),
                          [](const cFinding& each) {
                            return each.kind == eFinding::Unreachable && each.id == 9 && each.other == 5u &&
                                   each.level == eLevel::Warning;
                          }),
              unreachable)
        << first.map << " / " << second.map;
  }
  EXPECT_THAT(Texts(Check({{5, "A", "1-0:1.8.0", "protocol=dlms", {}}, {9, "B", "1-0:1.8.0", "protocol=dlms", {}}})),
              ElementsAre("warning 9 (5): is never used, since rule 5 (A) fits whenever it does and has the smaller "
                          "ID; delete it, or give it an ID below 5"));
}

TEST(RuleCheck, FindsANameThatIsNeverShown) {
  EXPECT_THAT(
      Texts(Check({{5, "A", "1-0:1.8.0*1", "protocol=dlms", {}}, {9, "B", "1-3:1.8.0*2", "protocol=dlms", {}}})),
      ElementsAre("warning 9 (5): its name is never shown, since rule 5 (A) has the same identifier and the "
                  "smaller ID; give both one name, or this one an ID below 5"));
  EXPECT_THAT(Check({{5, "A", "1-0:1.8.0", "protocol=dlms", {}}, {9, "B", "1-0:1.8.0*1", "protocol=dlms", {}}}),
              IsEmpty())
      << "a stored value is another one";
}

TEST(RuleCheck, ComparesOnlyRulesThatCanBeSet) {
  EXPECT_EQ(Check({{5, "", "1-0:1.8.0", "protocol=dlms", {}}, {9, "B", "1-0:1.8.0", "protocol=dlms", {}}}).size(), 1u);
}

// ---- against the lookups themselves

class cWorld {
 public:
  explicit cWorld(unsigned int seed) : m_random(seed) {}

  cObisMap MakeMap() {
    cObisMap map;
    for (unsigned int id = 1 + m_random() % 8; id > 0; --id)
      map.Add({id, Pick({"A", "B"}), Pick(kIdentifiers), Mapping()});
    return map;
  }

  // The rules that some value gets.
  static std::set<unsigned long long> Reached(const cObisMap& map) {
    std::set<unsigned long long> ids;
    cObisMapEntry entry;
    for (const char* obis : kIdentifiers) {
      if (map.GetEntryByObisIdFromDLMS(obis, entry)) ids.insert(entry.GetID());
      if (map.GetEntryByObisId(obis, entry, true) && entry.GetProtocol() == cObisMapEntry::eMapProtoNone)
        ids.insert(entry.GetID());
    }
    for (const char* address : {"1", "2", "other"})
      for (const char* medium : {"E", "G", "other"}) {
        for (const char* reg : {"1", "2"})
          if (map.GetEntryFromMODBUS(address, "", medium, reg, entry)) ids.insert(entry.GetID());
        for (const char* dif : {"0C", "84 10"})
          for (const char* vif : {"13", "FD 17"}) {
            vorn::cData dib, vib;
            vorn::cData::FromHex(dif, dib);
            vorn::cData::FromHex(vif, vib);
            if (map.GetEntryByDibVibFromMBUS(address, "", medium, dib, vib, entry)) ids.insert(entry.GetID());
          }
      }
    return ids;
  }

 private:
  static constexpr const char* kIdentifiers[] = {"1-0:1.8.0", "1-1:1.8.0", "1-0:1.8.0*1", "1-0:1.8.0*2", "6-0:1.8.0"};

  template <typename List>
  std::string Pick(const List& list) {
    return std::begin(list)[m_random() % std::size(list)];
  }
  std::string Pick(std::initializer_list<const char*> list) { return std::data(list)[m_random() % list.size()]; }

  std::string Mapping() {
    const std::string free =
        Pick({"", ",meteraddr=1", ",meteraddr=2", ",meteraddr="}) + Pick({"", ",medium=E", ",medium=G"});
    switch (m_random() % 4) {
      case 0:
        return "protocol=mbus,dif=" + Pick({"0C", "84 10"}) + ",vif=" + Pick({"13", "FD 17"}) + free;
      case 1:
        return "protocol=modbus,register=" + Pick({"1", "2"}) + free;
      case 2:
        return "protocol=dlms";
      default:
        return "note=x";
    }
  }

  std::mt19937 m_random;
};

TEST(RuleCheck, CallsThoseRulesUnreachableThatNoLookupGives) {
  cWorld world(11);
  std::size_t unreachable = 0;
  for (int round = 0; round < 3000; ++round) {
    const cObisMap map = world.MakeMap();
    std::set<unsigned long long> expected;
    for (const auto& [id, rule] : map.GetEntries()) expected.insert(id);
    for (const cFinding& finding : Check(map))
      if (finding.kind == eFinding::Unreachable || finding.kind == eFinding::Duplicate) {
        expected.erase(finding.id);
        ++unreachable;
      }
    ASSERT_EQ(cWorld::Reached(map), expected) << map.ToString();
  }
  EXPECT_GT(unreachable, 1000u);
}

}  // namespace
}  // namespace tav::rules
