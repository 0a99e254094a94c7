// SPDX-License-Identifier: Apache-2.0
#include <tavctl/explain_command.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <gateway/driver/sml/sml_simulator.h>
#include <tests/tavctl/tavctl_world.h>

namespace tav::ctl {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class ExplainCommand : public TavctlWorld {
 protected:
  static std::string Telegram() { return sml::cSmlSimulator({}).Telegram(kNoon + 100'000'000); }
  static std::string BadTelegram() {
    std::string telegram = Telegram();
    telegram[telegram.size() / 2] = static_cast<char>(telegram[telegram.size() / 2] ^ 1);
    return telegram;
  }
  std::string File(const std::string& bytes) {
    std::ofstream(m_folder.File("capture"), std::ios::binary) << bytes;
    return m_folder.File("capture");
  }
};

TEST_F(ExplainCommand, ShowsWhatTheBytesMean) {
  const cOutput output = Run({"explain", File(Telegram())});
  EXPECT_EQ(output.exit, eExitDone);
  EXPECT_EQ(output.err, "");
  EXPECT_THAT(output.out, HasSubstr("1-0:1.8.0*255"));
}

TEST_F(ExplainCommand, IsOneDocumentForPrograms) {
  const auto document = Run({"--json", "explain", File(Telegram() + Telegram())}).Json();
  EXPECT_EQ(document["kind"], "sml");
  EXPECT_EQ(document["good"], 2);
  EXPECT_EQ(document["telegrams"].size(), 2u);
}

TEST_F(ExplainCommand, ReadsStandardInput) {
  EXPECT_EQ(Run({"explain", "-"}, Telegram()).out, Run({"explain", File(Telegram())}).out);
  const cOutput output = Run({"explain", "-"}, BadTelegram());
  EXPECT_EQ(output.exit, eExitNegative);
  EXPECT_THAT(output.err, StartsWith("tavctl: standard input: 1 bad telegram"));
}

TEST_F(ExplainCommand, SaysWhereABadTelegramIs) {
  const std::string good = Telegram();
  const cOutput output = Run({"--json", "explain", File(good + BadTelegram())});
  EXPECT_EQ(output.exit, eExitNegative);
  EXPECT_EQ(output.err, "tavctl: " + m_folder.File("capture") + ": 1 bad telegram(s), the first one at offset " +
                            std::to_string(good.size()) + "\n");
  EXPECT_EQ(output.Json()["bad"], 1) << "the document is there all the same";
}

TEST_F(ExplainCommand, FailsWhenThereIsNoTelegram) {
  for (const char* bytes : {"", "hello", "1b1b1b1b01010101"}) {
    const cOutput output = Run({"--json", "explain", "-"}, bytes);
    EXPECT_EQ(output.exit, eExitNegative) << bytes;
    EXPECT_TRUE(output.Json().is_object());
    EXPECT_THAT(output.err, StartsWith("tavctl: standard input: ")) << bytes;
  }
}

TEST_F(ExplainCommand, SaysWhichFileCannotBeRead) {
  EXPECT_EQ(Run({"explain", m_folder.File("none")}).err,
            "tavctl: " + m_folder.File("none") + ": cannot be read: No such file or directory\n");
  EXPECT_EQ(Run({"explain", Directory()}).err, "tavctl: " + Directory() + ": is a directory\n");
  EXPECT_EQ(Run({"explain", Directory()}).exit, eExitFile);
}

TEST_F(ExplainCommand, RefusesWhatIsTooLargeForACapture) {
  const std::string file = File("");
  std::filesystem::resize_file(file, cExplainCommand::kMaxCapture + 1);
  const cOutput output = Run({"explain", file});
  EXPECT_EQ(output.exit, eExitFile);
  EXPECT_THAT(output.err, HasSubstr("more than 67108864 bytes"));
}

// Captures of real meters, in the folder that the environment variable TAV_TELEGRAMS names: every one gives a document,
// and one with a bad telegram does not pass for good.
TEST_F(ExplainCommand, ExplainsCapturesOfRealMeters) {
  const char* const folder = std::getenv("TAV_TELEGRAMS");
  if (folder == nullptr) GTEST_SKIP() << "TAV_TELEGRAMS does not name a folder of captured telegrams";
  std::size_t captures = 0;
  for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::path(folder) / "sml")) {
    if (entry.path().extension() != ".bin" && entry.path().extension() != ".hex") continue;
    ++captures;
    const cOutput output = Run({"--json", "explain", entry.path()});
    const auto document = output.Json();
    EXPECT_EQ(document["kind"], "sml") << entry.path();
    const bool hasBad = document["bad"] != 0 || document["good"] == 0;
    EXPECT_TRUE(output.exit == eExitNegative || (output.exit == eExitDone && !hasBad)) << entry.path();
  }
  EXPECT_NE(captures, 0u);
}

}  // namespace
}  // namespace tav::ctl
