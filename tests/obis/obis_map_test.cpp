// SPDX-License-Identifier: Apache-2.0
#include <tav/obis/obis_map.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include <tests/support/allocations.h>
#include <tests/support/parameters.h>

using tav::cObisMap;
using tav::cObisMapEntry;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

vorn::cData Bytes(const std::string& bytes) { return vorn::cData(bytes); }

// A map of rules given as ID, identifier and mapping; each is named after its ID.
class ObisMap : public testing::Test {
 protected:
  void Rule(unsigned long long id, const std::string& obis, const std::string& map = "") {
    m_map.Set(cObisMapEntry(id, "rule " + std::to_string(id), obis, map));
  }
  // The ID and the identifier that a lookup gives, "none" when it gives nothing.
  std::string Obis(const std::string& obis, bool withoutChannel) const {
    cObisMapEntry entry;
    return Show(m_map.GetEntryByObisId(obis, entry, withoutChannel), entry);
  }
  std::string Dlms(const std::string& obis) const {
    cObisMapEntry entry;
    return Show(m_map.GetEntryByObisIdFromDLMS(obis, entry), entry);
  }
  std::string Mbus(const std::string& addr, const std::string& medium, const std::string& dib,
                   const std::string& vib) const {
    cObisMapEntry entry;
    return Show(m_map.GetEntryByDibVibFromMBUS(addr, "spare", medium, Bytes(dib), Bytes(vib), entry), entry);
  }
  std::string Modbus(const std::string& addr, const std::string& medium, const std::string& reg) const {
    cObisMapEntry entry;
    return Show(m_map.GetEntryFromMODBUS(addr, "spare", medium, reg, entry), entry);
  }
  static std::string Show(bool found, const cObisMapEntry& entry) {
    return found ? std::to_string(entry.GetID()) + " " + entry.GetObisID() : "none" + entry.GetObisID();
  }

  cObisMap m_map;
};

}  // namespace

// ---- keeping rules

TEST_F(ObisMap, AddKeepsTheFirstRuleOfAnId) {
  EXPECT_TRUE(m_map.Add(cObisMapEntry(5, "first", "1-0:1.8.0", "")));
  EXPECT_FALSE(m_map.Add(cObisMapEntry(5, "second", "1-0:2.8.0", "")));
  EXPECT_EQ(m_map.ToString(), "1-0:1.8.0 first");
}

TEST_F(ObisMap, SetReplacesARuleOfTheId) {
  EXPECT_TRUE(m_map.Set(cObisMapEntry(5, "first", "1-0:1.8.0", "")));
  EXPECT_TRUE(m_map.Set(cObisMapEntry(5, "second", "1-0:2.8.0", "")));
  EXPECT_EQ(m_map.ToString(), "1-0:2.8.0 second");
}

TEST_F(ObisMap, SetTakesARuleOfItsOwn) {
  Rule(5, "1-0:1.8.0");
  EXPECT_TRUE(m_map.Set(m_map.GetEntries().at(5)));
  EXPECT_EQ(m_map.ToString(), "1-0:1.8.0 rule 5");
}

TEST_F(ObisMap, SetKeepsNoErrorTextOfTheRuleBefore) {
  cObisMapEntry refused(5, "first", "1-0:1.8.0", "");
  refused.Set(5, "", "", "");
  m_map.Set(refused);
  EXPECT_EQ(m_map.GetEntries().at(5).GetError(), "missing parameters");
  Rule(5, "1-0:1.8.0");
  EXPECT_EQ(m_map.GetEntries().at(5).GetError(), "");
}

TEST_F(ObisMap, RemoveLooksAtTheIdOnlyAndIsAlwaysTrue) {
  Rule(5, "1-0:1.8.0");
  Rule(6, "1-0:2.8.0");
  EXPECT_TRUE(m_map.Remove(cObisMapEntry(5, "other", "9-9:9.9.9", "")));
  EXPECT_TRUE(m_map.Remove(cObisMapEntry(5, "other", "9-9:9.9.9", "")));
  EXPECT_EQ(m_map.ToString(), "1-0:2.8.0 rule 6");
}

TEST_F(ObisMap, ClearRemovesAll) {
  Rule(5, "1-0:1.8.0");
  m_map.Clear();
  EXPECT_THAT(m_map.GetEntries(), IsEmpty());
  EXPECT_EQ(m_map.ToString(), "");
}

