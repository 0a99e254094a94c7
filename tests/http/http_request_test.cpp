// SPDX-License-Identifier: Apache-2.0
#include <tav/http/http_request.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <type_traits>

#include <tav/framework/scm_channel.h>
#include <tav/http/http_protocol.h>
#include <tests/http/page_fixture.h>

using tav::cHttpCookie;
using tav::cHttpRequest;
using tav::cHttpUploadFile;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Fill = std::function<void(vorn::cRecord&)>;

vorn::cRecord Record(const Fill& fill) {
  vorn::cRecord record;
  fill(record);
  return record;
}

cHttpRequest Request(const Fill& fill) {
  vorn::cMsg msg(tav::http::eRequest);
  fill(msg.Record());
  return cHttpRequest(msg);
}

cHttpRequest With(const std::string& part, const Fill& fill) {
  return Request([&](vorn::cRecord& record) { record.AppendRecordPar(part, Record(fill)); });
}

// With one record parameter in that part of the request.
cHttpRequest With(const std::string& part, const std::string& name, const Fill& fill) {
  return With(part, [&](vorn::cRecord& record) { record.AppendRecordPar(name, Record(fill)); });
}

cHttpUploadFile Before() {
  cHttpUploadFile file;
  file.contentType = "before/type";
  file.fileName = "before.name";
  file.tmpFileName = "/before";
  file.length = 99;
  return file;
}

std::string Show(const cHttpUploadFile& file) {
  return file.contentType + " " + file.fileName + " " + file.tmpFileName + " " + std::to_string(file.length);
}

void FillAll(vorn::cRecord& record) {
  record.AppendTextPar("Server-Port", "8080");
  record.AppendTextPar("Technology-Name", "web");
  record.AppendTextPar("Content-Type", "text/csv");
  record.AppendUIntPar("Content-Length", 4711);
  record.AppendTextPar("Server-Protocol", "HTTP/1.1");
  record.AppendRecordPar("QueryString", Record([](vorn::cRecord& part) { part.AppendTextPar("q", "1"); }));
  record.AppendRecordPar("Cookies", Record([](vorn::cRecord& part) {
                           part.AppendRecordPar(
                               "sid", Record([](vorn::cRecord& cookie) { cookie.AppendTextPar("value", "abc"); }));
                         }));
  record.AppendRecordPar("PostData", Record([](vorn::cRecord& part) { part.AppendTextPar("p", "2"); }));
  record.AppendRecordPar("PostFiles", Record([](vorn::cRecord& part) {
                           part.AppendRecordPar(
                               "f", Record([](vorn::cRecord& file) { file.AppendTextPar("tmpFilename", "/tmp/f"); }));
                         }));
}

void ExpectAll(const cHttpRequest& request) {
  EXPECT_TRUE(request.IsValid());
  EXPECT_EQ(request.GetServerPort(), "8080");
  EXPECT_EQ(request.GetTechnologyName(), "web");
  EXPECT_EQ(request.GetContentType(), "text/csv");
  EXPECT_EQ(request.GetContentLength(), 4711u);
  EXPECT_EQ(request.GetServerProtocol(), "HTTP/1.1");
  EXPECT_THAT(Parameters(request.GetQuery()), ElementsAre("q text=1"));
  EXPECT_THAT(Parameters(request.GetCookies()), ElementsAre("sid record={value text=abc}"));
  EXPECT_THAT(Parameters(request.GetPostData()), ElementsAre("p text=2"));
  EXPECT_THAT(Parameters(request.GetPostFiles()), ElementsAre("f record={tmpFilename text=/tmp/f}"));
}

void ExpectNothing(const cHttpRequest& request) {
  EXPECT_FALSE(request.IsValid());
  EXPECT_EQ(request.GetServerPort(), "");
  EXPECT_EQ(request.GetTechnologyName(), "");
  EXPECT_EQ(request.GetContentType(), "");
  EXPECT_EQ(request.GetContentLength(), 0u);
  EXPECT_EQ(request.GetServerProtocol(), "");
  for (const vorn::cRecord& part :
       {request.GetQuery(), request.GetCookies(), request.GetPostData(), request.GetPostFiles()})
    EXPECT_TRUE(part.IsEmpty());
}

class HttpRequest : public cPageFixture {};

}  // namespace

// ---- what it is made of

TEST(HttpRequestFields, StartEmpty) {
  const cHttpRequest request;
  ExpectNothing(request);
  EXPECT_TRUE(request.GetRecord().IsEmpty());
  EXPECT_FALSE(request.GetRequestId().IsValid());
  EXPECT_EQ(request.GetReplyChannel(), nullptr);
}

