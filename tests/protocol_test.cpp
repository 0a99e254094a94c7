// SPDX-License-Identifier: Apache-2.0
#include <tav/protocol.h>

#include <gtest/gtest.h>

using tav::CheckParameters;
using tav::cProtocol;
using tav::cProtocolKey;
using tav::cProtocolMessage;

namespace {

constexpr cProtocolKey kName{"name", vorn::eParText, "a name"};
constexpr cProtocolKey kCount{"count", vorn::eParUInt, "a number"};
constexpr cProtocolKey kRow{"row", vorn::eParRecord, "a row"};
constexpr cProtocolKey kUntyped{"untyped", vorn::eParNone, "nothing"};
constexpr cProtocolKey kUntold{"untold", vorn::eParText, ""};

constexpr cProtocolMessage kMessages[] = {
    {0x100, "ask", tav::eToService, {{kName}, {kCount, tav::eOptional}, {kRow, tav::eRepeated}}, 0x101, 0x102, "ask"},
    {0x101, "answer", tav::eToClient, {}, 0, 0, "answer"},
    {0x110, "tell", tav::eToService, {}, 0x111, 0, "tell"},
};
constexpr cProtocol kProtocol("test", kMessages);

constexpr cProtocolMessage kUnordered[] = {
    {2, "b", tav::eToService, {}, 0, 0, "b"},
    {2, "a", tav::eToService, {}, 0, 0, "a"},
};
constexpr cProtocolMessage kNameless[] = {{1, "", tav::eToService, {}, 0, 0, "meaning"}};
constexpr cProtocolMessage kMeaningless[] = {{1, "name", tav::eToService, {}, 0, 0, ""}};
constexpr cProtocolMessage kUntypedKey[] = {{1, "name", tav::eToService, {{kUntyped}}, 0, 0, "meaning"}};
constexpr cProtocolMessage kUntoldKey[] = {{1, "name", tav::eToService, {{kUntold}}, 0, 0, "meaning"}};
constexpr cProtocolMessage kSameWay[] = {
    {1, "ask", tav::eToService, {}, 0, 2, "ask"},
    {2, "refusal", tav::eToService, {}, 0, 0, "refusal"},
};

}  // namespace

TEST(Protocol, FindsAMessageByItsNumber) {
  EXPECT_EQ(kProtocol.Find(0x100), &kMessages[0]);
  EXPECT_EQ(kProtocol.Find(0x101), &kMessages[1]);
  EXPECT_EQ(kProtocol.Find(0x110), &kMessages[2]);
  for (const unsigned int id : {0u, 0xFFu, 0x102u, 0x111u, 0xFFFFFFFFu}) EXPECT_EQ(kProtocol.Find(id), nullptr) << id;
}

TEST(Protocol, CountsTheParametersOfAMessage) {
  EXPECT_EQ(kMessages[0].CountParameters(), 3u);
  EXPECT_EQ(kMessages[1].CountParameters(), 0u);
}

TEST(Protocol, NamesMessagesAndAnswersWithoutARow) {
  EXPECT_EQ(MessageName(kProtocol, 0x100), "ask");
  EXPECT_EQ(MessageName(kProtocol, 0x101), "answer");
  EXPECT_EQ(MessageName(kProtocol, 0x102), "ask-failed");
  EXPECT_EQ(MessageName(kProtocol, 0x111), "tell-done");
  EXPECT_EQ(MessageName(kProtocol, 0x112), "0x112");
  EXPECT_EQ(MessageName(kProtocol, 0), "0x0");
}

TEST(Protocol, ASoundTableIsTold) {
  static_assert(kProtocol.HasAscendingIds() && kProtocol.HasNoEmptyText() && kProtocol.AnswersGoBack());
  static_assert(!cProtocol("test", kUnordered).HasAscendingIds());
  static_assert(!cProtocol("", kMessages).HasNoEmptyText());
  static_assert(!cProtocol("test", kNameless).HasNoEmptyText());
  static_assert(!cProtocol("test", kMeaningless).HasNoEmptyText());
  static_assert(!cProtocol("test", kUntypedKey).HasNoEmptyText());
  static_assert(!cProtocol("test", kUntoldKey).HasNoEmptyText());
  static_assert(!cProtocol("test", kSameWay).AnswersGoBack());
}

TEST(Protocol, TypesHaveTheirNames) {
  const char* kNames[] = {"none", "text", "int", "uint", "uint64", "bool", "record", "time", "uuid", "data", "none"};
  for (unsigned int type = 0; type < std::size(kNames); ++type) EXPECT_EQ(tav::ParTypeName(type), kNames[type]);
}

TEST(Protocol, ARecordWithWhatIsAskedForPasses) {
  vorn::cRecord record;
  record.AppendTextPar("name", "");
  std::string error;
  EXPECT_TRUE(CheckParameters(kMessages[0], record, error));
  record.AppendUIntPar("count", 1);
  record.AppendRecordPar("row", vorn::cRecord());
  record.AppendRecordPar("row", vorn::cRecord());
  record.AppendUIntPar("unknown", 1);
  EXPECT_TRUE(CheckParameters(kMessages[0], record, error));
  EXPECT_TRUE(CheckParameters(kMessages[1], record, error)) << "what is not named is let pass";
  EXPECT_EQ(error, "");
}

TEST(Protocol, AMissingParameterIsNamed) {
  std::string error;
  EXPECT_FALSE(CheckParameters(kMessages[0], vorn::cRecord(), error));
  EXPECT_EQ(error, "parameter \"name\" is missing, expected type text");
}

TEST(Protocol, AMistypedParameterIsNamedWithBothTypes) {
  std::string error;
  vorn::cRecord required;
  required.AppendUIntPar("name", 1);
  EXPECT_FALSE(CheckParameters(kMessages[0], required, error));
  EXPECT_EQ(error, "parameter \"name\": expected type text, found uint");

  vorn::cRecord optional;
  optional.AppendTextPar("name", "n");
  optional.AppendIntPar("count", 1);
  EXPECT_FALSE(CheckParameters(kMessages[0], optional, error));
  EXPECT_EQ(error, "parameter \"count\": expected type uint, found int");

  vorn::cRecord repeated;
  repeated.AppendTextPar("name", "n");
  repeated.AppendRecordPar("row", vorn::cRecord());
  repeated.AppendDataPar("row", vorn::cData());
  EXPECT_FALSE(CheckParameters(kMessages[0], repeated, error)) << "every one of a repeated parameter is looked at";
  EXPECT_EQ(error, "parameter \"row\": expected type record, found data");
}

TEST(Protocol, OnlyTheFirstOfAParameterThatComesOnceCounts) {
  vorn::cRecord record;
  record.AppendTextPar("name", "n");
  record.AppendUIntPar("name", 1);
  std::string error;
  EXPECT_TRUE(CheckParameters(kMessages[0], record, error));
}
