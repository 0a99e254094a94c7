// SPDX-License-Identifier: Apache-2.0
#include <tav/http/http_protocol.h>

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include <tests/support/protocol_tables.h>

namespace http = tav::http;

TEST(HttpProtocol, IsSpokenOnChannelWeb) { EXPECT_EQ(http::kProtocol.GetService(), "web"); }

TEST(HttpProtocol, EveryRequestIsAnsweredByTheNumbersBehindIt) {
  for (const unsigned int id : {0x10019u, 0x5500au}) ExpectAnswersBehindRequest(http::kProtocol, id);
}

TEST(HttpProtocol, WhatTheFrontEndAsksThePageAnswersByTheNextNumbers) {
  const tav::cProtocolMessage* message = http::kProtocol.Find(0x55005);
  ASSERT_NE(message, nullptr);
  EXPECT_EQ(message->direction, tav::eToClient);
  EXPECT_EQ(message->answer, 0x55006u);
  EXPECT_EQ(message->refusal, 0x55007u);
}

TEST(HttpProtocol, RefusalsAreNotAnswered) {
  ExpectUnanswered(http::kProtocol, 0x55007, tav::eToService);
  ExpectUnanswered(http::kProtocol, 0x5500c, tav::eToClient);
}

TEST(HttpProtocol, TimersHaveNumbersOfTheirOwn) {
  EXPECT_EQ(http::eSessionTimeout, 0x52014u);
  EXPECT_EQ(http::ePageTimeout, 0x5201eu);
  for (const unsigned int id : {0x52014u, 0x5201eu}) EXPECT_EQ(http::kProtocol.Find(id), nullptr) << std::hex << id;
}

TEST(HttpProtocol, MessagesHoldWhatFrontEndAndPagesSendAndRead) {
  const std::map<unsigned int, std::vector<std::string>> kExpected = {
      {0x10019, {"prefix text*", "flow bool?"}},
      {0x55005,
       {"Server-Port text", "Technology-Name text", "Content-Type text?", "Content-Length uint?",
        "Server-Protocol text", "QueryString record?", "Cookies record?", "PostData record?", "PostFiles record?",
        "PostContent text?", "Request-Method text", "Request-Scheme text", "Path-Info text", "Remote-Addr text",
        "Headers record?"}},
      {0x55007, {"reason text"}},
      {0x5500a, {"Technology-Name text?", "idx uint?", "finish bool", "success bool?", "content text?"}},
      {0x5500c, {"reason text"}},
  };
  for (const auto& [id, parameters] : kExpected) EXPECT_EQ(Asked(http::kProtocol, id), parameters) << std::hex << id;
}

TEST(HttpProtocol, KeysInsideOfCookiesAndFilesHaveTheirTypes) {
  const std::vector<std::pair<tav::cProtocolKey, vorn::eParType>> kInner = {
      {http::kValue, vorn::eParText},    {http::kFileType, vorn::eParText},    {http::kFileLength, vorn::eParUInt},
      {http::kFileName, vorn::eParText}, {http::kTmpFileName, vorn::eParText}, {http::kSid, vorn::eParUuid},
  };
  std::string names;
  for (const auto& [key, type] : kInner) {
    EXPECT_EQ(key.type, type) << key.name;
    names += std::string(key.name) + " ";
  }
  EXPECT_EQ(names, "value Type Length Filename tmpFilename SID ");
}

TEST(HttpProtocol, EveryAnswerHasAName) {
  const std::map<unsigned int, std::string> kNames = {
      {0x10019, "register"}, {0x1001a, "register-done"}, {0x1001b, "register-failed"},
      {0x55005, "request"},  {0x55006, "request-taken"}, {0x55007, "request-refused"},
      {0x5500a, "output"},   {0x5500b, "output-done"},   {0x5500c, "output-lost"},
  };
  for (const auto& [id, name] : kNames) EXPECT_EQ(MessageName(http::kProtocol, id), name);
}

TEST(HttpProtocol, ARegistrationOfEverythingNamesNothing) {
  const tav::cProtocolMessage* message = http::kProtocol.Find(http::eRegister);
  ASSERT_NE(message, nullptr);
  std::string error;
  vorn::cRecord record;
  EXPECT_TRUE(CheckParameters(*message, record, error)) << error;
  record.AppendTextPar(http::kPrefix, "/a");
  record.AppendTextPar(http::kPrefix, "/b");
  EXPECT_TRUE(CheckParameters(*message, record, error)) << error;
  record.AppendTextPar(http::kFlow, "yes");
  EXPECT_FALSE(CheckParameters(*message, record, error));
}

TEST(HttpProtocol, ANameIsGivenOnce) { ExpectNamesGivenOnce(http::kProtocol); }

TEST(HttpProtocol, AKeyHasOneTypeAndOneMeaning) { ExpectKeysOfOneMeaning(http::kProtocol); }

TEST(HttpProtocol, EveryRefusalThatHasARowCarriesAReason) { ExpectRefusalsWithReason(http::kProtocol); }