TEST_F(ObisMap, HoldsCopiesOfItsRules) {
  cObisMapEntry entry(5, "first", "1-0:1.8.0", "");
  m_map.Add(entry);
  entry.CorrectVV("*9");
  EXPECT_EQ(Obis("1-0:1.8.0", false), "5 1-0:1.8.0");
}

TEST_F(ObisMap, ACopyAnswersForItself) {
  Rule(5, "1-0:1.8.0");
  cObisMap copy = m_map;
  cObisMap assigned;
  assigned.Set(cObisMapEntry(1, "gone", "1-0:2.8.0", ""));
  assigned = copy;
  m_map.Clear();
  EXPECT_EQ(Obis("1-0:1.8.0", false), "none");
  for (cObisMap* map : {&copy, &assigned}) {
    cObisMapEntry entry;
    EXPECT_TRUE(map->GetEntryByObisId("1-0:1.8.0", entry, false));
    EXPECT_FALSE(map->GetEntryByObisId("1-0:2.8.0", entry, false));
    EXPECT_EQ(map->ToString(), "1-0:1.8.0 rule 5");
  }
}

TEST_F(ObisMap, AssigningToItselfChangesNothing) {
  Rule(5, "1-0:1.8.0");
  const cObisMap& same = m_map;
  m_map = same;
  EXPECT_EQ(Obis("1-0:1.8.0", false), "5 1-0:1.8.0");
}

TEST_F(ObisMap, LookupsFollowEveryChange) {
  for (const unsigned id : {7u, 3u, 5u, 1u}) Rule(id, "1-0:1.8.0");
  EXPECT_EQ(Obis("1-0:1.8.0", false), "1 1-0:1.8.0");
  m_map.Remove(cObisMapEntry(1, "n", "1-0:1.8.0", ""));
  EXPECT_EQ(Obis("1-0:1.8.0", false), "3 1-0:1.8.0");
  Rule(3, "1-0:2.8.0");
  EXPECT_EQ(Obis("1-0:1.8.0", false), "5 1-0:1.8.0");
  EXPECT_EQ(Obis("1-0:2.8.0", false), "3 1-0:2.8.0");
  m_map.Clear();
  EXPECT_EQ(Obis("1-0:2.8.0", false), "none");
  Rule(9, "1-0:1.8.0");
  EXPECT_EQ(Obis("1-0:1.8.0", false), "9 1-0:1.8.0");
}

TEST_F(ObisMap, PrintsItsRulesInTheOrderOfTheirIds) {
  Rule(9, "1-0:2.8.0", "protocol=dlms");
  Rule(5, "1-0:1.8.0");
  EXPECT_EQ(m_map.ToString(), "1-0:1.8.0 rule 5; 1-0:2.8.0 rule 9 protocol=dlms");
}

TEST_F(ObisMap, IsDestroyedAndPrintedThroughItsBase) {
  struct cDerived : cObisMap {
    explicit cDerived(bool& gone) : m_gone(gone) {}
    ~cDerived() override { m_gone = true; }
    std::string ToString() const override { return "derived"; }
    bool& m_gone;
  };
  bool gone = false;
  std::unique_ptr<cObisMap> map = std::make_unique<cDerived>(gone);
  EXPECT_EQ(map->ToString(), "derived");
  map.reset();
  EXPECT_TRUE(gone);
}

// ---- by identifier

TEST_F(ObisMap, TheSmallestIdWins) {
  Rule(9, "1-0:1.8.0");
  Rule(5, "1-0:1.8.0");
  EXPECT_EQ(Obis("1-0:1.8.0", false), "5 1-0:1.8.0");
  EXPECT_EQ(Obis("1-0:1.8.0", true), "5 1-0:1.8.0");
}

TEST_F(ObisMap, ANeutralFGroupOfTheRequestIsDropped) {
  Rule(5, "1-0:1.8.0");
  EXPECT_EQ(Obis("1-0:1.8.0*255", false), "5 1-0:1.8.0");
  EXPECT_EQ(Obis("1-0:1.8.0*FF", false), "5 1-0:1.8.0");
  EXPECT_EQ(Obis("1-0:1.8.0*255", true), "5 1-0:1.8.0");
}

TEST_F(ObisMap, ANeutralFGroupOfARuleIsNotDropped) {
  Rule(5, "1-0:1.8.0*255");
  EXPECT_EQ(Obis("1-0:1.8.0*255", false), "none");
  EXPECT_EQ(Obis("1-0:1.8.0", false), "none");
  EXPECT_EQ(Obis("1-0:1.8.0*1", true), "5 1-0:1.8.0*1");
}

