// SPDX-License-Identifier: Apache-2.0
#include <tav/obis/obis_map_entry.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include <tests/support/parameters.h>

using tav::cObisMapEntry;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace {

cObisMapEntry Energy() { return {7, "Energy", "1-2:1.8.0*255", "protocol=mbus,dif=04,vif=03"}; }

cObisMapEntry WithMap(const std::string& map) { return {7, "Energy", "1-0:1.8.0", map}; }

}  // namespace

TEST(ObisMapEntry, StartsEmpty) {
  const cObisMapEntry entry;
  EXPECT_EQ(entry.GetID(), 0u);
  EXPECT_EQ(entry.GetName() + entry.GetObisID() + entry.GetObisIDWithoutChannel() + entry.GetMap() + entry.GetError(),
            "");
  EXPECT_THAT(entry.GetMapOptions(), IsEmpty());
  EXPECT_EQ(entry.GetProtocol(), cObisMapEntry::eMapProtoNone);
}

TEST(ObisMapEntry, ProtocolsHaveTheirNumbers) {
  EXPECT_EQ(cObisMapEntry::eMapProtoNone, 0);
  EXPECT_EQ(cObisMapEntry::eMapProtoUnknown, 1);
  EXPECT_EQ(cObisMapEntry::eMapProtoMbus, 2);
  EXPECT_EQ(cObisMapEntry::eMapProtoDlms, 3);
  EXPECT_EQ(cObisMapEntry::eMapProtoModbus, 4);
}

TEST(ObisMapEntry, SetTakesAllAndParsesTheMapping) {
  cObisMapEntry entry;
  EXPECT_TRUE(entry.Set(7, "Energy", "1-2:1.8.0*255", "protocol=mbus,dif=04,vif=03"));
  EXPECT_EQ(entry.GetID(), 7u);
  EXPECT_EQ(entry.GetName(), "Energy");
  EXPECT_EQ(entry.GetObisID(), "1-2:1.8.0*255");
  EXPECT_EQ(entry.GetObisIDWithoutChannel(), "1-0:1.8.0*nn");
  EXPECT_EQ(entry.GetMap(), "protocol=mbus,dif=04,vif=03");
  EXPECT_EQ(entry.GetProtocol(), cObisMapEntry::eMapProtoMbus);
  EXPECT_THAT(entry.GetMapOptions(), ElementsAre(Pair("dif", "04"), Pair("protocol", "mbus"), Pair("vif", "03")));
}

TEST(ObisMapEntry, EveryProtocolHasItsText) {
  EXPECT_EQ(WithMap("protocol=mbus").GetProtocol(), cObisMapEntry::eMapProtoMbus);
  EXPECT_EQ(WithMap("protocol=dlms").GetProtocol(), cObisMapEntry::eMapProtoDlms);
  EXPECT_EQ(WithMap("protocol=modbus").GetProtocol(), cObisMapEntry::eMapProtoModbus);
  EXPECT_EQ(WithMap("medium=E").GetProtocol(), cObisMapEntry::eMapProtoNone);
}

TEST(ObisMapEntry, AnEmptyMappingIsARuleWithoutProtocol) {
  cObisMapEntry entry;
  EXPECT_TRUE(entry.Set(7, "Energy", "1-0:1.8.0", ""));
  EXPECT_EQ(entry.GetProtocol(), cObisMapEntry::eMapProtoNone);
  EXPECT_THAT(entry.GetMapOptions(), IsEmpty());
}

TEST(ObisMapEntry, RefusesMissingPartsAndChangesNothing) {
  for (const auto& [name, obis] : {std::pair("", "1-0:1.8.0"), std::pair("Energy", ""), std::pair("", "")}) {
    cObisMapEntry entry = Energy();
    EXPECT_FALSE(entry.Set(8, name, obis, "protocol=iec"));
    EXPECT_EQ(entry.GetError(), "missing parameters");
    EXPECT_EQ(entry.ToRecord(), Energy().ToRecord());
    EXPECT_EQ(entry.GetMapOptions(), Energy().GetMapOptions());
  }
}