TEST(HttpRequestFields, AreTakenFromTheMessage) { ExpectAll(Request(FillAll)); }

TEST(HttpRequestFields, KeepTheWholeRecordAndTheIdentifier) {
  vorn::cMsg msg(tav::http::eRequest);
  vorn::cUuid id;
  id.Create();
  msg.SetId(id);
  FillAll(msg.Record());
  msg.Record().AppendTextPar("Path-Info", "/hello");
  const cHttpRequest request(msg);
  EXPECT_EQ(request.GetRequestId(), id);
  EXPECT_EQ(request.GetRecord(), msg.Record());
  EXPECT_EQ(request.GetRecord().GetTextPar("Path-Info"), "/hello");
  msg.Record().AppendTextPar("later", "1");
  EXPECT_EQ(request.GetRecord().GetTextPar("later"), "") << "it is a copy";
}

TEST_F(HttpRequest, KnowsTheChannelThatItCameOver) {
  const vorn::cUuid id = Fresh();
  const cHttpRequest request = Request("HTTP/1.1", id);
  EXPECT_EQ(request.GetRequestId(), id);
  EXPECT_EQ(request.GetReplyChannel(), m_io->GetChannel());
}

TEST_F(HttpRequest, IsCopiedAndAssignedWhole) {
  const cHttpRequest arrived = Request();
  vorn::cMsg msg(tav::http::eRequest);
  msg.SetId(Fresh());
  FillAll(msg.Record());
  const cHttpRequest request(msg);
  const cHttpRequest copy(request);
  cHttpRequest assigned = arrived;
  EXPECT_EQ(assigned.GetReplyChannel(), m_io->GetChannel());
  assigned = request;
  for (const cHttpRequest* each : {&copy, static_cast<const cHttpRequest*>(&assigned)}) {
    ExpectAll(*each);
    EXPECT_EQ(each->GetRequestId(), msg.GetId());
    EXPECT_EQ(each->GetRecord(), msg.Record());
    EXPECT_EQ(each->GetReplyChannel(), nullptr);
  }
  ExpectNothing(assigned = cHttpRequest());
}

TEST(HttpRequestFields, HaveNoVirtuals) {
  EXPECT_FALSE(std::is_polymorphic_v<cHttpRequest>);
  EXPECT_FALSE(std::is_polymorphic_v<cHttpCookie>);
  EXPECT_FALSE(std::is_polymorphic_v<cHttpUploadFile>);
}

TEST(HttpRequestFields, EachOfThemAloneMakesItValid) {
  const std::vector<Fill> kEach = {
      [](vorn::cRecord& record) { record.AppendTextPar("Server-Port", "80"); },
      [](vorn::cRecord& record) { record.AppendTextPar("Technology-Name", "web"); },
      [](vorn::cRecord& record) { record.AppendTextPar("Content-Type", "text/csv"); },
      [](vorn::cRecord& record) { record.AppendUIntPar("Content-Length", 0); },
      [](vorn::cRecord& record) { record.AppendTextPar("Server-Protocol", "HTTP/1.0"); },
      [](vorn::cRecord& record) {
        record.AppendRecordPar("QueryString", Record([](vorn::cRecord& part) { part.AppendTextPar("q", ""); }));
      },
      [](vorn::cRecord& record) {
        record.AppendRecordPar("Cookies", Record([](vorn::cRecord& part) { part.AppendTextPar("q", "1"); }));
      },
      [](vorn::cRecord& record) {
        record.AppendRecordPar("PostData", Record([](vorn::cRecord& part) { part.AppendTextPar("q", "1"); }));
      },
      [](vorn::cRecord& record) {
        record.AppendRecordPar("PostFiles", Record([](vorn::cRecord& part) { part.AppendTextPar("q", "1"); }));
      },
  };
  for (const Fill& fill : kEach) EXPECT_TRUE(Request(fill).IsValid()) << Record(fill).ToString();
}

TEST(HttpRequestFields, OfOtherKindsDoNotMakeItValid) {
  ExpectNothing(Request([](vorn::cRecord& record) {
    record.AppendTextPar("PostContent", "/tmp/body");
    record.AppendTextPar("Path-Info", "/");
    record.AppendTextPar("Request-Method", "GET");
  }));
}

TEST(HttpRequestFields, ThatAreEmptyCountAsMissing) {
  ExpectNothing(Request([](vorn::cRecord& record) {
    record.AppendTextPar("Server-Port", "");
    record.AppendTextPar("Technology-Name", nullptr);
    for (const char* name : {"Content-Type", "Server-Protocol"}) record.AppendTextPar(name, "");
    for (const char* name : {"QueryString", "Cookies", "PostData", "PostFiles"})
      record.AppendRecordPar(name, vorn::cRecord());
  }));
}

