// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <tav/service/db_ctrl_protocol.h>
#include <tavctl/protocol_page.h>
#include <tavctl/protocols.h>

#include <filesystem>
#include <fstream>
#include <set>
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

TEST(ProtocolPage, IsThereForEveryTable) {
  std::set<std::string> tables, known;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(TAV_SOURCE_DIR "/tav")) {
    if (!entry.path().filename().string().ends_with("_protocol.h")) continue;
    std::ifstream file(entry.path());
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    const std::string table = "cProtocol kProtocol(\"";
    for (std::size_t at = text.find(table); at != std::string::npos; at = text.find(table, at + 1)) {
      const std::size_t name = at + table.size();
      tables.insert(text.substr(name, text.find('"', name) - name));
    }
  }
  for (const tav::cProtocol* protocol : tav::ctl::kProtocols) known.insert(std::string(protocol->GetService()));
  EXPECT_EQ(known, tables) << "tavctl knows the table of every service";
}

TEST(ProtocolPage, NamesEveryMessageAndParameter) {
  for (const tav::cProtocol* protocol : tav::ctl::kProtocols) {
    const std::string page = tav::ctl::ProtocolPage(*protocol);
    for (const tav::cProtocolMessage& message : *protocol) {
      EXPECT_NE(page.find("| " + std::string(message.name) + " |"), std::string::npos) << message.name;
      for (std::size_t i = 0; i < message.CountParameters(); ++i)
        EXPECT_NE(page.find("| `" + std::string(message.parameters[i].key.name) + "` |"), std::string::npos);
    }
  }
}

}  // namespace