TEST(ObisMapEntry, RefusesABadIdentifierAndChangesNothing) {
  cObisMapEntry entry = Energy();
  EXPECT_FALSE(entry.Set(8, "Other", "1-0:1.8", ""));
  EXPECT_EQ(entry.GetError(), "obis-id invalid");
  EXPECT_EQ(entry.ToRecord(), Energy().ToRecord());
  EXPECT_EQ(entry.GetMapOptions(), Energy().GetMapOptions());
  EXPECT_EQ(entry.GetProtocol(), cObisMapEntry::eMapProtoMbus);
}

TEST(ObisMapEntry, RefusesAMappingWithoutAnyPairButDropsTheOldOptions) {
  for (const char* map : {"mbus", ",", ",,", "a,b", " "}) {
    cObisMapEntry entry = Energy();
    EXPECT_FALSE(entry.Set(8, "Other", "1-0:2.8.0", map));
    EXPECT_EQ(entry.GetError(), "syntax error in mapping") << map;
    EXPECT_THAT(entry.GetMapOptions(), IsEmpty());
    EXPECT_EQ(entry.ToRecord(), Energy().ToRecord());
    EXPECT_EQ(entry.GetProtocol(), cObisMapEntry::eMapProtoMbus) << "not reached";
  }
}

TEST(ObisMapEntry, RefusesAnUnknownProtocolAndKeepsTheNewOptions) {
  cObisMapEntry entry = Energy();
  EXPECT_FALSE(entry.Set(8, "Other", "1-0:2.8.0", "protocol=iec,medium=E"));
  EXPECT_EQ(entry.GetError(), "unknown protocol");
  EXPECT_EQ(entry.GetProtocol(), cObisMapEntry::eMapProtoUnknown);
  EXPECT_THAT(entry.GetMapOptions(), ElementsAre(Pair("medium", "E"), Pair("protocol", "iec")));
  EXPECT_TRUE(entry.IsMedium("E"));
  EXPECT_FALSE(entry.IsMedium("G")) << "the new options answer";
  EXPECT_EQ(entry.ToRecord(), Energy().ToRecord());
}

TEST(ObisMapEntry, AMappingWithoutProtocolForgetsTheEarlierOne) {
  cObisMapEntry entry = Energy();
  EXPECT_TRUE(entry.Set(7, "Energy", "1-0:1.8.0", "medium=E"));
  EXPECT_EQ(entry.GetProtocol(), cObisMapEntry::eMapProtoNone);
}

TEST(ObisMapEntry, ComparesProtocolTextsExactly) {
  for (const char* map : {"protocol=MBUS", "protocol= mbus", "protocol=mbus ", "protocol="}) {
    cObisMapEntry entry;
    EXPECT_FALSE(entry.Set(1, "n", "1-0:1.8.0", map)) << map;
    EXPECT_EQ(entry.GetError(), "unknown protocol");
  }
}

TEST(ObisMapEntry, KeepsBlanksAndOptionsItDoesNotKnow) {
  const cObisMapEntry entry = WithMap("word,protocol=mbus, dif=04,x=a=b,empty=");
  EXPECT_THAT(entry.GetMapOptions(),
              ElementsAre(Pair(" dif", "04"), Pair("empty", ""), Pair("protocol", "mbus"), Pair("x", "a=b")));
  EXPECT_EQ(entry.GetKeys().dif, "") << "a blank belongs to the name";
}

TEST(ObisMapEntry, ASuccessKeepsAnEarlierErrorText) {
  cObisMapEntry entry;
  entry.Set(1, "", "", "");
  EXPECT_TRUE(entry.Set(1, "n", "1-0:1.8.0", ""));
  EXPECT_EQ(entry.GetError(), "missing parameters");
}

