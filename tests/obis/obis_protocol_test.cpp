// SPDX-License-Identifier: Apache-2.0
#include <tav/obis/obis_protocol.h>

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include <tests/support/protocol_tables.h>

namespace obis = tav::obis;

TEST(ObisProtocol, IsSpokenOnChannelObis) { EXPECT_EQ(obis::kProtocol.GetService(), "obis"); }

TEST(ObisProtocol, EveryRequestIsAnsweredByTheNumbersBehindIt) {
  for (const unsigned int id : {0x51082u, 0x51088u, 0x5108bu, 0x51220u})
    ExpectAnswersBehindRequest(obis::kProtocol, id);
}

TEST(ObisProtocol, AChangeGoesToTheClientWhichAnswersIt) {
  const tav::cProtocolMessage* change = obis::kProtocol.Find(0x51085);
  ASSERT_NE(change, nullptr);
  EXPECT_EQ(change->direction, tav::eToClient);
  EXPECT_EQ(change->answer, 0x51086u);
  EXPECT_EQ(change->refusal, 0x51087u);
  ExpectUnanswered(obis::kProtocol, 0x51086, tav::eToService);
  ExpectUnanswered(obis::kProtocol, 0x51087, tav::eToService);
}

TEST(ObisProtocol, TheMapGoesToTheClientWithoutAnAnswer) {
  ExpectUnanswered(obis::kProtocol, 0x51083, tav::eToClient);
  ExpectUnanswered(obis::kProtocol, 0x51221, tav::eToClient);
}

TEST(ObisProtocol, EveryNumberHasAName) {
  const std::map<unsigned int, std::string> kExpected = {
      {0x51082, "get-map"},          {0x51083, "map"},
      {0x51084, "get-map-failed"},   {0x51085, "rule-changed"},
      {0x51086, "change-applied"},   {0x51087, "change-not-applied"},
      {0x51088, "set-rule"},         {0x51089, "set-rule-done"},
      {0x5108a, "set-rule-failed"},  {0x5108b, "remove-rule"},
      {0x5108c, "remove-rule-done"}, {0x5108d, "remove-rule-failed"},
      {0x51220, "apply-map"},        {0x51221, "map-applied"},
      {0x51222, "apply-map-failed"},
  };
  for (const auto& [id, name] : kExpected) EXPECT_EQ(MessageName(obis::kProtocol, id), name) << std::hex << id;
}

TEST(ObisProtocol, MessagesHoldWhatTheClientSendsAndReads) {
  const std::map<unsigned int, std::vector<std::string>> kExpected = {
      {0x51082, {}},
      {0x51083, {"obis-map record"}},
      {0x51085, {"command text", "entry record"}},
      {0x51086, {}},
      {0x51087, {}},
      {0x51088, {"entry record"}},
      {0x5108b, {"entry record"}},
      {0x51220, {"obis-map record", "replace bool"}},
      {0x51221, {"changed uint"}},
  };
  for (const auto& [id, parameters] : kExpected) EXPECT_EQ(Asked(obis::kProtocol, id), parameters) << std::hex << id;
}

TEST(ObisProtocol, ANameIsGivenOnce) { ExpectNamesGivenOnce(obis::kProtocol); }

TEST(ObisProtocol, AKeyHasOneTypeAndOneMeaning) { ExpectKeysOfOneMeaning(obis::kProtocol); }

TEST(ObisProtocol, EveryRefusalThatHasARowCarriesAReason) { ExpectRefusalsWithReason(obis::kProtocol); }
