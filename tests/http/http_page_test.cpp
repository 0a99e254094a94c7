// SPDX-License-Identifier: Apache-2.0
#include <tav/http/http_page.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <type_traits>

#include <tests/http/page_fixture.h>

using tav::cHttpRequest;
using tav::cHttpSession;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

class HttpPage : public cPageFixture {
 protected:
  // The page at work on a request of that protocol, the acceptance out of the way.
  void Run(const std::string& serverProtocol = "HTTP/1.1") {
    m_request = Request(serverProtocol);
    m_session.Run(m_request, &m_page);
    Messages();
  }

  vorn::cUuid m_sid = Uuid('5');
  cHttpSession m_session{m_sid, &m_near, 0};
  cNotingPage m_page{&m_near};
  cHttpRequest m_request;
};

}  // namespace

TEST_F(HttpPage, StartsWithItsServiceOnly) {
  EXPECT_EQ(m_page.GetService(), &m_near);
  EXPECT_EQ(m_page.GetSession(), nullptr);
  EXPECT_FALSE(m_page.GetRequest().IsValid());
  EXPECT_TRUE(std::has_virtual_destructor_v<tav::cHttpPage>);
  EXPECT_TRUE(std::is_abstract_v<tav::cHttpPage>);
}

TEST_F(HttpPage, SetRequestCopiesTheRequest) {
  const vorn::cUuid id = Fresh();
  cHttpRequest request = Request("HTTP/1.0", id);
  m_page.SetRequest(request);
  request = cHttpRequest();
  EXPECT_EQ(m_page.GetRequest().GetRequestId(), id);
  EXPECT_EQ(m_page.GetRequest().GetServerProtocol(), "HTTP/1.0");
  EXPECT_EQ(m_page.GetRequest().GetReplyChannel(), m_io->GetChannel());
}

// ---- outputs

TEST_F(HttpPage, OutputCarriesFrontEndIndexFinishAndContentInThatOrder) {
  Run();
  EXPECT_TRUE(m_page.HttpOutput(7, "hello"));
  EXPECT_THAT(Received(),
              ElementsAre("5500a Technology-Name text=web idx uint=7 finish bool=false content text=hello"));
}

TEST_F(HttpPage, EveryOutputBearsTheIdentifierOfTheRequest) {
  Run();
  m_page.HttpOutput(0, "");
  m_page.HttpSuccessHeader(1, "text/plain");
  m_page.HttpSuccess(2, 200);
  m_page.HttpErrorHeader(3, 500);
  m_page.CloseSuccess();
  m_page.CloseError();
  const std::vector<vorn::cMsg> messages = Messages();
  EXPECT_EQ(messages.size(), 6u);
  for (const vorn::cMsg& msg : messages) {
    EXPECT_EQ(msg.GetType(), 0x5500au);
    EXPECT_EQ(msg.GetId(), m_request.GetRequestId());
    EXPECT_EQ(Parameters(msg.Record()).front(), "Technology-Name text=web");
  }
}

TEST_F(HttpPage, OutputOfANullTextHasNoContent) {
  Run();
  EXPECT_TRUE(m_page.HttpOutput(1, nullptr));
  EXPECT_TRUE(m_page.HttpOutput(2, static_cast<const char*>(nullptr)));
  EXPECT_THAT(Received(), ElementsAre("5500a Technology-Name text=web idx uint=1 finish bool=false",
                                      "5500a Technology-Name text=web idx uint=2 finish bool=false"));
}

TEST_F(HttpPage, OutputOfAnEmptyTextHasAnEmptyContent) {
  Run();
  m_page.HttpOutput(0, "");
  m_page.HttpOutput(0, std::string());
  const std::string expected = "5500a Technology-Name text=web idx uint=0 finish bool=false content text=";
  EXPECT_THAT(Received(), ElementsAre(expected, expected));
}

TEST_F(HttpPage, OutputOfATextIsBytes) {
  Run();
  const std::string bytes("a\0b\xFF\r\n", 6);
  EXPECT_TRUE(m_page.HttpOutput(std::numeric_limits<unsigned int>::max(), bytes));
  const std::vector<vorn::cMsg> messages = Messages();
  ASSERT_EQ(messages.size(), 1u);
  EXPECT_EQ(messages.front().Record().GetTextPar("content"), bytes);
  EXPECT_EQ(messages.front().Record().GetUIntPar("idx"), std::numeric_limits<unsigned int>::max());
}

TEST_F(HttpPage, OutputsComeInTheOrderOfSending) {
  Run();
  for (const unsigned int idx : {2u, 0u, 1u}) m_page.HttpOutput(idx, std::to_string(idx));
  EXPECT_EQ(Output(), "201");
}