TEST(ObisMapEntry, ARefusedOneBuiltInPlaceHasNoIdentifier) {
  const cObisMapEntry entry(1, "", "1-0:1.8.0", "");
  EXPECT_EQ(entry.GetObisID(), "");
  EXPECT_EQ(entry.GetError(), "missing parameters");
}

TEST(ObisMapEntry, ACopyHasTheErrorTextToo) {
  cObisMapEntry entry = Energy();
  entry.Set(1, "", "", "");
  const cObisMapEntry copy = entry;
  EXPECT_EQ(copy.GetError(), "missing parameters");
  EXPECT_EQ(copy.ToRecord(), Energy().ToRecord());
  EXPECT_EQ(copy.GetMapOptions(), Energy().GetMapOptions());
  EXPECT_EQ(copy.GetObisIDWithoutChannel(), "1-0:1.8.0*nn");
  EXPECT_EQ(copy.GetProtocol(), cObisMapEntry::eMapProtoMbus);
}

TEST(ObisMapEntry, AssignmentLeavesTheErrorText) {
  cObisMapEntry target;
  target.Set(1, "", "", "");
  target = Energy();
  EXPECT_EQ(target.GetError(), "missing parameters");
  EXPECT_EQ(target.ToRecord(), Energy().ToRecord());
  EXPECT_EQ(target.GetMapOptions(), Energy().GetMapOptions());
  EXPECT_EQ(target.GetObisIDWithoutChannel(), "1-0:1.8.0*nn");
  EXPECT_EQ(target.GetProtocol(), cObisMapEntry::eMapProtoMbus);
  EXPECT_EQ(target.GetKeys().dif, "04");
  cObisMapEntry refused;
  refused.Set(1, "", "", "");
  cObisMapEntry fresh;
  fresh = refused;
  EXPECT_EQ(fresh.GetError(), "");
}

TEST(ObisMapEntry, AssigningToItselfChangesNothing) {
  cObisMapEntry entry = Energy();
  const cObisMapEntry& same = entry;
  entry = same;
  EXPECT_EQ(entry.ToRecord(), Energy().ToRecord());
  EXPECT_EQ(entry.GetMapOptions(), Energy().GetMapOptions());
}

TEST(ObisMapEntry, IsDestroyedAndPrintedThroughItsBase) {
  struct cDerived : cObisMapEntry {
    explicit cDerived(bool& gone) : m_gone(gone) {}
    ~cDerived() override { m_gone = true; }
    std::string ToString() const override { return "derived"; }
    bool& m_gone;
  };
  bool gone = false;
  std::unique_ptr<cObisMapEntry> entry = std::make_unique<cDerived>(gone);
  EXPECT_EQ(entry->ToString(), "derived");
  entry.reset();
  EXPECT_TRUE(gone);
}

TEST(ObisMapEntry, PrintsIdentifierNameAndMapping) {
  EXPECT_EQ(cObisMapEntry(1, "Energy", "1-0:1.8.0*255", "protocol=mbus,dif=04,vif=03").ToString(),
            "1-0:1.8.0*255 Energy protocol=mbus,dif=04,vif=03");
  EXPECT_EQ(cObisMapEntry(1, "Energy", "1-0:1.8.0", "").ToString(), "1-0:1.8.0 Energy");
  EXPECT_EQ(cObisMapEntry().ToString(), " ");
}

TEST(ObisMapEntry, OptionsAreReadAsTextAndAsNumber) {
  EXPECT_EQ(WithMap("register=12").GetMapOption("register"), "12");
  EXPECT_EQ(WithMap("register=12").GetMapOption("Register"), "");
  EXPECT_EQ(WithMap("").GetMapOptionAsInt("register", 7), 7);
  EXPECT_EQ(WithMap("register=").GetMapOptionAsInt("register", 7), 7);
  EXPECT_EQ(WithMap("register=abc").GetMapOptionAsInt("register", 7), 0);
  EXPECT_EQ(WithMap("register=12xyz").GetMapOptionAsInt("register", 7), 12);
  EXPECT_EQ(WithMap("register=-3").GetMapOptionAsInt("register", 7), -3);
}

