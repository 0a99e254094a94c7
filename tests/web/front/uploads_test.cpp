// SPDX-License-Identifier: Apache-2.0
// Bodies of requests: forms, files, and their limits.
#include <sys/stat.h>

#include <fstream>

#include <tav/framework/helper.h>

#include "tests/web/front/front_world.h"

#include <gateway/web/front/web_limits.h>

using testing::HasSubstr;

namespace tav::gateway::web {

namespace {

constexpr const char* kMultipart = "multipart/form-data; boundary=xyz";
constexpr const char* kUrlEncoded = "application/x-www-form-urlencoded";

std::string Part(const std::string& disposition, const std::string& body, const std::string& type = "") {
  return "--xyz\r\nContent-Disposition: form-data; " + disposition + "\r\n" +
         (type.empty() ? "" : "Content-Type: " + type + "\r\n") + "\r\n" + body + "\r\n";
}

class FrontUploads : public FrontWorld {
 protected:
  void SetUp() override {
    m_options.maxBodyBytes = std::uint64_t{4} << 20;
    Start();
    m_pages = &AddPages();
    m_pages->onRequest = [this](const vorn::cMsg& request) { m_pages->Serve(request, kHtml, "done"); };
  }
  // What the page got; the answer is held back until it has been looked at.
  cHttpRequest Hold(const std::string& request) {
    m_pages->onRequest = nullptr;
    m_client = &Connect();
    m_client->Send(request);
    vorn::cMsg msg = AwaitRequest(*m_pages, m_pages->requests.size() + 1);
    return cHttpRequest(msg);
  }
  static std::string Read(const std::string& file) {
    std::ifstream stream(file);
    return {std::istreambuf_iterator<char>(stream), {}};
  }
  std::size_t CountFiles() const {
    const std::filesystem::directory_iterator all(m_options.tempDirectory);
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
  }

