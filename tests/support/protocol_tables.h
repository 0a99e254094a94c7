// SPDX-License-Identifier: Apache-2.0
// What the tests of the protocol tables share: a message's parameters at a glance, and what holds of every table.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include <tav/protocol.h>

// "name type", a question mark behind an optional one, a star behind a repeated one.
inline std::vector<std::string> Asked(const tav::cProtocol& protocol, unsigned int id) {
  std::vector<std::string> texts;
  const tav::cProtocolMessage* message = protocol.Find(id);
  if (message == nullptr) return {"no such message"};
  for (std::size_t i = 0; i < message->CountParameters(); ++i) {
    const auto& [key, use] = message->parameters[i];
    texts.push_back(std::string(key.name) + " " + std::string(tav::ParTypeName(key.type)));
    if (use != tav::eRequired) texts.back() += use == tav::eOptional ? "?" : "*";
  }
  return texts;
}

inline void ExpectNamesGivenOnce(const tav::cProtocol& protocol) {
  std::map<std::string_view, unsigned int> names;
  for (const tav::cProtocolMessage& message : protocol)
    EXPECT_TRUE(names.emplace(message.name, message.id).second) << message.name;
}

inline void ExpectKeysOfOneType(const tav::cProtocol& protocol) {
  std::map<std::string_view, tav::cProtocolKey> keys;
  for (const tav::cProtocolMessage& message : protocol)
    for (std::size_t i = 0; i < message.CountParameters(); ++i) {
      const tav::cProtocolKey& key = message.parameters[i].key;
      EXPECT_EQ(keys.emplace(key.name, key).first->second.type, key.type) << key.name;
    }
}

// Also that a key means the same wherever it stands.
inline void ExpectKeysOfOneMeaning(const tav::cProtocol& protocol) {
  ExpectKeysOfOneType(protocol);
  std::map<std::string_view, std::string_view> meanings;
  for (const tav::cProtocolMessage& message : protocol)
    for (std::size_t i = 0; i < message.CountParameters(); ++i) {
      const tav::cProtocolKey& key = message.parameters[i].key;
      EXPECT_EQ(meanings.emplace(key.name, key.meaning).first->second, key.meaning) << key.name;
    }
}

// Every refusal of a service with a row of its own, those that are answers too excepted.
inline void ExpectRefusalsWithReason(const tav::cProtocol& protocol) {
  for (const tav::cProtocolMessage& message : protocol) {
    if (message.direction != tav::eToService || message.refusal == message.answer) continue;
    if (protocol.Find(message.refusal) == nullptr) continue;
    EXPECT_THAT(Asked(protocol, message.refusal), testing::ElementsAre("reason text")) << message.name;
  }
}

// A client's request, whose answer and refusal are the two numbers behind it.
inline void ExpectAnswersBehindRequest(const tav::cProtocol& protocol, unsigned int id) {
  const tav::cProtocolMessage* message = protocol.Find(id);
  ASSERT_NE(message, nullptr) << std::hex << id;
  EXPECT_EQ(message->direction, tav::eToService) << message->name;
  EXPECT_EQ(message->answer, id + 1) << message->name;
  EXPECT_EQ(message->refusal, id + 2) << message->name;
}

// Its direction, and that nothing answers it.
inline void ExpectUnanswered(const tav::cProtocol& protocol, unsigned int id, tav::eDirection direction) {
  const tav::cProtocolMessage* message = protocol.Find(id);
  ASSERT_NE(message, nullptr) << std::hex << id;
  EXPECT_EQ(message->direction, direction) << message->name;
  EXPECT_EQ(message->answer, 0u) << message->name;
  EXPECT_EQ(message->refusal, 0u) << message->name;
}