TEST(ObisMapEntry, ARuleWithoutMediumIsForEveryMedium) {
  for (const char* map : {"", "medium="}) {
    EXPECT_TRUE(WithMap(map).IsMedium(""));
    EXPECT_TRUE(WithMap(map).IsMedium("E"));
  }
  EXPECT_TRUE(WithMap("medium=4").IsMedium("4"));
  EXPECT_FALSE(WithMap("medium=4").IsMedium(""));
  EXPECT_FALSE(WithMap("medium=4").IsMedium("04"));
  EXPECT_FALSE(WithMap("medium=h").IsMedium("H"));
}

TEST(ObisMapEntry, ARuleWithoutAddressIsForEveryMeter) {
  for (const char* map : {"", "meteraddr="}) {
    EXPECT_TRUE(WithMap(map).IsMeterAddr(""));
    EXPECT_TRUE(WithMap(map).IsMeterAddr("12"));
  }
  EXPECT_TRUE(WithMap("meteraddr=12").IsMeterAddr("12"));
  EXPECT_FALSE(WithMap("meteraddr=12").IsMeterAddr("1"));
  EXPECT_FALSE(WithMap("meteraddr=12").IsMeterAddr(""));
}

TEST(ObisMapEntry, CorrectVVCarriesTheRequestedFGroup) {
  const struct {
    const char* stored;
    const char* request;
    const char* obis;
    const char* free;
  } kCases[] = {
      {"1-2:1.8.0*7", "1-0:1.8.0*5", "1-2:1.8.0*5", "1-0:1.8.0*5"},
      {"1-2:1.8.0", "1-0:1.8.0*5", "1-2:1.8.0*5", "1-0:1.8.0*5"},
      {"1-2:1.8.0*7", "1-0:1.8.0", "1-2:1.8.0", "1-0:1.8.0"},
      {"1-2:1.8.0", "1-0:1.8.0", "1-2:1.8.0", "1-0:1.8.0"},
      {"1-2:1.8.0*7", "*", "1-2:1.8.0*", "1-0:1.8.0*"},
      {"1-2:1.8.0*7", "x*1*2", "1-2:1.8.0*1*2", "1-0:1.8.0*1*2"},
  };
  for (const auto& c : kCases) {
    cObisMapEntry entry(1, "n", c.stored, "");
    entry.CorrectVV(c.request);
    EXPECT_EQ(entry.GetObisID(), c.obis) << c.stored << " for " << c.request;
    EXPECT_EQ(entry.GetObisIDWithoutChannel(), c.free);
  }
}

TEST(ObisMapEntry, CorrectVVTakesTheEntrysOwnIdentifierToo) {
  cObisMapEntry entry(1, "n", "1-2:1.8.0*7", "");
  entry.CorrectVV(entry.GetObisID());
  EXPECT_EQ(entry.GetObisIDWithoutChannel(), "1-0:1.8.0*7");
}

TEST(ObisMapEntry, TheRecordFormHasFourParameters) {
  EXPECT_THAT(Parameters(Energy().ToRecord()), ElementsAre("ID uint64=7", "name text=Energy", "obis text=1-2:1.8.0*255",
                                                           "map text=protocol=mbus,dif=04,vif=03"));
  EXPECT_THAT(Parameters(cObisMapEntry().ToRecord()),
              ElementsAre("ID uint64=0", "name text=", "obis text=", "map text="));
}

TEST(ObisMapEntry, SurvivesTheRoundTrip) {
  cObisMapEntry read;
  EXPECT_TRUE(read.FromRecord(Energy().ToRecord()));
  EXPECT_EQ(read.ToRecord(), Energy().ToRecord());
  EXPECT_EQ(read.GetProtocol(), cObisMapEntry::eMapProtoMbus);
}

