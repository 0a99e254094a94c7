// SPDX-License-Identifier: Apache-2.0
#include <tavctl/socket_probe.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

#include <tests/support/raw_socket.h>
#include <tests/support/temp_folder.h>

namespace tav::ctl {
namespace {

using testing::HasSubstr;

class SocketProbe : public testing::Test {
 protected:
  cTempFolder folder;
};

TEST_F(SocketProbe, FindsSomebodyWhoListens) {
  cRawSocket listener;
  ASSERT_TRUE(listener.Listen(folder.File("data.sock")));
  EXPECT_EQ(ProbeSocket(folder.File("data.sock")).state, eSocket::Listening);
}

TEST_F(SocketProbe, KnowsASocketThatWasLeftBehind) {
  {
    cRawSocket listener;
    ASSERT_TRUE(listener.Listen(folder.File("data.sock")));
  }
  const cProbe probe = ProbeSocket(folder.File("data.sock"));
  EXPECT_EQ(probe.state, eSocket::Dead);
  EXPECT_THAT(probe.text, HasSubstr("nobody listens on " + folder.File("data.sock")));
}

TEST_F(SocketProbe, SaysWhenThereIsNone) {
  std::ofstream(folder.File("file")) << "x";
  for (const char* name : {"data.sock", "no/data.sock", "file/data.sock"}) {
    const cProbe probe = ProbeSocket(folder.File(name));
    EXPECT_EQ(probe.state, eSocket::Missing) << name;
    EXPECT_THAT(probe.text, HasSubstr(folder.File(name)));
  }
}

TEST_F(SocketProbe, SaysWhyItCannotBeUsed) {
  const cProbe probe = ProbeSocket(folder.File(std::string(200, 'x')));
  EXPECT_EQ(probe.state, eSocket::Unusable);
  EXPECT_THAT(probe.text, HasSubstr("too long"));
}

}  // namespace
}  // namespace tav::ctl