TEST_F(ObisMap, WithChannelTheIdentifierMustBeEqual) {
  Rule(5, "1-2:1.8.0*7");
  EXPECT_EQ(Obis("1-2:1.8.0*7", false), "5 1-2:1.8.0*7");
  EXPECT_EQ(Obis("1-2:1.8.0*8", false), "none");
  EXPECT_EQ(Obis("1-2:1.8.0", false), "none");
  EXPECT_EQ(Obis("1-0:1.8.0*7", false), "none");
}

TEST_F(ObisMap, WithoutChannelTheRequestsFGroupIsCarriedOver) {
  Rule(5, "1-2:1.8.0*7");
  EXPECT_EQ(Obis("1-1:1.8.0*3", true), "5 1-2:1.8.0*3");
  cObisMapEntry entry;
  ASSERT_TRUE(m_map.GetEntryByObisId("1-1:1.8.0*3", entry, true));
  EXPECT_EQ(entry.GetObisIDWithoutChannel(), "1-0:1.8.0*3");
  EXPECT_EQ(m_map.GetEntries().at(5).GetObisID(), "1-2:1.8.0*7") << "the rule itself stays";
}

TEST_F(ObisMap, WithoutChannelARequestWithFGroupNeedsARuleWithOne) {
  Rule(5, "1-2:1.8.0*7");
  EXPECT_EQ(Obis("1-1:1.8.0", true), "none");
  Rule(6, "1-2:1.8.0");
  EXPECT_EQ(Obis("1-1:1.8.0", true), "6 1-2:1.8.0");
  EXPECT_EQ(Obis("1.8.0", true), "6 1-2:1.8.0") << "a request without its head means 1-0";
}

TEST_F(ObisMap, ByIdentifierTheProtocolDoesNotCount) {
  Rule(5, "1-0:1.8.0", "protocol=dlms");
  EXPECT_EQ(Obis("1-0:1.8.0", false), "5 1-0:1.8.0");
}

TEST_F(ObisMap, AnUnknownIdentifierLeavesTheTarget) {
  Rule(5, "1-0:1.8.0");
  cObisMapEntry entry(3, "mine", "7-0:3.0.0", "a=b");
  EXPECT_FALSE(m_map.GetEntryByObisId("1-0:2.8.0", entry, true));
  EXPECT_FALSE(m_map.GetEntryByObisIdFromDLMS("1-0:2.8.0", entry));
  EXPECT_FALSE(m_map.GetEntryByDibVibFromMBUS("", "", "", Bytes(""), Bytes(""), entry));
  EXPECT_FALSE(m_map.GetEntryFromMODBUS("", "", "", "", entry));
  EXPECT_EQ(entry.ToString(), "7-0:3.0.0 mine a=b");
}

TEST_F(ObisMap, TheTargetOfALookupKeepsItsErrorText) {
  Rule(5, "1-0:1.8.0");
  cObisMapEntry entry;
  entry.Set(1, "", "", "");
  EXPECT_TRUE(m_map.GetEntryByObisId("1-0:1.8.0", entry, true));
  EXPECT_EQ(entry.GetError(), "missing parameters");
}

// ---- by protocol

TEST_F(ObisMap, DlmsFindsDlmsRulesByTheirExactIdentifier) {
  Rule(4, "1-0:1.8.0");
  Rule(5, "1-0:1.8.0", "protocol=mbus");
  EXPECT_EQ(Dlms("1-0:1.8.0"), "none");
  Rule(6, "1-0:1.8.0*255", "protocol=dlms");
  EXPECT_EQ(Dlms("1-0:1.8.0"), "none");
  EXPECT_EQ(Dlms("1-0:1.8.0*255"), "6 1-0:1.8.0*255") << "neither normalised nor corrected";
  Rule(8, "1-0:1.8.0", "protocol=dlms");
  Rule(7, "1-0:1.8.0", "protocol=dlms");
  EXPECT_EQ(Dlms("1-0:1.8.0"), "7 1-0:1.8.0");
}

