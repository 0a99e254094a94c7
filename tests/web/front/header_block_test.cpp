// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/front/header_block.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <gateway/web/front/web_limits.h>

using tav::gateway::web::cHeaderBlock;
using eState = tav::gateway::web::cHeaderBlock::eState;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

std::vector<std::string> Fields(const cHeaderBlock& block) {
  std::vector<std::string> all;
  for (const auto& field : block.GetFields()) all.push_back(field.name + "=" + field.value);
  return all;
}

cHeaderBlock Read(std::string_view text) {
  cHeaderBlock block;
  block.Take(text);
  return block;
}

}  // namespace

TEST(HeaderBlock, EndsAtTheFirstEmptyLine) {
  for (const std::string text :
       {"Status: 200\r\nContent-Type: text/plain\r\n\r\n", "Status: 200\nContent-Type: text/plain\n\n",
        "Status: 200\r\nContent-Type: text/plain\n\r\n"}) {
    cHeaderBlock block;
    EXPECT_EQ(block.Take(text + "body\n\nmore"), text.size());
    EXPECT_EQ(block.GetState(), eState::Done) << block.GetError();
    EXPECT_EQ(block.GetStatus(), 200u);
    EXPECT_THAT(Fields(block), ElementsAre("Content-Type=text/plain"));
  }
}

TEST(HeaderBlock, MayComeInPiecesOfAnySize) {
  const std::string text = "Status: 404\r\nContent-Type: text/html\r\nSet-Cookie: a=b\r\nSet-Cookie: c=d\r\n\r\nbody";
  for (std::size_t size = 1; size <= text.size(); ++size) {
    cHeaderBlock block;
    std::size_t taken = 0;
    for (std::size_t at = 0; at < text.size() && block.GetState() == eState::Open; at += size)
      taken += block.Take(std::string_view(text).substr(at, size));
    EXPECT_EQ(taken, text.size() - 4) << size;
    EXPECT_EQ(block.GetStatus(), 404u) << size;
    EXPECT_THAT(Fields(block), ElementsAre("Content-Type=text/html", "Set-Cookie=a=b", "Set-Cookie=c=d")) << size;
  }
}

TEST(HeaderBlock, KnowsALineWithoutABreakInItsThreeForms) {
  struct cCase {
    const char* line;
    std::vector<std::string> fields;
  };
  const cCase kCases[] = {
      {"Content-Type: text/htmlCache-Control: no-cache,no-store\r\nConnection: close",
       {"Content-Type=text/html", "Cache-Control=no-cache,no-store"}},
      {"Content-Type: text/htmlPragma: no-cache\r\nConnection: close", {"Content-Type=text/html", "Pragma=no-cache"}},
      {"Content-Type: text/htmlConnection: close", {"Content-Type=text/html"}},
      {"Content-Type: a/bPragma: no-cacheConnection: close", {"Content-Type=a/b", "Pragma=no-cache"}},
  };
  for (const cCase& each : kCases) {
    const cHeaderBlock block = Read(std::string("Status: 200\r\n") + each.line + "\r\n\r\n");
    EXPECT_EQ(block.GetState(), eState::Done) << each.line << ": " << block.GetError();
    EXPECT_EQ(Fields(block), each.fields) << each.line;
    EXPECT_THAT(block.GetDropped(), testing::IsEmpty());
  }
}

TEST(HeaderBlock, PassesOnWhatItsTableNamesAndNothingElse) {
  const cHeaderBlock block = Read(
      "Status: 301 Moved\r\nLocation: /a\r\nContent-Disposition: inline\r\nETag: \"1\"\r\nLast-Modified: now\r\n"
      "Retry-After: 3\r\nWWW-Authenticate: Basic\r\nVary: Cookie\r\nAllow: GET\r\nContent-Language: de\r\n"
      "Transfer-Encoding: chunked\r\nContent-Length: 5\r\nX-Frame-Options: ALLOW\r\nUpgrade: h2c\r\nConnection: "
      "x\r\n\r\n");
  EXPECT_EQ(block.GetState(), eState::Done) << block.GetError();
  EXPECT_EQ(block.GetStatus(), 301u);
  EXPECT_THAT(Fields(block), ElementsAre("Location=/a", "Content-Disposition=inline", "ETag=\"1\"", "Last-Modified=now",
                                         "Retry-After=3", "WWW-Authenticate=Basic", "Vary=Cookie", "Allow=GET",
                                         "Content-Language=de"));
  EXPECT_THAT(block.GetDropped(), ElementsAre("Transfer-Encoding", "Content-Length", "X-Frame-Options", "Upgrade"));
}

TEST(HeaderBlock, IsBrokenWhenItCannotBeRead) {
  struct cCase {
    std::string text;
    const char* error;
  };
  const cCase kCases[] = {
      {"\r\n", "no Status"},
      {"\n", "no Status"},
      {"Content-Type: text/html\r\n\r\n", "no Status"},
      {"Status: \r\n\r\n", "Status"},
      {"Status: 20\r\n\r\n", "Status"},
      {"Status: 2000\r\n\r\n", "Status"},
      {"Status: abc\r\n\r\n", "Status"},
      {"Status: -20\r\n\r\n", "Status"},
      {"Status: 199\r\n\r\n", "Status"},
      {"Status: 600\r\n\r\n", "Status"},
      {"Status: 200\r\nStatus: 200\r\n\r\n", "twice"},
      {"Status: 200\r\nContent-Type: a\r\nContent-Type: b\r\n\r\n", "twice"},
      {"Status: 200\r\nLocation: /a\rX: y\r\n\r\n", "control"},
      {std::string("Status: 200\r\nLocation: /a\0b\r\n\r\n", 31), "control"},
      {"Status: 200\r\nLocation: /a\x7f\r\n\r\n", "control"},
      {"Status: 200\r\nLocation: /a\x1b[0m\r\n\r\n", "control"},
      {"Status: 200\r\n folded: x\r\n\r\n", "no field"},
      {"Status: 200\r\nno colon\r\n\r\n", "no field"},
      {"Status: 200\r\n: empty\r\n\r\n", "no field"},
      {"Status: 200\r\nSet Cookie: x\r\n\r\n", "no field"},
      {"<html>\r\n\r\n", "no field"},
  };
  for (const cCase& each : kCases) {
    const cHeaderBlock block = Read(each.text);
    EXPECT_EQ(block.GetState(), eState::Broken) << each.text;
    EXPECT_THAT(block.GetError(), HasSubstr(each.error)) << each.text;
    EXPECT_THAT(block.GetFields(), testing::IsEmpty());
  }
}

TEST(HeaderBlock, HasALimit) {
  for (const int over : {-1, 0, 1}) {
    const std::string begin = "Status: 200\r\nLocation: /";
    const std::size_t size = tav::gateway::web::kMaxHeaderBlockBytes + static_cast<std::size_t>(over);
    const cHeaderBlock block = Read(begin + std::string(size - begin.size() - 4, 'x') + "\r\n\r\n");
    EXPECT_EQ(block.GetState(), over > 0 ? eState::Broken : eState::Done) << over;
  }
  EXPECT_EQ(Read(std::string(tav::gateway::web::kMaxHeaderBlockBytes + 1, 'x')).GetState(), eState::Broken)
      << "a line without an end";
}

TEST(HeaderBlock, FindsAFieldWhateverItsCase) {
  const cHeaderBlock block = Read("status: 200\r\ncontent-TYPE: text/css\r\n\r\n");
  EXPECT_EQ(block.Find("content-type"), "text/css");
  EXPECT_EQ(block.Find("etag"), "");
}
