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

// An answer of a heat meter with one record.
const std::string kMBus = "68 15 15 68 08 05 72 46 01 95 44 18 4E 34 04 54 10 00 00 0C 13 27 04 85 02 72 16";

class ExplainCommand : public TavctlWorld {
 protected:
  static std::string Telegram() { return sml::cSmlSimulator({}).Telegram(kNoon + 100'000'000); }
  static std::string BadTelegram() {
    std::string telegram = Telegram();
    telegram[telegram.size() / 2] = static_cast<char>(telegram[telegram.size() / 2] ^ 1);
    return telegram;
  }
  static std::string BytesOf(const std::string& digits) {
    vorn::cData data;
    return vorn::cData::FromHex(digits, data) ? data.AsText() : "";
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

TEST_F(ExplainCommand, KnowsMBusByItsFrames) {
  for (const std::string& capture : {kMBus, BytesOf(kMBus), "noise" + BytesOf(kMBus), std::string("10 5B 05 60 16")}) {
    const cOutput output = Run({"--json", "explain", "-"}, capture);
    EXPECT_EQ(output.exit, eExitDone) << output.err;
    EXPECT_EQ(output.Json()["kind"], "mbus") << capture;
  }
  EXPECT_EQ(Run({"--json", "explain", "-"}, BytesOf(kMBus) + Telegram()).Json()["kind"], "sml");
  EXPECT_THAT(Run({"explain", "-"}, kMBus).out, HasSubstr("record 0: Volume = 2850.427 m³\n"));
}

TEST_F(ExplainCommand, NamesValuesReadOverMBusByRules) {
  std::ofstream(m_folder.File("rules.toml")) << "[[rule]]\nid = 7\nname = \"Volume\"\nobis = \"6-0:1.0.0\"\n"
                                                "map = \"protocol=mbus,medium=h,dif=0C,vif=13\"\n";
  const cOutput output = Run({"--json", "explain", "-", "--rules", m_folder.File("rules.toml")}, kMBus);
  EXPECT_EQ(output.err, "");
  EXPECT_EQ(output.Json()["telegrams"][0]["values"][0]["rule"]["obis"], "6-0:1.0.0");
}

TEST_F(ExplainCommand, SaysWhichByteOfAFrameIsWrong) {
  std::string bad = BytesOf(kMBus);
  bad[bad.size() - 2] = 0;
  const cOutput output = Run({"explain", "-"}, BytesOf(kMBus) + bad);
  EXPECT_EQ(output.exit, eExitNegative);
  EXPECT_EQ(
      output.err,
      "tavctl: standard input: 1 bad telegram(s), the first one at offset 27, byte 25: the checksum is wrong (00)\n");
  const cOutput cut = Run({"explain", "-"}, bad.substr(0, 22));
  EXPECT_EQ(cut.exit, eExitNegative);
  EXPECT_EQ(cut.err,
            "tavctl: standard input: no whole telegram in it, the first one at offset 0, byte 22: the frame ends too "
            "early\n");
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

TEST_F(ExplainCommand, TakesCapturesOfRealMBusMetersForMBus) {
  const char* const folder = std::getenv("TAV_TELEGRAMS");
  if (folder == nullptr) GTEST_SKIP() << "TAV_TELEGRAMS does not name a folder of captured telegrams";
  std::size_t captures = 0;
  for (const auto& entry :
       std::filesystem::directory_iterator(std::filesystem::path(folder) / "mbus" / "test-frames")) {
    if (entry.path().extension() != ".hex") continue;
    ++captures;
    const cOutput output = Run({"--json", "explain", entry.path()});
    EXPECT_EQ(output.exit, eExitDone) << output.err;
    EXPECT_EQ(output.Json()["kind"], "mbus") << entry.path();
  }
  EXPECT_NE(captures, 0u);
}

}  // namespace
}  // namespace tav::ctl