TEST_F(ObisMap, MbusFindsARuleByItsBlocksAsTexts) {
  Rule(5, "1-0:1.8.0*255", "protocol=mbus,dif=04,vif=03");
  Rule(6, "1-0:2.8.0", "protocol=mbus,dif=84 10,vif=FD 17");
  EXPECT_EQ(Mbus("12", "E", "\x04", "\x03"), "5 1-0:1.8.0*255") << "as it is stored";
  EXPECT_EQ(Mbus("12", "E", "\x84\x10", "\xFD\x17"), "6 1-0:2.8.0");
  EXPECT_EQ(Mbus("12", "E", "\x04", "\x04"), "none");
  EXPECT_EQ(Mbus("12", "E", "\x0C", "\x03"), "none");
}

TEST_F(ObisMap, MbusTakesTheSeparatorOfTheBlocks) {
  Rule(6, "1-0:2.8.0", "protocol=mbus,dif=8410,vif=03");
  vorn::cData dib = Bytes("\x84\x10");
  cObisMapEntry entry;
  EXPECT_FALSE(m_map.GetEntryByDibVibFromMBUS("", "", "", dib, Bytes("\x03"), entry));
  dib.SetSeparator("");
  EXPECT_TRUE(m_map.GetEntryByDibVibFromMBUS("", "", "", dib, Bytes("\x03"), entry));
}

TEST_F(ObisMap, MbusRulesMayBeForOneMeterOrMedium) {
  Rule(5, "1-0:1.8.0", "protocol=mbus,meteraddr=12,dif=04,vif=03");
  Rule(6, "1-0:2.8.0", "protocol=mbus,medium=E,dif=04,vif=03");
  Rule(7, "1-0:3.8.0", "protocol=mbus,dif=04,vif=03");
  EXPECT_EQ(Mbus("12", "E", "\x04", "\x03"), "5 1-0:1.8.0");
  EXPECT_EQ(Mbus("13", "E", "\x04", "\x03"), "6 1-0:2.8.0");
  EXPECT_EQ(Mbus("13", "G", "\x04", "\x03"), "7 1-0:3.8.0");
}

TEST_F(ObisMap, ARuleWithoutBlocksMatchesEmptyOnesOnly) {
  Rule(5, "1-0:1.8.0", "protocol=mbus");
  EXPECT_EQ(Mbus("", "", "", ""), "5 1-0:1.8.0");
  EXPECT_EQ(Mbus("", "", "\x04", ""), "none");
  EXPECT_EQ(Mbus("", "", "", "\x03"), "none");
}

TEST_F(ObisMap, MbusPassesOverOtherProtocols) {
  Rule(5, "1-0:1.8.0", "dif=04,vif=03");
  Rule(6, "1-0:1.8.0", "protocol=modbus,dif=04,vif=03");
  EXPECT_EQ(Mbus("", "", "\x04", "\x03"), "none");
}

TEST_F(ObisMap, ModbusFindsARuleByItsRegister) {
  Rule(4, "1-0:9.8.0", "protocol=mbus,register=40001");
  Rule(5, "1-0:1.8.0*255", "protocol=modbus,meteraddr=12,register=40001");
  Rule(6, "1-0:2.8.0", "protocol=modbus,medium=E,register=40001");
  Rule(7, "1-0:3.8.0", "protocol=modbus,register=40001");
  Rule(8, "1-0:4.8.0", "protocol=modbus");
  EXPECT_EQ(Modbus("12", "E", "40001"), "5 1-0:1.8.0*255");
  EXPECT_EQ(Modbus("13", "E", "40001"), "6 1-0:2.8.0");
  EXPECT_EQ(Modbus("13", "G", "40001"), "7 1-0:3.8.0");
  EXPECT_EQ(Modbus("13", "G", "040001"), "none") << "compared as text";
  EXPECT_EQ(Modbus("13", "G", ""), "8 1-0:4.8.0");
}

// ---- the record form

TEST_F(ObisMap, TheRecordFormHasOneEntryARule) {
  Rule(9, "1-0:2.8.0", "a=b");
  Rule(5, "1-0:1.8.0");
  EXPECT_THAT(Parameters(m_map.ToRecord()),
              ElementsAre("entry record={ID uint64=5, name text=rule 5, obis text=1-0:1.8.0, map text=}",
                          "entry record={ID uint64=9, name text=rule 9, obis text=1-0:2.8.0, map text=a=b}"));
  EXPECT_TRUE(cObisMap().ToRecord().IsEmpty());
}

TEST_F(ObisMap, ReadsItsFormInsideAnObisMapParameter) {
  Rule(9, "1-0:2.8.0", "a=b");
  Rule(5, "1-0:1.8.0", "c=d");
  vorn::cRecord message;
  message.AppendRecordPar("obis-map", m_map.ToRecord());
  cObisMap read;
  read.FromRecord(message);
  EXPECT_EQ(read.ToString(), m_map.ToString());
}