TEST_F(HttpPage, OutputOfARequestThatNamesNoFrontEndHasAnEmptyName) {
  vorn::cMsg msg = [&] {
    vorn::cMsg bare(tav::http::eRequest);
    m_server->GetChannels().front()->Send(bare);
    EXPECT_TRUE(Await([&] { return !m_near.messages.empty(); }));
    return m_near.messages.back();
  }();
  cHttpRequest request(msg);
  m_page.SetRequest(request);
  EXPECT_TRUE(m_page.HttpOutput(0, "x"));
  m_page.CloseSuccess();
  EXPECT_THAT(Received(), ElementsAre("5500a Technology-Name text= idx uint=0 finish bool=false content text=x",
                                      "5500a Technology-Name text= finish bool=true success bool=true"));
}

TEST_F(HttpPage, WithoutAReplyChannelItsOutputGoesNowhere) {
  EXPECT_FALSE(m_page.HttpOutput(0, "x"));
  EXPECT_FALSE(m_page.HttpOutput(0, nullptr));
  EXPECT_TRUE(m_page.HttpSuccessHeader(0, "text/plain"));
  EXPECT_TRUE(m_page.HttpSuccess(0, 200));
  EXPECT_TRUE(m_page.HttpErrorHeader(0, 404));
  m_page.CloseSuccess();
  m_page.CloseError();
  EXPECT_THAT(Received(), IsEmpty());
}

TEST_F(HttpPage, OutputOverTheLimitOfAMessageIsRefusedAndHarmsNothing) {
  Run();
  EXPECT_FALSE(m_page.HttpOutput(0, std::string(5 << 20, 'x')));
  EXPECT_TRUE(m_page.HttpOutput(0, "small"));
  EXPECT_EQ(Output(), "small");
}

TEST_F(HttpPage, OutputToAFrontEndThatDoesNotReadIsRefused) {
  Run();
  Congest();
  EXPECT_FALSE(m_page.HttpOutput(0, std::string(1 << 20, 'x')));
  EXPECT_TRUE(m_page.HttpSuccessHeader(0, "text/plain")) << "true whatever becomes of it";
  EXPECT_TRUE(m_io->IsConnected());
}

// ---- headers, to the byte

TEST_F(HttpPage, SuccessHeaderOfHttp11) {
  Run("HTTP/1.1");
  EXPECT_TRUE(m_page.HttpSuccessHeader(0, "text/plain"));
  EXPECT_EQ(Output(),
            "Status: 200\r\nCache-Control: no-cache,no-store\r\nContent-Type: text/plain\r\nConnection: close\r\n\r\n");
}

TEST_F(HttpPage, SuccessHeaderOfHttp10) {
  Run("HTTP/1.0");
  EXPECT_TRUE(m_page.HttpSuccessHeader(0, "text/plain"));
  EXPECT_EQ(Output(), "Status: 200\r\nPragma: no-cache\r\nContent-Type: text/plain\r\nConnection: close\r\n\r\n");
}

TEST_F(HttpPage, SuccessHeaderOfAnyOtherProtocolHasNoCacheLine) {
  Run("HTTP/2");
  EXPECT_TRUE(m_page.HttpSuccessHeader(0, "application/json; charset=utf-8"));
  EXPECT_EQ(Output(), "Status: 200\r\nContent-Type: application/json; charset=utf-8\r\nConnection: close\r\n\r\n");
}

TEST_F(HttpPage, SuccessRunsContentTypeStraightIntoTheCacheLineOfHttp11) {
  Run("HTTP/1.1");
  EXPECT_TRUE(m_page.HttpSuccess(0, 200));
  EXPECT_EQ(Output(),
            "Status: 200\r\nContent-Type: text/htmlCache-Control: no-cache,no-store\r\nConnection: close\r\n\r\n");
}

TEST_F(HttpPage, SuccessRunsContentTypeStraightIntoTheCacheLineOfHttp10) {
  Run("HTTP/1.0");
  EXPECT_TRUE(m_page.HttpSuccess(0, 201));
  EXPECT_EQ(Output(), "Status: 201\r\nContent-Type: text/htmlPragma: no-cache\r\nConnection: close\r\n\r\n");
}

TEST_F(HttpPage, SuccessOfAnyOtherProtocolRunsContentTypeStraightIntoConnection) {
  Run("HTTP/2");
  EXPECT_TRUE(m_page.HttpSuccess(0, 200));
  EXPECT_EQ(Output(), "Status: 200\r\nContent-Type: text/htmlConnection: close\r\n\r\n");
}

TEST_F(HttpPage, ErrorHeaderHasNeitherContentTypeNorCacheLine) {
  Run("HTTP/1.1");
  EXPECT_TRUE(m_page.HttpErrorHeader(0, 404));
  EXPECT_EQ(Output(), "Status: 404\r\nConnection: close\r\n\r\n");
}

