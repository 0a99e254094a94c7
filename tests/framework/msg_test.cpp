// SPDX-License-Identifier: Apache-2.0
#include <tav/framework/msg.h>

#include <gtest/gtest.h>

using vorn::cMsg;
using vorn::cUuid;

TEST(Msg, StartsWithTypeZeroANilIdentifierAndNoChannel) {
  const cMsg msg;
  EXPECT_EQ(msg.GetType(), 0u);
  EXPECT_FALSE(msg.GetId().IsValid());
  EXPECT_TRUE(msg.Record().IsEmpty());
  EXPECT_EQ(msg.GetReplyChannel(), nullptr);
}

TEST(Msg, KeepsTypeIdentifierAndRecord) {
  cUuid id;
  id.Create();
  cMsg msg(0x51000);
  msg.SetId(id);
  msg.Record().AppendUIntPar("version", 1);
  EXPECT_EQ(msg.GetType(), 0x51000u);
  EXPECT_EQ(msg.GetId(), id);
  EXPECT_EQ(msg.Record().GetUIntPar("version"), 1u);
  msg.SetType(0x51001);
  EXPECT_EQ(msg.GetType(), 0x51001u);
}

TEST(Msg, IsAValue) {
  cMsg msg(1);
  msg.Record().AppendTextPar("a", "b");
  cMsg copy = msg;
  copy.Record().SetTextPar("a", "c");
  copy.SetType(2);
  EXPECT_EQ(msg.GetType(), 1u);
  EXPECT_EQ(msg.Record().GetTextPar("a"), "b");
}

TEST(Msg, PrintsTypeIdentifierAndRecord) {
  cMsg msg(0x51002);
  cUuid id;
  ASSERT_TRUE(id.FromString("00112233-4455-6677-8899-aabbccddeeff"));
  msg.SetId(id);
  msg.Record().AppendTextPar("reason", "full");
  EXPECT_EQ(msg.ToString(), "type=0x51002 id=00112233-4455-6677-8899-aabbccddeeff\n  reason=full\n");
}

TEST(Msg, PrintsTheSameWithAReplyChannel) {
  class cDeafChannel : public vorn::cScmChannel {
   public:
    int Send(const cMsg&) override { return 0; }
    void Close() override {}
    bool IsOpen() const override { return false; }
    const vorn::cScmPeer& GetPeer() const override { return m_peer; }

   private:
    vorn::cScmPeer m_peer;
  };
  cMsg msg(7);
  const std::string before = msg.ToString();
  msg.SetReplyChannel(std::make_shared<cDeafChannel>());
  EXPECT_NE(msg.GetReplyChannel(), nullptr);
  EXPECT_EQ(msg.ToString(), before);
}