TEST_F(ObisMap, DoesNotReadTheBareForm) {
  Rule(5, "1-0:1.8.0", "c=d");
  cObisMap read;
  read.FromRecord(m_map.ToRecord());
  EXPECT_THAT(read.GetEntries(), IsEmpty());
}

TEST_F(ObisMap, AFormWithoutRulesLeavesTheMap) {
  Rule(5, "1-0:1.8.0", "c=d");
  vorn::cRecord mistyped, empty;
  mistyped.AppendTextPar("obis-map", "text");
  empty.AppendRecordPar("obis-map", vorn::cRecord());
  for (const vorn::cRecord& form : {vorn::cRecord(), mistyped, empty}) m_map.FromRecord(form);
  EXPECT_EQ(m_map.ToString(), "1-0:1.8.0 rule 5 c=d");
}

TEST_F(ObisMap, ReadingAddsToTheMapAndTheLastOfAnIdHolds) {
  Rule(1, "1-0:1.8.0", "c=d");
  Rule(5, "1-0:1.8.0", "c=d");
  vorn::cRecord rules, message;
  rules.AppendRecordPar("entry", cObisMapEntry(5, "first", "1-0:2.8.0", "a=b").ToRecord());
  rules.AppendRecordPar("entry", cObisMapEntry(5, "second", "1-0:3.8.0", "a=b").ToRecord());
  message.AppendRecordPar("obis-map", rules);
  m_map.FromRecord(message);
  EXPECT_EQ(m_map.ToString(), "1-0:1.8.0 rule 1 c=d; 1-0:3.8.0 second a=b");
}

TEST_F(ObisMap, BadRulesAreLeftOut) {
  vorn::cRecord rules, message;
  rules.AppendTextPar("entry", "text");
  rules.AppendRecordPar("entry", vorn::cRecord());
  rules.AppendRecordPar("entry", cObisMapEntry(5, "no mapping", "1-0:1.8.0", "").ToRecord());
  rules.AppendRecordPar("entry", cObisMapEntry(6, "good", "1-0:1.8.0", "a=b").ToRecord());
  message.AppendRecordPar("obis-map", rules);
  m_map.FromRecord(message);
  EXPECT_EQ(m_map.ToString(), "1-0:1.8.0 good a=b");
}

TEST_F(ObisMap, EveryParameterFromTheFirstEntryOnIsTried) {
  vorn::cRecord rules, message;
  rules.AppendRecordPar("before", cObisMapEntry(1, "before", "1-0:1.8.0", "a=b").ToRecord());
  rules.AppendRecordPar("entry", cObisMapEntry(2, "first", "1-0:1.8.0", "a=b").ToRecord());
  rules.AppendRecordPar("other", cObisMapEntry(3, "other", "1-0:1.8.0", "a=b").ToRecord());
  message.AppendRecordPar("obis-map", rules);
  m_map.FromRecord(message);
  EXPECT_EQ(m_map.ToString(), "1-0:1.8.0 first a=b; 1-0:1.8.0 other a=b");
}

// ---- what a lookup costs

TEST_F(ObisMap, ALookupAllocatesNothingARule) {
  const auto lookups = [this] {
    const vorn::cData dib = Bytes("\x84\x10\x01\x02\x03\x04\x05\x06\x07");
    cObisMapEntry entry;
    const cAllocations allocations;
    for (const bool withoutChannel : {false, true})
      m_map.GetEntryByObisId("128-128:128.128.128*128", entry, withoutChannel);
    m_map.GetEntryByDibVibFromMBUS("12", "", "E", dib, dib, entry);
    m_map.GetEntryByObisIdFromDLMS("128-128:128.128.128*128", entry);
    m_map.GetEntryFromMODBUS("12", "", "E", "40002", entry);
    return allocations.Get();
  };
  for (unsigned id = 0; id < 10; ++id)
    Rule(id, "1-0:1.8." + std::to_string(id), "protocol=mbus,meteraddr=a long address");
  const std::size_t few = lookups();
  for (unsigned id = 10; id < 1000; ++id)
    Rule(id, "100-100:100.100." + std::to_string(id), "protocol=mbus,dif=0,vif=0");
  EXPECT_EQ(lookups(), few);
}