TEST(ObisMapEntry, RefusesAFormThatLacksAParameterAndSaysNoError) {
  for (const char* missing : {"ID", "name", "obis", "map"}) {
    vorn::cRecord form;
    if (std::string(missing) != "ID") form.AppendUInt64Par("ID", 8);
    for (const char* name : {"name", "obis", "map"})
      if (std::string(missing) != name) form.AppendTextPar(name, std::string(name) == "obis" ? "1-0:1.8.0" : "a=b");
    cObisMapEntry entry = Energy();
    EXPECT_FALSE(entry.FromRecord(form)) << missing;
    EXPECT_EQ(entry.GetError(), "");
    EXPECT_EQ(entry.ToRecord(), Energy().ToRecord());
  }
}

TEST(ObisMapEntry, RefusesAFormWithAnEmptyMappingThoughSetTakesIt) {
  cObisMapEntry plain(7, "Energy", "1-0:1.8.0", "");
  ASSERT_EQ(plain.GetObisID(), "1-0:1.8.0");
  cObisMapEntry entry;
  EXPECT_FALSE(entry.FromRecord(plain.ToRecord()));
  EXPECT_EQ(entry.GetObisID(), "");
}

TEST(ObisMapEntry, RefusesAFormThatSetRefuses) {
  vorn::cRecord form = Energy().ToRecord();
  form.SetTextPar("obis", "1-0:1.8");
  cObisMapEntry entry;
  EXPECT_FALSE(entry.FromRecord(form));
  EXPECT_EQ(entry.GetError(), "obis-id invalid");
}

TEST(ObisMapEntry, TakesAnIdOfAnyIntegerType) {
  vorn::cRecord form = Energy().ToRecord();
  form.SetUIntPar("ID", 9);
  cObisMapEntry entry;
  EXPECT_TRUE(entry.FromRecord(form));
  EXPECT_EQ(entry.GetID(), 9u);
}

TEST(ObisMapEntry, AnIdBeyond32BitsSurvives) {
  const cObisMapEntry entry(0xFFFFFFFFFFFFFFFFull, "n", "1-0:1.8.0", "a=b");
  cObisMapEntry read;
  EXPECT_TRUE(read.FromRecord(entry.ToRecord()));
  EXPECT_EQ(read.GetID(), 0xFFFFFFFFFFFFFFFFull);
}

TEST(ObisWithoutChannel, WritesTheChannelAsZeroAndAnyFGroupAsNn) {
  const struct {
    const char* obis;
    const char* free;
  } kCases[] = {
      {"1-2:1.8.0*101", "1-0:1.8.0*nn"},
      {"1-0:1.8.0*255", "1-0:1.8.0*nn"},
      {"7-1:3.0.0", "7-0:3.0.0"},
      {"1.8.0", "1-0:1.8.0"},
      {"1.8.0*1", "1-0:1.8.0*nn"},
      {"1-2:1.8.0*", "1-0:1.8.0"},
      {"1-2:1.8.0*1*2", "1-0:1.8.0*nn"},
      {"7:3.0.0", "1-0:3.0.0"},  // a head without a dash
      {":3.0.0", "1-0:3.0.0"},
      {"-2:3.0.0", "-0:3.0.0"},  // an empty group A
      {"6-1-2:3.0.0", "6-0:3.0.0"},
      {"1-2:3:4.5", "1-0:3:4.5"},  // cut at the first colon only
      {"1-2:1.8", "1-0:1.8"},
      {"1-2:180", ""},
      {"1-2:180*1.2", ""},  // a dot in the F group does not count
      {"18", ""},
      {"", ""},
  };
  for (const auto& c : kCases) EXPECT_EQ(tav::ObisWithoutChannel(c.obis), c.free) << c.obis;
}
