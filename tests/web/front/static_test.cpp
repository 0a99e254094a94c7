// SPDX-License-Identifier: Apache-2.0
// Files below /static/.
#include <sys/stat.h>

#include <fstream>

#include "tests/web/front/front_world.h"

using testing::HasSubstr;

namespace tav::gateway::web {

namespace {

class FrontStatic : public FrontWorld {
 protected:
  void SetUp() override {
    Write("static/style.css", "body {}");
    std::filesystem::create_directory(m_folder.File("static/sub"));
    Write("static/sub/a b.txt", "blank");
    Write("static/.hidden", "secret");
    Write("secret", "secret");
    Write("static/large.js", std::string(100'000, 'j'));
    std::filesystem::create_symlink(m_folder.File("secret"), m_folder.File("static/link"));
    std::filesystem::create_directory_symlink(m_folder.GetPath(), m_folder.File("static/out"));
    mkfifo(m_folder.File("static/pipe").c_str(), 0600);
    Write("chart.min.js", "chart");
    m_options.chart = m_folder.File("chart.min.js");
    Start();
  }
  void Write(const std::string& name, const std::string& text) { std::ofstream(m_folder.File(name)) << text; }
};

}  // namespace

TEST_F(FrontStatic, IsServedWithItsTypeAndGuards) {
  const cReply reply = Ask(Get("/static/style.css"));
  EXPECT_EQ(reply.status, 200u);
  EXPECT_EQ(reply.body, "body {}");
  EXPECT_EQ(reply.Field("Content-Type"), "text/css; charset=utf-8");
  EXPECT_EQ(reply.Field("X-Content-Type-Options"), "nosniff");
  EXPECT_EQ(reply.Field("Content-Length"), "7");
  EXPECT_EQ(Ask(Get("/static/sub/a%20b.txt?v=1")).body, "blank");
  EXPECT_EQ(Ask(Get("/static/chart.js")).body, "chart");
  EXPECT_THAT(Ask(Get("/robots.txt")).body, HasSubstr("Disallow: /"));
  EXPECT_EQ(Ask(Get("/favicon.ico")).status, 404u);
}

TEST_F(FrontStatic, IsNotSentAgainWhenTheClientHasIt) {
  const cReply first = Ask(Get("/static/style.css"));
  const std::string etag = first.Field("ETag");
  for (const std::string& field :
       {"If-None-Match: " + etag, "If-None-Match: \"x\", W/" + etag, std::string("If-None-Match: *"),
        "If-Modified-Since: " + first.Field("Last-Modified")}) {
    const cReply reply = Ask(Get("/static/style.css", field + "\r\n"));
    EXPECT_EQ(reply.status, 304u) << field;
    EXPECT_EQ(reply.Field("ETag"), etag);
  }
  EXPECT_EQ(Ask(Get("/static/style.css",
                    "If-None-Match: \"x\"\r\nIf-Modified-Since: " + first.Field("Last-Modified") + "\r\n"))
                .status,
            200u);
  Write("static/style.css", "body { color: red }");
  EXPECT_EQ(Ask(Get("/static/style.css", "If-None-Match: " + etag + "\r\n")).status, 200u) << "it has changed";
}

TEST_F(FrontStatic, IsServedInPart) {
  const std::string etag = Ask(Get("/static/style.css")).Field("ETag");
  const cReply part = Ask(Get("/static/style.css", "Range: bytes=1-3\r\n"));
  EXPECT_EQ(part.status, 206u);
  EXPECT_EQ(part.body, "ody");
  EXPECT_EQ(part.Field("Content-Range"), "bytes 1-3/7");
  EXPECT_EQ(Ask(Get("/static/style.css", "Range: bytes=-2\r\nIf-Range: " + etag + "\r\n")).body, "{}");
  EXPECT_EQ(Ask(Get("/static/style.css", "Range: bytes=-2\r\nIf-Range: \"x\"\r\n")).body, "body {}");
  EXPECT_EQ(Ask(Get("/static/style.css", "Range: bytes=0-1,3-4\r\n")).status, 200u);
  const cReply behind = Ask(Get("/static/style.css", "Range: bytes=7-\r\n"));
  EXPECT_EQ(behind.status, 416u);
  EXPECT_EQ(behind.Field("Content-Range"), "bytes */7");
}

TEST_F(FrontStatic, IsCompressedWhenThatPays) {
  const cReply packed = Ask(Get("/static/large.js", "Accept-Encoding: gzip\r\n"));
  EXPECT_EQ(packed.Field("Content-Encoding"), "gzip");
  EXPECT_LT(packed.body.size(), 1000u);
  const cReply plain = Ask(Get("/static/large.js"));
  EXPECT_EQ(plain.body.size(), 100'000u);
  EXPECT_EQ(plain.Field("Vary"), "Accept-Encoding");
  EXPECT_NE(plain.Field("ETag"), packed.Field("ETag"));
  EXPECT_EQ(
      Ask(Get("/static/large.js", "Accept-Encoding: gzip\r\nIf-None-Match: " + packed.Field("ETag") + "\r\n")).status,
      304u);
  EXPECT_FALSE(Ask(Get("/static/style.css", "Accept-Encoding: gzip\r\n")).HasField("Content-Encoding")) << "too small";
  EXPECT_EQ(Ask(Get("/static/large.js", "Accept-Encoding: gzip\r\nRange: bytes=0-9\r\n")).body, std::string(10, 'j'));
}

TEST_F(FrontStatic, HeadTellsTheLength) {
  cWebClient& client = Connect();
  client.Send(Get("/static/large.js", "", "HEAD"));
  EXPECT_EQ(AwaitReply(client, true).Field("Content-Length"), "100000");
  client.Send(Get("/static/style.css"));
  EXPECT_EQ(AwaitReply(client).body, "body {}") << "on the same connection";
}

TEST_F(FrontStatic, CanOnlyBeRead) {
  for (const char* method : {"POST", "PUT", "DELETE", "OPTIONS"}) {
    const cReply reply = Ask(Get("/static/style.css", "Content-Length: 0\r\n", method));
    EXPECT_EQ(reply.status, 405u) << method;
    EXPECT_EQ(reply.Field("Allow"), "GET, HEAD");
  }
}

TEST_F(FrontStatic, NothingElseIsReached) {
  const std::pair<const char*, unsigned int> kCases[] = {
      {"/static/../secret", 400},
      {"/static/..", 400},
      {"/static/./style.css", 400},
      {"/../../../../etc/passwd", 400},
      {"/static/%2e%2e/secret", 400},
      {"/static/%2E%2e%2fsecret", 400},
      {"/static/..%2fsecret", 400},
      {"/static/sub/../../secret", 400},
      {"/static/%00", 400},
      {"/static/style.css%00.png", 400},
      {"/static/style.css%0a", 400},
      {"/static/%", 400},
      {"/static/%2", 400},
      {"/static/%zz", 400},
      {"/static/%252e%252e/secret", 404},
      {"/static/..\\secret", 404},
      {"/static/..;/secret", 404},
      {"/static/%c0%ae%c0%ae/secret", 404},
      {"/static//etc/passwd", 404},
      {"/static//secret", 404},
      {"/static/", 404},
      {"/static/sub", 404},
      {"/static/sub/", 404},
      {"/static/.hidden", 404},
      {"/static/link", 404},
      {"/static/out/secret", 404},
      {"/static/pipe", 404},
      {"/static/missing", 404},
      {"/static/style.css/", 404},
  };
  for (const auto& [path, status] : kCases) {
    const cReply reply = Ask(Get(path));
    EXPECT_EQ(reply.status, status) << path;
    EXPECT_EQ(reply.body.find("secret\n"), std::string::npos) << path;
  }
  EXPECT_EQ(Ask(Get("/static")).status, 503u) << "that is no file's path";
}

TEST_F(FrontStatic, IsMissingWithItsDirectory) {
  Stop();
  m_options.staticDirectory = "/nowhere";
  m_options.chart = "/nowhere/chart.js";
  Start();
  EXPECT_EQ(Ask(Get("/static/style.css")).status, 404u);
  EXPECT_EQ(Ask(Get("/static/chart.js")).status, 404u);
}

}  // namespace tav::gateway::web
