// SPDX-License-Identifier: Apache-2.0
// Asking a service that does not behave: every way in which no answer comes is told apart.
#include <tavctl/service_link.h>

#include <tests/support/raw_socket.h>
#include <tests/tavctl/tavctl_world.h>

namespace tav::ctl {
namespace {

using testing::HasSubstr;

class ServiceLink : public TavctlWithAnswers {};
class ServiceLinkToStranger : public TavctlWorld {};

TEST_F(ServiceLink, SaysWhyARequestWasRefused) {
  Answer([](const vorn::cMsg& request) { return Message(request.GetType() + 2, Text("reason", "disk\nfull")); });
  const cOutput output = Run({"stats"});
  EXPECT_EQ(output.exit, eExitRefused);
  EXPECT_EQ(output.err, "tavctl: service 'data' refused get-statistics: disk\\x0afull\n");
  EXPECT_EQ(output.out, "");
}

TEST_F(ServiceLink, SaysThatAnAnswerIsOfTheWrongKind) {
  Answer([](const vorn::cMsg&) { return Message(db_ctrl::eMeterList); });
  const cOutput output = Run({"stats"});
  EXPECT_EQ(output.exit, eExitRefused);
  EXPECT_EQ(output.err, "tavctl: service 'data' answered get-statistics with meter-list\n");
}

TEST_F(ServiceLink, SaysThatNoAnswerCame) {
  Answer([](const vorn::cMsg&) { return Message(0); });
  const cOutput output = Run({"--timeout", "0.1", "stats"});
  EXPECT_EQ(output.exit, eExitUnreachable);
  EXPECT_EQ(output.err, "tavctl: service 'data' did not answer get-statistics within 0.1 s; see --timeout\n");
}

TEST_F(ServiceLink, DoesNotTakeTheAnswerToAnotherQuestion) {
  m_server.onMessage = [](const vorn::cMsg& request) {
    vorn::cMsg other(request.GetType() + 1);
    vorn::cUuid id;
    id.Create();
    other.SetId(id);
    request.GetReplyChannel()->Send(other);
  };
  EXPECT_EQ(Run({"--timeout", "0.1", "stats"}).exit, eExitUnreachable);
}

TEST_F(ServiceLink, HandsEverythingElseToItsListener) {
  m_server.onMessage = [](const vorn::cMsg& request) {
    for (const unsigned int type : {db_ctrl::eNotifyDriver + 0u, request.GetType() + 1, 0x5fff0u}) {
      vorn::cMsg msg(type);
      if (type == request.GetType() + 1) msg.SetId(request.GetId());
      request.GetReplyChannel()->Send(msg);
    }
  };
  std::istringstream in;
  std::ostringstream out, err;
  cContext context{m_host, {in, out, err}};
  cServiceLink link(context, db_ctrl::kProtocol);
  std::vector<unsigned int> heard;
  link.SetListener([&](const vorn::cMsg& msg) { heard.push_back(msg.GetType()); });
  EXPECT_TRUE(link.Ask(db_ctrl::eGetStatistics, {}).IsEmpty());
  ASSERT_TRUE(context.Await([&] { return heard.size() == 2; }, 10'000));
  EXPECT_THAT(heard, testing::ElementsAre(db_ctrl::eNotifyDriver + 0u, 0x5fff0u));
}

TEST_F(ServiceLink, SaysThatTheServiceEndedMeanwhile) {
  m_server.onMessage = [](const vorn::cMsg& request) { request.GetReplyChannel()->Close(); };
  const cOutput output = Run({"stats"});
  EXPECT_EQ(output.exit, eExitUnreachable);
  EXPECT_EQ(output.err, "tavctl: service 'data' ended before it answered get-statistics\n");
}

TEST_F(ServiceLink, SaysThatItMayNotConnect) {
  m_server.SetPolicy([](const vorn::cScmPeer&) { return false; });
  const cOutput output = Run({"stats"});
  EXPECT_EQ(output.exit, eExitUnreachable);
  EXPECT_THAT(output.err, HasSubstr("not permitted"));
}

TEST_F(ServiceLinkToStranger, SaysThatItIsNotGreeted) {
  cRawSocket listener;
  ASSERT_TRUE(listener.Listen(m_host.GetSocketPath("data")));
  const cOutput output = Run({"--timeout", "0.1", "stats"});
  EXPECT_EQ(output.exit, eExitUnreachable);
  EXPECT_EQ(output.err, "tavctl: service 'data' does not greet within 0.1 s\n");
}

TEST_F(ServiceLinkToStranger, SaysThatTheServiceHasEnded) {
  {
    cRawSocket listener;
    ASSERT_TRUE(listener.Listen(m_host.GetSocketPath("data")));
  }
  const cOutput output = Run({"stats"});
  EXPECT_EQ(output.exit, eExitUnreachable);
  EXPECT_THAT(output.err, HasSubstr("nobody listens on " + m_host.GetSocketPath("data")));
}

}  // namespace
}  // namespace tav::ctl