  cTestPages* m_pages = nullptr;
  cWebClient* m_client = nullptr;
};

}  // namespace

TEST_F(FrontUploads, FilesOfAFormLieInPrivateFilesUntilTheExchangeEnds) {
  const std::string content(100'000, 'f');
  cHttpRequest page =
      Hold(Post("/up", kMultipart,
                Part("name=\"note\"", "a text") + Part("name=\"cert\"; filename=\"../c.pem\"", content, "x/y") +
                    Part("name=\"none\"; filename=\"\"", "") + "--xyz--\r\n"));
  EXPECT_EQ(page.GetFromPostData("note"), "a text");
  cHttpUploadFile file;
  ASSERT_TRUE(page.GetPostFile("cert", file));
  EXPECT_EQ(file.fileName, "../c.pem");
  EXPECT_EQ(file.contentType, "x/y");
  EXPECT_EQ(file.length, content.size());
  EXPECT_EQ(Read(file.tmpFileName), content);
  struct stat status {};
  ASSERT_EQ(stat(file.tmpFileName.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);
  ASSERT_EQ(stat(m_options.tempDirectory.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0700u);
  EXPECT_FALSE(page.GetPostFile("none", file));
  EXPECT_EQ(CountFiles(), 1u);
  EXPECT_EQ(Value("bytes-stored"), std::to_string(content.size()));
  m_pages->Serve(m_pages->requests.back(), kHtml, "ok");
  EXPECT_EQ(AwaitReply(*m_client).body, "ok");
  Settle();
  EXPECT_EQ(CountFiles(), 0u);
  EXPECT_EQ(Value("bytes-stored"), "0");
}

TEST_F(FrontUploads, ABodyThatIsNoFormIsOneFile) {
  cHttpRequest page = Hold(Post("/api", "application/json", "{\"a\":1}", "PUT"));
  cHttpUploadFile file;
  ASSERT_TRUE(page.GetPostContent(file));
  EXPECT_EQ(file.contentType, "application/json");
  EXPECT_EQ(file.length, 7u);
  EXPECT_EQ(Read(file.tmpFileName), "{\"a\":1}");
  m_client->Close();
  Settle();
  EXPECT_EQ(CountFiles(), 0u) << "the client is gone, and the exchange with it";
}

TEST_F(FrontUploads, WhatAnEarlierProcessLeftIsRemoved) {
  Stop();
  std::ofstream(m_options.tempDirectory + "/left") << "x";
  Start();
  EXPECT_EQ(CountFiles(), 0u);
}

TEST_F(FrontUploads, ABodyMayComeInChunks) {
  cHttpRequest page =
      Hold(Get("/api", std::string("Transfer-Encoding: chunked\r\nContent-Type: ") + kUrlEncoded + "\r\n", "POST") +
           "5\r\na=1&b\r\n3\r\n=23\r\n0\r\n\r\n");
  EXPECT_EQ(page.GetFromPostData("a"), "1");
  EXPECT_EQ(page.GetFromPostData("b"), "23");
  EXPECT_EQ(page.GetContentLength(), 8u);
}

TEST_F(FrontUploads, ABodyHasALimit) {
  const std::size_t limit = m_options.maxBodyBytes;
  for (const int over : {-1, 0, 1}) {
    const std::string body(limit + static_cast<std::size_t>(over), 'x');
    EXPECT_EQ(Ask(Post("/", "x/y", body)).status, over > 0 ? 413u : 200u) << over;
    const cReply chunked = Ask(Get("/", "Transfer-Encoding: chunked\r\n", "POST") +
                               vorn::FormatString("%zx\r\n", body.size()) + body + "\r\n0\r\n\r\n");
    EXPECT_EQ(chunked.status, over > 0 ? 413u : 200u) << over;
  }
  EXPECT_EQ(Value("bytes-stored"), "0");
}

TEST_F(FrontUploads, WhoAsksFirstIsToldBeforeTheBody) {
  cWebClient& client = Connect();
  client.Send(Get("/", "Content-Length: 5000000\r\nExpect: 100-continue\r\n", "POST"));
  EXPECT_EQ(AwaitReply(client).status, 413u);
  cWebClient& welcome = Connect();
  welcome.Send(Get("/", "Content-Length: 2\r\nExpect: 100-continue\r\n", "POST"));
  ASSERT_TRUE(Await([&] { return welcome.Input().find("100 Continue") != std::string::npos; }));
  welcome.Send("ab");
  EXPECT_EQ(AwaitReply(welcome).body, "done");
}

TEST_F(FrontUploads, ABodyWithoutEndEndsItsConnection) {
  cWebClient& client = Connect();
  client.Send(Get("/", "Transfer-Encoding: chunked\r\n", "POST"));
  const std::string chunk = "100000\r\n" + std::string(0x100000, 'x') + "\r\n";
  for (int i = 0; i < 80 && !client.IsClosed(); ++i) {
    client.Send(chunk);
    Await([&] { return client.GetUnsent() == 0 || client.IsClosed(); });
  }
  EXPECT_TRUE(Await([&] { return client.IsClosed(); }));
  EXPECT_EQ(CountFiles(), 0u);
}

TEST_F(FrontUploads, FieldsOfAFormHaveALimitTogether) {
  const auto ask = [&](std::size_t size) { return Ask(Post("/", kUrlEncoded, "a=" + std::string(size, 'x'))).status; };
  const std::size_t limit = kMaxFormBytes - 1 - 16;  // less the name, and what a field costs
  EXPECT_EQ(ask(limit - 1), 200u);
  EXPECT_EQ(ask(limit), 200u);
  EXPECT_EQ(ask(limit + 1), 413u);
  std::string many;
  for (std::size_t i = 0; i < kMaxFormBytes / 16; ++i) many += "a=&";
  EXPECT_EQ(Ask(Post("/", kUrlEncoded, many)).status, 413u);
}

TEST_F(FrontUploads, AFormBringsNoMoreFilesThanItsLimit) {
  for (const int over : {-1, 0, 1}) {
    std::string form;
    for (int i = 0; i < static_cast<int>(kMaxUploadFiles) + over; ++i)
      form += Part("name=\"f" + std::to_string(i) + "\"; filename=\"x\"", "content");
    EXPECT_EQ(Ask(Post("/", kMultipart, form + "--xyz--\r\n")).status, over > 0 ? 413u : 200u) << over;
  }
}

TEST_F(FrontUploads, NamesHaveTheLimitOfARecord) {
  for (const int over : {-1, 0, 1}) {
    const std::string name(kMaxNameBytes + static_cast<std::size_t>(over), 'n');
    const unsigned int expected = over > 0 ? 400 : 200;
    EXPECT_EQ(Ask(Post("/", kUrlEncoded, name + "=1")).status, expected) << over;
    EXPECT_EQ(Ask(Get("/?" + name + "=1")).status, expected) << over;
    EXPECT_EQ(Ask(Get("/", name + ": 1\r\n")).status, expected) << over;
    EXPECT_EQ(Ask(Get("/", "Cookie: " + name + "=1\r\n")).status, expected) << over;
  }
}

TEST_F(FrontUploads, AFormThatIsCutOffIsRefused) {
  const std::string whole = Part("name=\"a\"", "1") + "--xyz--\r\n";
  EXPECT_EQ(Ask(Post("/", kMultipart, whole)).status, 200u);
  EXPECT_EQ(Ask(Post("/", kMultipart, whole.substr(0, 20))).status, 400u);
  EXPECT_EQ(Ask(Post("/", kMultipart, "what stands before the first part is none")).status, 200u);
}

}  // namespace tav::gateway::web
