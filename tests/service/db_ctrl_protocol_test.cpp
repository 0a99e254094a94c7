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
       {0x51000, 0x51003, 0x51006, 0x51009, 0x5100c, 0x5100f, 0x51012, 0x5101e, 0x51027, 0x51038, 0x51046,
        0x51049, 0x5104c, 0x51064, 0x51067, 0x5106a, 0x51070, 0x51073, 0x51076, 0x51079, 0x5107c, 0x5108e,
        0x51091, 0x51094, 0x51190, 0x51193, 0x51196, 0x51200, 0x51203, 0x51206, 0x51209, 0x5120c, 0x5120f})
    ExpectAnswersBehindRequest(db_ctrl::kProtocol, id);
}

TEST(DbCtrlProtocol, EveryDocumentedAnswerIsThere) {
  for (const unsigned int id : {0x5100a, 0x5100b, 0x5101f, 0x51020, 0x51039, 0x5103a, 0x5107d})
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
