// SPDX-License-Identifier: Apache-2.0
#include <tav/service/db_ctrl_protocol.h>

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include <tests/support/protocol_tables.h>

namespace db_ctrl = tav::db_ctrl;

TEST(DbCtrlProtocol, IsSpokenOnChannelData) { EXPECT_EQ(db_ctrl::kProtocol.GetService(), "data"); }

TEST(DbCtrlProtocol, EveryRequestOfTheDocumentedRangeIsThere) {
  for (const unsigned int id :
       {0x51000u, 0x51003u, 0x51006u, 0x51009u, 0x5100cu, 0x5100fu, 0x51012u, 0x5101eu, 0x51027u, 0x51038u, 0x51046u,
        0x51049u, 0x5104cu, 0x51064u, 0x51067u, 0x5106au, 0x51070u, 0x51073u, 0x51076u, 0x51079u, 0x5107cu, 0x5108eu,
        0x51091u, 0x51094u, 0x51190u, 0x51193u, 0x51196u, 0x51200u, 0x51203u, 0x51206u, 0x51209u, 0x5120cu, 0x5120fu})
    ExpectAnswersBehindRequest(db_ctrl::kProtocol, id);
}

TEST(DbCtrlProtocol, EveryDocumentedAnswerIsThere) {
  for (const unsigned int id : {0x5100au, 0x5100bu, 0x5101fu, 0x51020u, 0x51039u, 0x5103au, 0x5107du})
    ExpectUnanswered(db_ctrl::kProtocol, id, tav::eToClient);
}

TEST(DbCtrlProtocol, LeavesTheNumbersOfTheOtherServicesOfItsRange) {
  for (unsigned int id = 0x5102a; id <= 0x51034; ++id)
    EXPECT_EQ(db_ctrl::kProtocol.Find(id), nullptr) << std::hex << id;
  for (unsigned int id = 0x51082; id <= 0x5108b; ++id)
    EXPECT_EQ(db_ctrl::kProtocol.Find(id), nullptr) << std::hex << id;
}

TEST(DbCtrlProtocol, ANameIsGivenOnce) { ExpectNamesGivenOnce(db_ctrl::kProtocol); }

TEST(DbCtrlProtocol, AKeyHasOneTypeAndOneMeaning) { ExpectKeysOfOneMeaning(db_ctrl::kProtocol); }

TEST(DbCtrlProtocol, EveryRefusalThatHasARowCarriesAReason) { ExpectRefusalsWithReason(db_ctrl::kProtocol); }

TEST(DbCtrlProtocol, RequestsAskForWhatTheirClientSends) {
  const std::map<unsigned int, std::vector<std::string>> kExpected = {
      {0x51000, {"db text", "sql text", "options uint"}},
      {0x51003, {"handle uuid", "count uint"}},
      {0x51006, {"handle uuid"}},
      {0x51009, {"meter-record record*"}},
      {0x5100a, {"duplicates uint?", "rejected uint?", "reason text?"}},
      {0x5100c, {"meter-request record"}},
      {0x5100f, {"meter-request record"}},
      {0x51012, {"handle uuid", "count uint"}},
      {0x5101e, {"driver text"}},
      {0x5101f, {"store-value record*"}},
      {0x51027, {"meter-request record"}},
      {0x51038, {}},
      {0x51046, {"meterID text", "manufactor text", "medium text", "timestamp uint"}},
      {0x51049, {"meterID text", "manufactor text", "medium text", "valve text"}},
      {0x5104c, {"meterID text", "manufactor text", "medium text", "vendor text?", "key text?"}},
      {0x51064, {"name text?", "with-meters bool", "with-loggers bool"}},
      {0x51067, {"interface-record record"}},
      {0x5106a, {"name text"}},
      {0x51070, {"addr text?"}},
      {0x51073, {"meterconfig-record record"}},
      {0x51076, {"meter-id text?", "medium text?", "manufactor text?"}},
      {0x51079, {"store text", "key text", "value text"}},
      {0x5107c, {"store text"}},
      {0x5107d, {"store-value record*"}},
      {0x5108e, {"name text?"}},
      {0x51091, {"pushtarget-record record?"}},
      {0x51094, {"idx uint64", "name text"}},
      {0x51190, {"name text?"}},
      {0x51193, {"metertemplate-record record"}},
      {0x51196, {"idx uint64", "name text"}},
      {0x51200, {"maxlen uint?", "after data?"}},
      {0x51203, {"meterID text?", "maxlen uint?", "after data?"}},
      {0x51206, {"meterID text", "obis-id text?", "fromUTC uint?", "toUTC uint?", "maxlen uint?", "after data?"}},
      {0x51207, {"row record*", "next data?"}},
      {0x51209, {"fromUTC uint?", "toUTC uint?", "maxlen uint?", "after data?"}},
      {0x5120c, {"store text?", "maxlen uint?", "after data?"}},
      {0x5120f, {}},
  };
  for (const auto& [id, parameters] : kExpected) EXPECT_EQ(Asked(db_ctrl::kProtocol, id), parameters) << std::hex << id;
}
