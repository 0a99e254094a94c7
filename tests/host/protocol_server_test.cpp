// SPDX-License-Identifier: Apache-2.0
#include <gateway/host/protocol_server.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include <tests/support/captured_trace.h>
#include <tests/support/temp_folder.h>
#include <tests/support/test_client.h>

namespace tav::gateway {
namespace {

constexpr cProtocolKey kNumber{"number", vorn::eParUInt, "a number"};

// clang-format off
constexpr cProtocolMessage kMessages[] = {
  {0x100, "double",     eToService, {{kNumber}}, 0x101, 0x102, "answers twice the number"},
  {0x101, "doubled",    eToClient,  {{kNumber}}, 0,     0,     "twice the number"},
  {0x110, "own-check",  eToService, {{kNumber}}, 0x111, 0x112, "judges its parameters itself"},
  {0x120, "relay",      eToService, {},          0x121, 0x121, "refused by its answer's number"},
  {0x130, "large",      eToService, {},          0x131, 0x132, "answers more than a message holds"},
  {0x140, "unwritten",  eToService, {},          0x141, 0x142, "nobody has written it yet"},
  {0x150, "told",       eToService, {{kNumber}}, 0,     0,     "a client's answer to what the service has sent"},
  {0x151, "unheard",    eToService, {},          0,     0,     "one that nobody waits for"},
};
// clang-format on
constexpr cProtocol kProtocol("test", kMessages);

class cTestServer final : public cProtocolServer {
 public:
  explicit cTestServer(cServiceHost* host) : cProtocolServer(host, kProtocol) {
    On(0x100, [this](const vorn::cMsg& request) {
      vorn::cRecord answer;
      answer.AppendUIntPar("number", 2 * request.Record().GetUIntPar("number"));
      Answer(request, answer);
    });
    On(
        0x110, [this](const vorn::cMsg& request) { Answer(request); }, eCheck::Own);
    On(0x120, [this](const vorn::cMsg& request) { Refuse(request, "no relay"); });
    On(0x130, [this](const vorn::cMsg& request) {
      vorn::cRecord answer;
      answer.AppendTextPar("text", std::string(vorn::kMaxFrameSize, 'x'));
      Answer(request, answer);
    });
    On(0x150, [this](const vorn::cMsg& told) { m_told.push_back(told.Record().GetUIntPar("number")); });
  }

  std::vector<unsigned int> m_told;
};

class ProtocolServer : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(m_client.AwaitConnection()); }

  static vorn::cRecord Number(unsigned int number) {
    vorn::cRecord record;
    record.AppendUIntPar("number", number);
    return record;
  }
  void ExpectRefusal(const vorn::cMsg& answer, unsigned int type, const std::string& reason) {
    EXPECT_EQ(answer.GetType(), type);
    EXPECT_EQ(answer.Record().GetTextPar("reason"), reason);
  }

  cCapturedTrace m_trace;
  cTempFolder m_folder;
  cServiceHost m_host{"protocol-test", m_folder.GetPath()};
  cTestServer m_server{&m_host};
  cTestClient m_client{&m_host, "test"};
};

TEST_F(ProtocolServer, AnswersUnderTheIdentifierOfTheRequest) {
  const vorn::cUuid id = m_client.SendRequest(0x100, Number(21));
  const vorn::cMsg answer = m_client.Next();
  EXPECT_EQ(answer.GetType(), 0x101u);
  EXPECT_EQ(answer.GetId(), id);
  EXPECT_EQ(answer.Record().GetUIntPar("number"), 42u);
}

TEST_F(ProtocolServer, ChecksParametersBeforeAHandlerSeesThem) {
  ExpectRefusal(m_client.Ask(0x100), 0x102, "parameter \"number\" is missing, expected type uint");
  vorn::cRecord text;
  text.AppendTextPar("number", "21");
  ExpectRefusal(m_client.Ask(0x100, text), 0x102, "parameter \"number\": expected type uint, found text");
}

TEST_F(ProtocolServer, LeavesTheCheckToAHandlerThatWantsIt) { EXPECT_EQ(m_client.Ask(0x110).GetType(), 0x111u); }

TEST_F(ProtocolServer, RefusesUnderTheNumberOfTheTable) { ExpectRefusal(m_client.Ask(0x120), 0x121, "no relay"); }

TEST_F(ProtocolServer, RefusesWhatHasNoHandler) {
  ExpectRefusal(m_client.Ask(0x140), 0x142, "not offered by this service: unwritten (0x140)");
}

TEST_F(ProtocolServer, RefusesWhatIsNoRequest) {
  ExpectRefusal(m_client.Ask(0x101), 0x103, "no request of service \"test\": doubled (0x101)");
  ExpectRefusal(m_client.Ask(0x999), 0x99b, "no request of service \"test\": 0x999");
}

TEST_F(ProtocolServer, SaysThatAnAnswerIsTooLarge) {
  ExpectRefusal(m_client.Ask(0x130), 0x132, "the answer does not fit one message");
}

// ---- answers of clients

TEST_F(ProtocolServer, HandsAnAnswerToItsHandlerAndAnswersNothing) {
  m_client.SendRequest(0x150, Number(7));
  EXPECT_EQ(m_client.Ask(0x110).GetType(), 0x111u);
  EXPECT_EQ(m_server.m_told, std::vector<unsigned int>{7});
  EXPECT_EQ(m_client.CountWaiting(), 0u);
}

TEST_F(ProtocolServer, OnlyTracesWhatIsWrongWithAnAnswer) {
  m_client.SendRequest(0x150);
  m_client.SendRequest(0x151);
  EXPECT_EQ(m_client.Ask(0x110).GetType(), 0x111u);
  EXPECT_TRUE(m_server.m_told.empty());
  EXPECT_THAT(
      m_trace.GetLines(),
      testing::ElementsAre(testing::EndsWith(": told (0x150): parameter \"number\" is missing, expected type uint"),
                           testing::EndsWith(": unheard (0x151): not offered by this service: unheard (0x151)")));
}

}  // namespace
}  // namespace tav::gateway
