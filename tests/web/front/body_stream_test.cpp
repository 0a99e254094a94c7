// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/front/body_stream.h>

#include <gtest/gtest.h>
#include <zlib.h>

using tav::gateway::web::cBodyStream;

namespace {

std::string Unpack(const std::string& packed) {
  z_stream stream{};
  inflateInit2(&stream, 15 + 16);
  std::string out(1 << 20, '\0');
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(packed.data()));
  stream.avail_in = static_cast<uInt>(packed.size());
  stream.next_out = reinterpret_cast<Bytef*>(out.data());
  stream.avail_out = static_cast<uInt>(out.size());
  inflate(&stream, Z_SYNC_FLUSH);
  out.resize(stream.total_out);
  inflateEnd(&stream);
  return out;
}

std::string Take(cBodyStream& stream, std::size_t most) {
  std::string part(most, '\0');
  part.resize(stream.Take(part.data(), most));
  return part;
}

}  // namespace

TEST(BodyStream, CountsAnOutputWhenItsLastByteIsTaken) {
  cBodyStream stream;
  stream.Push("abc");
  stream.Push("de");
  EXPECT_EQ(stream.GetWaiting(), 5u);
  EXPECT_EQ(Take(stream, 2), "ab");
  EXPECT_EQ(stream.TakePassed(), 0u);
  EXPECT_EQ(Take(stream, 1), "c");
  EXPECT_EQ(stream.TakePassed(), 1u);
  EXPECT_EQ(Take(stream, 10), "de");
  EXPECT_EQ(stream.TakePassed(), 1u);
  EXPECT_FALSE(stream.HasBytes());
  EXPECT_FALSE(stream.IsAtEnd());
  stream.Finish();
  EXPECT_TRUE(stream.IsAtEnd());
}

TEST(BodyStream, AnEmptyOutputIsOneAllTheSame) {
  cBodyStream stream;
  stream.Push("");
  EXPECT_EQ(stream.TakePassed(), 1u);
  stream.Push("a");
  stream.Push("");
  EXPECT_EQ(stream.TakePassed(), 0u);
  EXPECT_EQ(Take(stream, 10), "a");
  EXPECT_EQ(stream.TakePassed(), 2u);
}

TEST(BodyStream, WhatIsThereCanBeReadAtOnceThoughItIsCompressed) {
  cBodyStream stream;
  stream.Compress();
  stream.Push("hello ");
  std::string packed = Take(stream, 1000);
  EXPECT_EQ(Unpack(packed), "hello ");
  EXPECT_EQ(stream.TakePassed(), 1u);
  EXPECT_FALSE(stream.HasBytes());
  stream.Push("world");
  stream.Push("");
  packed += Take(stream, 1000);
  EXPECT_EQ(Unpack(packed), "hello world");
  EXPECT_EQ(stream.TakePassed(), 2u);
  stream.Finish();
  EXPECT_TRUE(stream.HasBytes());
  EXPECT_FALSE(stream.IsAtEnd());
  packed += Take(stream, 1000);
  EXPECT_TRUE(stream.IsAtEnd());
  EXPECT_EQ(Unpack(packed), "hello world");
}

TEST(BodyStream, CompressesTheSameHoweverItIsTaken) {
  std::string text;
  for (int i = 0; i < 20'000; ++i) text += std::to_string(i * 7919) + ";";
  for (const std::size_t step : {1u, 7u, 4096u, 1u << 20}) {
    cBodyStream stream;
    stream.Compress();
    for (std::size_t at = 0; at < text.size(); at += 50'000) stream.Push(text.substr(at, 50'000));
    stream.Finish();
    std::string packed;
    while (stream.HasBytes()) packed += Take(stream, step);
    EXPECT_TRUE(stream.IsAtEnd());
    EXPECT_EQ(Unpack(packed), text) << step;
    EXPECT_EQ(stream.TakePassed(), (text.size() + 49'999) / 50'000);
    EXPECT_LT(packed.size(), text.size() / 2);
  }
}

TEST(BodyStream, OfNothingIsAWholeCompressedNothing) {
  cBodyStream stream;
  stream.Compress();
  stream.Finish();
  const std::string packed = stream.TakeAll();
  EXPECT_FALSE(packed.empty());
  EXPECT_EQ(Unpack(packed), "");
  EXPECT_TRUE(stream.IsAtEnd());
}
