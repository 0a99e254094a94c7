// SPDX-License-Identifier: Apache-2.0
#include <tav/service/device_protocol.h>

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include <tests/support/protocol_tables.h>

namespace gsm = tav::gsm;
namespace time_service = tav::time_service;
namespace ui = tav::ui;

namespace {

constexpr const tav::cProtocol* kAll[] = {&ui::kProtocol, &time_service::kProtocol, &gsm::kProtocol};

using Expected = std::map<unsigned int, std::vector<std::string>>;

void ExpectParameters(const tav::cProtocol& protocol, const Expected& expected) {
  for (const auto& [id, parameters] : expected) EXPECT_EQ(Asked(protocol, id), parameters) << std::hex << id;
}

// The answer is the next number; a refusal is that answer with a "reason", or the number behind it.
void ExpectAnswer(const tav::cProtocol& protocol, unsigned int id, unsigned int refusal) {
  const tav::cProtocolMessage* message = protocol.Find(id);
  ASSERT_NE(message, nullptr) << std::hex << id;
  EXPECT_EQ(message->direction, tav::eToService) << message->name;
  EXPECT_EQ(message->answer, id + 1) << message->name;
  EXPECT_EQ(message->refusal, refusal) << message->name;
}

}  // namespace

TEST(DeviceProtocol, EveryServiceHasAChannel) {
  EXPECT_EQ(ui::kProtocol.GetService(), "ui");
  EXPECT_EQ(time_service::kProtocol.GetService(), "time-service");
  EXPECT_EQ(gsm::kProtocol.GetService(), "gsm");
}

TEST(DeviceProtocol, RequestsAreAnsweredByTheNumbersBehindThem) {
  for (const unsigned int id : {0x53000u, 0x53007u, 0x53010u}) ExpectAnswersBehindRequest(ui::kProtocol, id);
  for (const unsigned int id : {0x56002u, 0x56014u, 0x56017u, 0x56030u})
    ExpectAnswersBehindRequest(time_service::kProtocol, id);
  for (const unsigned int id : {0x12002u, 0x12010u}) ExpectAnswersBehindRequest(gsm::kProtocol, id);
}

TEST(DeviceProtocol, WhereTheNextNumberButOneIsARequestTheAnswerCarriesTheReason) {
  ExpectAnswer(ui::kProtocol, 0x53005, 0x53006);
  ExpectAnswer(gsm::kProtocol, 0x12000, 0x12001);
  EXPECT_NE(ui::kProtocol.Find(0x53007), nullptr);
  EXPECT_NE(gsm::kProtocol.Find(0x12002), nullptr);
  EXPECT_EQ(Asked(ui::kProtocol, 0x53006), std::vector<std::string>{"reason text?"});
  EXPECT_EQ(Asked(gsm::kProtocol, 0x12001), std::vector<std::string>{"reason text?"});
}

TEST(DeviceProtocol, WhatServicesTellHasNoAnswer) {
  for (const unsigned int id : {0x53006u, 0x53008u, 0x53011u}) ExpectUnanswered(ui::kProtocol, id, tav::eToClient);
  ExpectUnanswered(time_service::kProtocol, 0x56031, tav::eToClient);
  for (const unsigned int id : {0x12001u, 0x12011u}) ExpectUnanswered(gsm::kProtocol, id, tav::eToClient);
}

TEST(DeviceProtocol, MessagesHoldWhatTheClientsSendAndRead) {
  ExpectParameters(ui::kProtocol, {{0x53000, {"led uint", "mode uint"}},
                                   {0x53005, {"mode uint", "timeout uint"}},
                                   {0x53007, {}},
                                   {0x53008, {"mode uint"}},
                                   {0x53010, {}},
                                   {0x53011, {"row record*"}}});
  ExpectParameters(
      time_service::kProtocol,
      {{0x56002, {"new-utc time"}}, {0x56014, {}}, {0x56017, {}}, {0x56030, {}}, {0x56031, {"row record*"}}});
  ExpectParameters(gsm::kProtocol, {{0x12000, {"MobilePin text", "APN text", "User text", "Password text"}},
                                    {0x12002, {}},
                                    {0x12010, {}},
                                    {0x12011, {"row record*"}}});
}

TEST(DeviceProtocol, AnswersWithoutARowHaveANameToo) {
  EXPECT_EQ(MessageName(ui::kProtocol, 0x53001), "switch-led-done");
  EXPECT_EQ(MessageName(ui::kProtocol, 0x53002), "switch-led-failed");
  EXPECT_EQ(MessageName(ui::kProtocol, 0x53009), "get-relay-mode-failed");
  EXPECT_EQ(MessageName(time_service::kProtocol, 0x56015), "wan-up-done");
  EXPECT_EQ(MessageName(time_service::kProtocol, 0x56019), "wan-down-failed");
  EXPECT_EQ(MessageName(gsm::kProtocol, 0x12003), "stop-done");
  EXPECT_EQ(MessageName(gsm::kProtocol, 0x12004), "stop-failed");
}

TEST(DeviceProtocol, ANameIsGivenOnce) {
  for (const tav::cProtocol* protocol : kAll) ExpectNamesGivenOnce(*protocol);
}

// What "mode" means depends on whether it is that of a light or of the relay.
TEST(DeviceProtocol, AKeyHasOneType) {
  for (const tav::cProtocol* protocol : kAll) ExpectKeysOfOneType(*protocol);
}

TEST(DeviceProtocol, EveryRefusalThatHasARowCarriesAReason) {
  for (const tav::cProtocol* protocol : kAll) ExpectRefusalsWithReason(*protocol);
}