TEST(HttpRequestFields, OfAnotherTypeCountAsMissing) {
  ExpectNothing(Request([](vorn::cRecord& record) {
    record.AppendUIntPar("Server-Port", 80);
    record.AppendDataPar("Technology-Name", vorn::cData(std::string("web")));
    record.AppendIntPar("Content-Length", 5);
    for (const char* name : {"QueryString", "Cookies", "PostData", "PostFiles"}) record.AppendTextPar(name, "q");
  }));
  ExpectNothing(Request([](vorn::cRecord& record) {
    record.AppendTextPar("Content-Length", "5");
    record.AppendBoolPar("Server-Protocol", true);
    record.AppendUIntPar("Content-Type", 1);
  }));
  ExpectNothing(Request([](vorn::cRecord& record) { record.AppendUInt64Par("Content-Length", 5); }));
}

// ---- query and form

TEST(HttpRequestVariables, AreTextsOfTheirName) {
  const Fill fill = [](vorn::cRecord& part) {
    part.AppendTextPar("a", "1");
    part.AppendTextPar("A", "2");
    part.AppendTextPar("", "nameless");
  };
  const cHttpRequest query = With("QueryString", fill);
  EXPECT_EQ(query.GetFromQueryString("a"), "1");
  EXPECT_EQ(query.GetFromQueryString("A"), "2");
  EXPECT_EQ(query.GetFromQueryString(""), "nameless");
  EXPECT_EQ(query.GetFromPostData("a"), "") << "the other part";
  const cHttpRequest form = With("PostData", fill);
  EXPECT_EQ(form.GetFromPostData("a"), "1");
  EXPECT_EQ(form.GetFromPostData("A"), "2");
  EXPECT_EQ(form.GetFromQueryString("a"), "") << "the other part";
}

TEST(HttpRequestVariables, ThatAreEmptyReadAsThoseThatAreAbsent) {
  const Fill fill = [](vorn::cRecord& part) {
    part.AppendTextPar("empty", "");
    part.AppendTextPar("null", nullptr);
  };
  for (const char* name : {"empty", "null", "absent"}) {
    EXPECT_EQ(With("QueryString", fill).GetFromQueryString(name), "") << name;
    EXPECT_EQ(With("PostData", fill).GetFromPostData(name), "") << name;
  }
  EXPECT_EQ(cHttpRequest().GetFromQueryString("a"), "");
  EXPECT_EQ(cHttpRequest().GetFromPostData("a"), "");
}

TEST(HttpRequestVariables, ThatRepeatAreTheFirst) {
  const Fill fill = [](vorn::cRecord& part) {
    part.AppendTextPar("a", "1");
    part.AppendTextPar("a", "2");
  };
  EXPECT_EQ(With("QueryString", fill).GetFromQueryString("a"), "1");
  EXPECT_EQ(With("PostData", fill).GetFromPostData("a"), "1");
}

TEST(HttpRequestVariables, OfAnyTypeAreReadAsText) {
  const Fill fill = [](vorn::cRecord& part) { part.AppendUIntPar("n", 42); };
  EXPECT_EQ(With("QueryString", fill).GetFromQueryString("n"), "42");
  EXPECT_EQ(With("PostData", fill).GetFromPostData("n"), "42");
}

TEST(HttpRequestVariables, AreNotDecoded) {
  const std::string text = "a%20b+c&amp;\xE4";
  const std::string zero("a\0b", 3);
  const Fill fill = [&](vorn::cRecord& part) {
    part.AppendTextPar("a", text);
    part.AppendTextPar("zero", zero);
  };
  EXPECT_EQ(With("QueryString", fill).GetFromQueryString("a"), text);
  EXPECT_EQ(With("PostData", fill).GetFromPostData("zero"), zero);
}

TEST(HttpRequestVariables, OfNoNameAreNone) {
  EXPECT_EQ(With("QueryString", [](vorn::cRecord& part) { part.AppendTextPar("a", "1"); }).GetFromQueryString(nullptr),
            "");
  EXPECT_EQ(With("PostData", [](vorn::cRecord& part) { part.AppendTextPar("a", "1"); }).GetFromPostData(nullptr), "");
}

// ---- cookies

TEST(HttpCookie, StartsEmptyOrWithBothTexts) {
  const cHttpCookie empty;
  EXPECT_EQ(empty.name + empty.value, "");
  const cHttpCookie cookie("sid", "abc");
  EXPECT_EQ(cookie.name, "sid");
  EXPECT_EQ(cookie.value, "abc");
}

