// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <tav/service/db_ctrl_protocol.h>
#include <tavctl/protocol_page.h>
#include <tavctl/protocols.h>

#include <fstream>
#include <sstream>

namespace {

TEST(ProtocolPage, IsWhatTheDocumentsShow) {
  for (const tav::cProtocol* protocol : tav::ctl::kProtocols) {
    const std::string service(protocol->GetService());
    const std::string command = "tavctl protocol " + service + " > docs/protocol/" + service + ".md";
    std::ifstream file(TAV_SOURCE_DIR "/docs/protocol/" + service + ".md");
    EXPECT_TRUE(file) << "there is no such page; make it with: " << command;
    std::stringstream page;
    page << file.rdbuf();
    EXPECT_EQ(page.str(), tav::ctl::ProtocolPage(*protocol)) << "refresh it with: " << command;
  }
}

TEST(ProtocolPage, NamesEveryMessageAndParameter) {
  const std::string page = tav::ctl::ProtocolPage(tav::db_ctrl::kProtocol);
  for (const tav::cProtocolMessage& message : tav::db_ctrl::kProtocol) {
    EXPECT_NE(page.find("| " + std::string(message.name) + " |"), std::string::npos) << message.name;
    for (std::size_t i = 0; i < message.CountParameters(); ++i)
      EXPECT_NE(page.find("| `" + std::string(message.parameters[i].key.name) + "` |"), std::string::npos);
  }
}

}  // namespace
