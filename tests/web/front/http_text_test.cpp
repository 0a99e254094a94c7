// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/front/http_text.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <gateway/web/front/media_type.h>

namespace tav::gateway::web {

TEST(HttpText, ACodingIsAcceptedByNameOrByStar) {
  for (const char* field : {"gzip", "GZIP", "deflate, gzip", "gzip;q=0.5", "*", "br;q=1.0, gzip;q=0.8, *;q=0.1"})
    EXPECT_TRUE(AcceptsCoding(field, "gzip")) << field;
  for (const char* field : {"", "br", "gzip;q=0", "gzip; q=0.000", "*;q=0", "gzip;q=0, *", "xgzip"})
    EXPECT_FALSE(AcceptsCoding(field, "gzip")) << field;
}

TEST(HttpText, SplitsListsAndTrims) {
  EXPECT_THAT(SplitList(" a ,b,, c\t"), testing::ElementsAre("a", "b", "c"));
  EXPECT_THAT(SplitList(""), testing::IsEmpty());
}

TEST(HttpText, WritesADate) {
  EXPECT_EQ(HttpDate(784111777), "Sun, 06 Nov 1994 08:49:37 GMT");
  EXPECT_EQ(HttpDate(0), "Thu, 01 Jan 1970 00:00:00 GMT");
}

TEST(MediaType, ComesFromTheEndOfTheName) {
  EXPECT_EQ(MediaTypeOf("style.css"), "text/css; charset=utf-8");
  EXPECT_EQ(MediaTypeOf("a/b.min.JS"), "text/javascript; charset=utf-8");
  EXPECT_EQ(MediaTypeOf("css"), "application/octet-stream");
  EXPECT_EQ(MediaTypeOf(""), "application/octet-stream");
}

TEST(MediaType, TextsAreCompressedAndStreamsOfEventsAreNot) {
  for (const char* type : {"text/html", "TEXT/HTML; charset=utf-8", "application/json", "image/svg+xml"})
    EXPECT_TRUE(IsCompressible(type)) << type;
  for (const char* type : {"", "image/png", "text/event-stream", "text/event-stream; charset=utf-8", "application/zip"})
    EXPECT_FALSE(IsCompressible(type)) << type;
}

}  // namespace tav::gateway::web