TEST(HttpCookie, IsFoundByItsName) {
  const cHttpRequest request =
      With("Cookies", "sid", [](vorn::cRecord& cookie) { cookie.AppendTextPar("value", "abc"); });
  cHttpCookie cookie("before", "before");
  EXPECT_TRUE(request.GetCookie("sid", cookie));
  EXPECT_EQ(cookie.name, "sid");
  EXPECT_EQ(cookie.value, "abc");
}

TEST(HttpCookie, ThatIsNotFoundLeavesTheCallersUntouched) {
  const std::vector<std::pair<const char*, cHttpRequest>> kNone = {
      {"no cookies", cHttpRequest()},
      {"another name", With("Cookies", "SID", [](vorn::cRecord& cookie) { cookie.AppendTextPar("value", "abc"); })},
      {"a text instead of a record", With("Cookies", [](vorn::cRecord& part) { part.AppendTextPar("sid", "abc"); })},
      {"an empty record", With("Cookies", "sid", [](vorn::cRecord&) {})},
      {"no value", With("Cookies", "sid", [](vorn::cRecord& cookie) { cookie.AppendTextPar("Value", "abc"); })},
      {"an empty value", With("Cookies", "sid", [](vorn::cRecord& cookie) { cookie.AppendTextPar("value", ""); })},
      {"a null value", With("Cookies", "sid", [](vorn::cRecord& cookie) { cookie.AppendTextPar("value", nullptr); })},
      {"a number", With("Cookies", "sid", [](vorn::cRecord& cookie) { cookie.AppendUIntPar("value", 1); })},
      {"a query variable", With("QueryString", "sid", [](vorn::cRecord& part) { part.AppendTextPar("value", "1"); })},
  };
  for (const auto& [what, request] : kNone) {
    cHttpCookie cookie("before", "old");
    EXPECT_FALSE(request.GetCookie("sid", cookie)) << what;
    EXPECT_EQ(cookie.name + "=" + cookie.value, "before=old") << what;
    EXPECT_FALSE(request.GetCookie(nullptr, cookie)) << what;
  }
}

// ---- uploaded files

TEST(HttpUploadFile, StartsEmptyAndIsCopiedWhole) {
  const cHttpUploadFile empty;
  EXPECT_EQ(Show(empty), "   0");
  const cHttpUploadFile copy(Before());
  EXPECT_EQ(Show(copy), "before/type before.name /before 99");
  cHttpUploadFile assigned;
  assigned = copy;
  EXPECT_EQ(Show(assigned), Show(copy));
}

TEST(HttpUploadFile, IsFoundByTheNameOfItsField) {
  cHttpRequest request = With("PostFiles", "upload", [](vorn::cRecord& file) {
    file.AppendTextPar("Type", "text/csv");
    file.AppendUIntPar("Length", 12);
    file.AppendTextPar("Filename", "a.csv");
    file.AppendTextPar("tmpFilename", "/tmp/1");
  });
  cHttpUploadFile file = Before();
  EXPECT_TRUE(request.GetPostFile("upload", file));
  EXPECT_EQ(Show(file), "text/csv a.csv /tmp/1 12");
}

TEST(HttpUploadFile, KeepsWhatIsNotTold) {
  const std::vector<std::pair<Fill, std::string>> kTold = {
      {[](vorn::cRecord& file) { file.AppendTextPar("Type", "text/csv"); }, "text/csv before.name /before 99"},
      {[](vorn::cRecord& file) { file.AppendUIntPar("Length", 0); }, "before/type before.name /before 0"},
      {[](vorn::cRecord& file) { file.AppendTextPar("Filename", "a.csv"); }, "before/type a.csv /before 99"},
      {[](vorn::cRecord& file) { file.AppendTextPar("tmpFilename", "/tmp/1"); }, "before/type before.name /tmp/1 99"},
      {[](vorn::cRecord& file) { file.AppendTextPar("other", "1"); }, "before/type before.name /before 99"},
      {[](vorn::cRecord& file) {
         for (const char* name : {"Type", "Filename", "tmpFilename"}) file.AppendTextPar(name, "");
       },
       "before/type before.name /before 99"},
      {[](vorn::cRecord& file) {
         for (const char* name : {"Type", "Filename", "tmpFilename"}) file.AppendUIntPar(name, 1);
         file.AppendTextPar("Length", "5");
       },
       "before/type before.name /before 99"},
  };
  for (const auto& [fill, expected] : kTold) {
    cHttpUploadFile file = Before();
    EXPECT_TRUE(With("PostFiles", "upload", fill).GetPostFile("upload", file)) << expected;
    EXPECT_EQ(Show(file), expected);
  }
}

