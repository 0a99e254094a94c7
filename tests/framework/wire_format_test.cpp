// SPDX-License-Identifier: Apache-2.0
// The bytes on the wire, as docs/wire-format.md shows them.
#include <gtest/gtest.h>

#include "tests/support/raw_socket.h"
#include "tests/support/scm_world.h"

namespace {

std::string Hex(const std::string& bytes) {
  vorn::cData data(bytes.data(), bytes.size());
  return data.ToString(0);
}

TEST(WireFormat, TheWorkedExampleIsWhatIsSent) {
  cTempFolder directory;
  cRecordingService service("test", directory.GetPath());
  cRecordingServer server(&service, "data");
  cRawSocket peer;
  ASSERT_TRUE(peer.Connect(service.GetSocketPath("data")));
  peer.Write(cRawSocket::Hello());
  ASSERT_TRUE(PollUntil(service, [&] { return server.connects == 1; }));
  PollUntilIdle(service);
  peer.Read();
  vorn::cMsg msg(0x5101e);
  msg.Record().AppendTextPar("driver", "ehzif");
  server.GetChannels()[0]->Send(msg);
  PollUntilIdle(service);
  EXPECT_EQ(Hex(peer.Read()),
            "00 00 00 26 00 05 10 1E 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
            "66 64 72 69 76 65 72 01 65 65 68 7A 69 66");
}

TEST(WireFormat, EveryTypeHasTheFormOfItsRow) {
  const auto form = [](auto append) {
    vorn::cRecord record;
    append(record);
    return Hex(std::string(record.GetBytes()));
  };
  using Record = vorn::cRecord;
  EXPECT_EQ(form([](Record& r) { r.AppendTextPar("a", "\xC3\xA4"); }), "61 61 01 62 C3 A4");
  EXPECT_EQ(form([](Record& r) { r.AppendTextPar("a", "\xE4"); }), "61 61 01 41 E4");
  EXPECT_EQ(form([](Record& r) { r.AppendTextPar("a", nullptr); }), "61 61 01 F6");
  EXPECT_EQ(form([](Record& r) { r.AppendTextPar("a", ""); }), "61 61 01 60");
  EXPECT_EQ(form([](Record& r) { r.AppendIntPar("a", -2147483647 - 1); }), "61 61 02 3A 7F FF FF FF");
  EXPECT_EQ(form([](Record& r) { r.AppendIntPar("a", 23); }), "61 61 02 17");
  EXPECT_EQ(form([](Record& r) { r.AppendUIntPar("a", 24); }), "61 61 03 18 18");
  EXPECT_EQ(form([](Record& r) { r.AppendUIntPar("a", 256); }), "61 61 03 19 01 00");
  EXPECT_EQ(form([](Record& r) { r.AppendUInt64Par("a", 1ull << 32); }), "61 61 04 1B 00 00 00 01 00 00 00 00");
  EXPECT_EQ(form([](Record& r) { r.AppendBoolPar("a", true); }), "61 61 05 F5");
  EXPECT_EQ(form([](Record& r) { r.AppendBoolPar("a", false); }), "61 61 05 F4");
  EXPECT_EQ(form([](Record& r) { r.AppendRecordPar("a", Record()); }), "61 61 06 40");
  EXPECT_EQ(form([](Record& r) {
              Record nested;
              nested.AppendBoolPar("b", true);
              r.AppendRecordPar("a", nested);
            }),
            "61 61 06 44 61 62 05 F5");
  EXPECT_EQ(form([](Record& r) { r.AppendTimePar("a", vorn::cTime::FromSeconds(1393675200, true)); }),
            "61 61 07 1A 53 11 CB C0");
  EXPECT_EQ(form([](Record& r) { r.AppendUuidPar("a", vorn::cUuid()); }),
            "61 61 08 50 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00");
  EXPECT_EQ(form([](Record& r) { r.AppendDataPar("a", vorn::cData("\x01\xFF", 2)); }), "61 61 09 42 01 FF");
}

}  // namespace
