// SPDX-License-Identifier: Apache-2.0
#include <gateway/web/front/listen_socket.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tav::gateway::web {

TEST(ListenSocket, ReadsAnAddress) {
  struct cCase {
    const char* text;
    const char* host;
    unsigned int port;
    const char* url;
  };
  const cCase kCases[] = {
      {"127.0.0.1:8080", "127.0.0.1", 8080, "http://127.0.0.1:8080/"},
      {"0.0.0.0:0", "0.0.0.0", 0, "http://0.0.0.0:0/"},
      {"[::1]:65535", "::1", 65535, "http://[::1]:65535/"},
      {"[::]:80", "::", 80, "http://[::]:80/"},
  };
  for (const cCase& each : kCases) {
    cListenAddress address;
    std::string error;
    EXPECT_TRUE(ReadListenAddress(each.text, address, error)) << error;
    EXPECT_EQ(address.host, each.host);
    EXPECT_EQ(address.port, each.port);
    EXPECT_EQ(MakeUrl(address, false), each.url);
  }
}

TEST(ListenSocket, RefusesWhatIsNoAddress) {
  for (const char* text :
       {"", ":", "8080", ":8080", "127.0.0.1", "127.0.0.1:", "127.0.0.1:65536", "127.0.0.1:-1", "127.0.0.1:80x",
        "127.0.0.1: 80", "localhost:80", "::1:80", "[::1]", "[::1:80", "[127.0.0.1]:80", "256.0.0.1:80", "[]:80"}) {
    cListenAddress address;
    std::string error;
    EXPECT_FALSE(ReadListenAddress(text, address, error)) << text;
    EXPECT_EQ(error, std::string("expected ADDRESS:PORT, such as 127.0.0.1:8080 or [::1]:8080, found '") + text + "'");
  }
}

TEST(ListenSocket, TellsWhatStandsInTheWay) {
  std::string error;
  const cDescriptor first = Listen({"127.0.0.1", 0}, error);
  ASSERT_TRUE(first.IsOpen()) << error;
  EXPECT_FALSE(Listen({"127.0.0.1", PortOf(first.Get())}, error).IsOpen());
  EXPECT_EQ(error, "web pages cannot be served at http://127.0.0.1:" + std::to_string(PortOf(first.Get())) +
                       "/: Address already in use");
}

}  // namespace tav::gateway::web
