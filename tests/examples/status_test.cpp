// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <memory>

#include <tav/service/status_protocol.h>
#include <tests/support/child_process.h>
#include <tests/support/parameters.h>
#include <tests/support/scm_world.h>

using testing::ElementsAre;

namespace {

// The example as a process of its own, and a status service for it.
class ExampleStatus : public testing::Test {
 protected:
  void Start(const std::vector<std::string>& more) {
    std::vector<std::string> arguments = {EXAMPLE_STATUS, m_folder.GetPath()};
    arguments.insert(arguments.end(), more.begin(), more.end());
    m_process = std::make_unique<cChildProcess>(arguments, std::vector<std::string>(), m_folder.File("said"));
    ASSERT_TRUE(PollUntil(m_service, [&] { return !m_server.messages.empty(); }));
  }
  void Tell(unsigned int type, const std::vector<std::pair<std::string, std::string>>& values) {
    vorn::cMsg msg(type);
    for (const auto& [name, value] : values) msg.Record().AppendTextPar(name, value);
    ASSERT_EQ(m_server.GetChannels().front()->Send(msg), 1);
  }
  // Whether the example comes to have said exactly that.
  bool Says(const std::string& text) {
    return PollUntil(m_service, [&] { return Said() == text; });
  }
  std::string Said() const {
    std::ifstream file(m_folder.File("said"));
    return {std::istreambuf_iterator<char>(file), {}};
  }

  cTempFolder m_folder;
  vorn::cScmService m_service{"status", m_folder.GetPath()};
  cRecordingServer m_server{&m_service, "status"};
  std::unique_ptr<cChildProcess> m_process;
};

}  // namespace

TEST_F(ExampleStatus, PublishesItsValue) {
  Start({"pump.state", "idle"});
  EXPECT_EQ(m_server.messages.front().GetType(), tav::status::eFullSet);
  EXPECT_THAT(Parameters(m_server.messages.front().Record()), ElementsAre("pump.state text=idle"));
}

TEST_F(ExampleStatus, HasAValueOfItsOwn) {
  Start({});
  EXPECT_THAT(Parameters(m_server.messages.front().Record()), ElementsAre("example.state text=running"));
}

TEST_F(ExampleStatus, PrintsTheValuesOfOthersAsTheyChange) {
  Start({"pump.state", "idle"});
  Tell(tav::status::eValues, {{"modem.state", "up"}, {"pump.state", "idle"}});
  EXPECT_TRUE(Says("modem.state=up\n")) << Said();
  Tell(tav::status::eValues, {{"modem.state", "up"}, {"wan.state", "down"}});
  EXPECT_TRUE(Says("modem.state=up\nwan.state=down\n")) << Said();
  Tell(tav::status::eReplace, {{"pump.state", "idle"}, {"wan.state", "up"}});
  EXPECT_TRUE(Says("modem.state=up\nwan.state=down\nwan.state=up\nmodem.state is gone\n")) << Said();
}

TEST_F(ExampleStatus, EndsWhenItIsAskedTo) {
  Start({});
  m_process->Signal(SIGTERM);
  EXPECT_EQ(m_process->Wait(), 0);
}
