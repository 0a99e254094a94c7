// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <tav/service/db_ctrl_protocol.h>
#include <tavctl/protocol_page.h>

#include <fstream>
#include <sstream>

namespace {

TEST(ProtocolPage, IsWhatTheDocumentsShow) {
  std::ifstream file(TAV_SOURCE_DIR "/docs/protocol/data.md");
  ASSERT_TRUE(file) << "docs/protocol/data.md is missing; make it with: tavctl protocol data > docs/protocol/data.md";
  std::stringstream page;
  page << file.rdbuf();
  EXPECT_EQ(page.str(), tav::ctl::ProtocolPage(tav::db_ctrl::kProtocol))
      << "refresh it with: tavctl protocol data > docs/protocol/data.md";
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