TEST_F(HttpPage, StatusIsWhateverThePageSays) {
  Run("");
  m_page.HttpErrorHeader(0, 0);
  m_page.HttpErrorHeader(0, std::numeric_limits<unsigned int>::max());
  m_page.HttpSuccess(0, 599);
  EXPECT_EQ(Output(),
            "Status: 0\r\nConnection: close\r\n\r\n"
            "Status: 4294967295\r\nConnection: close\r\n\r\n"
            "Status: 599\r\nContent-Type: text/htmlConnection: close\r\n\r\n");
}

TEST_F(HttpPage, HeadersAreOutputsWithTheIndexOfTheCaller) {
  Run();
  m_page.HttpSuccessHeader(3, "text/plain");
  m_page.HttpSuccess(4, 200);
  m_page.HttpErrorHeader(5, 500);
  std::vector<unsigned int> indices;
  for (const vorn::cMsg& msg : Messages()) {
    indices.push_back(msg.Record().GetUIntPar("idx"));
    EXPECT_TRUE(msg.Record().GetPar("finish").IsBool());
    EXPECT_FALSE(msg.Record().GetBoolPar("finish"));
  }
  EXPECT_THAT(indices, ElementsAre(3u, 4u, 5u));
}

// ---- the end of an answer

TEST_F(HttpPage, CloseSuccessSaysThatTheAnswerIsWhole) {
  Run();
  m_page.CloseSuccess();
  EXPECT_THAT(Received(), ElementsAre("5500a Technology-Name text=web finish bool=true success bool=true"));
}

TEST_F(HttpPage, CloseErrorSaysThatTheAnswerIsBrokenOff) {
  Run();
  m_page.CloseError();
  EXPECT_THAT(Received(), ElementsAre("5500a Technology-Name text=web finish bool=true success bool=false"));
}

TEST_F(HttpPage, ClosingLeavesThePageInItsSession) {
  Run();
  m_page.CloseSuccess();
  EXPECT_EQ(m_session.GetPage(), &m_page);
  vorn::cMsg msg(0x50000);
  EXPECT_TRUE(m_session.DispatchMessage(msg));
}

// ---- its time

TEST_F(HttpPage, TimesOutUnderTheIdentifierOfItsSession) {
  Run();
  m_page.StartTimeout(3);
  EXPECT_THAT(PostedAfter(2999), IsEmpty());
  const std::vector<vorn::cMsg> posted = PostedAfter(1);
  ASSERT_EQ(posted.size(), 1u) << "on time, there is no slack";
  EXPECT_EQ(Show(posted.front()), "5201e");
  EXPECT_EQ(posted.front().GetId(), m_sid);
  EXPECT_THAT(PostedAfter(100'000), IsEmpty()) << "once";
}

TEST_F(HttpPage, StopTimeoutStopsIt) {
  Run();
  m_page.StopTimeout();
  m_page.StartTimeout(3);
  m_page.StopTimeout();
  EXPECT_THAT(PostedAfter(100'000), IsEmpty());
  m_page.StartTimeout(1);
  m_clock->Advance(1000);
  m_page.StopTimeout();
  EXPECT_THAT(PostedAfter(0), IsEmpty()) << "also what is due";
}

TEST_F(HttpPage, StartTimeoutStartsTheTimeAnew) {
  Run();
  m_page.StartTimeout(3);
  EXPECT_THAT(PostedAfter(2999), IsEmpty());
  m_page.StartTimeout(5);
  EXPECT_THAT(PostedAfter(4999), IsEmpty());
  EXPECT_EQ(PostedAfter(1).size(), 1u);
}

TEST_F(HttpPage, ATimeoutOfZeroSecondsIsDueAtOnce) {
  Run();
  m_page.StartTimeout(0);
  EXPECT_EQ(PostedAfter(0).size(), 1u);
}

TEST_F(HttpPage, TheLongestTimeIsTheTimersLongest) {
  constexpr unsigned int kMost = std::numeric_limits<unsigned int>::max();
  Run();
  for (const unsigned int sec : {kMost / 1000, kMost / 1000 + 1, kMost}) {
    m_page.StartTimeout(sec);
    EXPECT_THAT(PostedAfter(std::int64_t{kMost / 1000} * 1000 - 1), IsEmpty()) << sec;
    EXPECT_EQ(PostedAfter(1000).size(), 1u) << sec;
  }
}

TEST_F(HttpPage, WithoutASessionTimesOutUnderNoIdentifier) {
  m_page.StartTimeout(1);
  const std::vector<vorn::cMsg> posted = PostedAfter(1000);
  ASSERT_EQ(posted.size(), 1u);
  EXPECT_FALSE(posted.front().GetId().IsValid());
}

TEST_F(HttpPage, TakesItsTimeoutWithItWhenItEnds) {
  {
    cNotingPage page(&m_near);
    page.StartTimeout(1);
    m_clock->Advance(1000);
  }
  EXPECT_THAT(PostedAfter(0), IsEmpty());
}
