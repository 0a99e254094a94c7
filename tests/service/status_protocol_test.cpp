// SPDX-License-Identifier: Apache-2.0
#include <tav/service/status_protocol.h>

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include <tests/support/protocol_tables.h>

namespace status = tav::status;

TEST(StatusProtocol, IsSpokenOnChannelStatus) { EXPECT_EQ(status::kProtocol.GetService(), "status"); }

TEST(StatusProtocol, AllValuesHaveAName) { EXPECT_STREQ(status::kAll, "*"); }

TEST(StatusProtocol, EveryRequestIsAnsweredByTheNumbersBehindIt) {
  for (const unsigned int id : {0x5102au, 0x51030u, 0x51240u}) ExpectAnswersBehindRequest(status::kProtocol, id);
}

TEST(StatusProtocol, WhatTheServiceAsksTheClientAnswersByTheNextNumber) {
  for (const unsigned int id : {0x51033u, 0x52000u}) {
    const tav::cProtocolMessage* message = status::kProtocol.Find(id);
    ASSERT_NE(message, nullptr) << std::hex << id;
    EXPECT_EQ(message->direction, tav::eToClient);
    EXPECT_EQ(message->answer, id + 1);
    EXPECT_EQ(message->refusal, 0u) << "a client refuses nothing";
    ExpectUnanswered(status::kProtocol, id + 1, tav::eToService);
  }
}

TEST(StatusProtocol, WhatTheServiceTellsHasNoAnswer) {
  for (const unsigned int id : {0x5102bu, 0x5102eu, 0x51031u, 0x51241u})
    ExpectUnanswered(status::kProtocol, id, tav::eToClient);
}

TEST(StatusProtocol, MessagesHoldWhatTheClientSendsAndReads) {
  const std::map<unsigned int, std::vector<std::string>> kExpected = {
      {0x5102a, {"* text*"}}, {0x5102b, {}},
      {0x5102e, {}},          {0x51030, {"* text*"}},
      {0x51031, {"* text*"}}, {0x51034, {}},
      {0x51033, {"* text*"}}, {0x51240, {"prefix text?"}},
      {0x52000, {}},          {0x51241, {"row record*"}},
      {0x52001, {"* text*"}},
  };
  for (const auto& [id, parameters] : kExpected) EXPECT_EQ(Asked(status::kProtocol, id), parameters) << std::hex << id;
}

TEST(StatusProtocol, TheKeyOfAnyNameRequiresNone) {
  const tav::cProtocolMessage* change = status::kProtocol.Find(0x5102a);
  ASSERT_NE(change, nullptr);
  std::string error;
  vorn::cRecord record;
  EXPECT_TRUE(CheckParameters(*change, record, error));
  record.AppendTextPar("modem.state", "online");
  record.AppendTextPar("*", nullptr);
  EXPECT_TRUE(CheckParameters(*change, record, error)) << error;
}

TEST(StatusProtocol, ANameIsGivenOnce) { ExpectNamesGivenOnce(status::kProtocol); }

TEST(StatusProtocol, AKeyHasOneTypeAndOneMeaning) { ExpectKeysOfOneMeaning(status::kProtocol); }

TEST(StatusProtocol, EveryRefusalThatHasARowCarriesAReason) { ExpectRefusalsWithReason(status::kProtocol); }