TEST(HttpUploadFile, ThatIsNotFoundLeavesTheCallersUntouched) {
  const Fill filled = [](vorn::cRecord& file) { file.AppendTextPar("Filename", "a.csv"); };
  const std::vector<std::pair<const char*, cHttpRequest>> kNone = {
      {"no files", cHttpRequest()},
      {"another name", With("PostFiles", "Upload", filled)},
      {"a text instead of a record", With("PostFiles", [](vorn::cRecord& part) { part.AppendTextPar("upload", "a"); })},
      {"an empty record", With("PostFiles", "upload", [](vorn::cRecord&) {})},
      {"a form field", With("PostData", "upload", filled)},
  };
  for (auto [what, request] : kNone) {
    cHttpUploadFile file = Before();
    EXPECT_FALSE(request.GetPostFile("upload", file)) << what;
    EXPECT_FALSE(request.GetPostFile(nullptr, file)) << what;
    EXPECT_EQ(Show(file), Show(Before())) << what;
  }
}

TEST(HttpPostContent, HasTheRequestsTypeAndLengthAndLeavesTheFileName) {
  cHttpRequest request = Request([](vorn::cRecord& record) {
    FillAll(record);
    record.AppendTextPar("PostContent", "/tmp/body");
  });
  cHttpUploadFile file = Before();
  EXPECT_TRUE(request.GetPostContent(file));
  EXPECT_EQ(Show(file), "text/csv before.name /tmp/body 4711");
}

TEST(HttpPostContent, WithoutLengthAndTypeHasNone) {
  cHttpRequest request = Request([](vorn::cRecord& record) { record.AppendTextPar("PostContent", "/tmp/body"); });
  cHttpUploadFile file = Before();
  EXPECT_TRUE(request.GetPostContent(file));
  EXPECT_EQ(Show(file), " before.name /tmp/body 0");
}

TEST(HttpPostContent, ThatIsNotFoundLeavesTheCallersUntouched) {
  const std::vector<Fill> kNone = {
      FillAll,
      [](vorn::cRecord& record) { record.AppendTextPar("PostContent", ""); },
      [](vorn::cRecord& record) { record.AppendTextPar("PostContent", nullptr); },
      [](vorn::cRecord& record) { record.AppendDataPar("PostContent", vorn::cData(std::string("/tmp/body"))); },
  };
  for (const Fill& fill : kNone) {
    cHttpUploadFile file = Before();
    EXPECT_FALSE(Request(fill).GetPostContent(file));
    EXPECT_EQ(Show(file), Show(Before()));
  }
}

// ---- texts

TEST(HttpCacheControlOFF, IsTheLineOfTheProtocolByItsExactName) {
  const std::vector<std::pair<std::string, std::string>> kLines = {
      {"HTTP/1.1", "Cache-Control: no-cache,no-store\r\n"},
      {"HTTP/1.0", "Pragma: no-cache\r\n"},
      {"HTTP/2", ""},
      {"HTTP/2.0", ""},
      {"http/1.1", ""},
      {"HTTP/1.1 ", ""},
      {"", ""},
  };
  for (const auto& [name, line] : kLines) {
    const cHttpRequest request =
        Request([&protocol = name](vorn::cRecord& record) { record.AppendTextPar("Server-Protocol", protocol); });
    EXPECT_EQ(request.GetCacheControlOFF(), line) << name;
  }
  EXPECT_EQ(cHttpRequest().GetCacheControlOFF(), "");
}

TEST(HttpRequestToString, IsTheFrontEndAndTheRecord) {
  vorn::cMsg msg(tav::http::eRequest);
  FillAll(msg.Record());
  EXPECT_EQ(cHttpRequest(msg).ToString(), "HTTP-Request[web]: " + msg.Record().ToString(32, 0));
  EXPECT_EQ(cHttpRequest().ToString(), "HTTP-Request[]: " + vorn::cRecord().ToString(32, 0));
}

TEST(HttpRequestToString, CutsBinaryValuesAfter32Bytes) {
  const auto text = [](std::size_t size) {
    return Request(
               [size](vorn::cRecord& record) { record.AppendDataPar("data", vorn::cData(std::string(size, '\x5A'))); })
        .ToString();
  };
  const auto count = [](const std::string& all) {
    std::size_t found = 0;
    for (std::size_t at = all.find("5A"); at != std::string::npos; at = all.find("5A", at + 2)) ++found;
    return found;
  };
  EXPECT_EQ(count(text(31)), 31u);
  EXPECT_EQ(count(text(32)), 32u);
  EXPECT_EQ(count(text(33)), 32u);
}
