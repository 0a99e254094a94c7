// SPDX-License-Identifier: Apache-2.0
// Real processes all the way: a rule that is set with tavctl names what the driver reads next, and what the driver
// tells about itself is seen with tavctl.
#include <tests/driver/ehzif/ehzif_fixture.h>
#include <tests/driver/input/pseudo_line.h>

namespace tav::sml {
namespace {

using testing::HasSubstr;

class RulesAndStatus : public EhzifProcess {
 protected:
  // What tavctl writes goes to a file; its exit code.
  int Ctl(const std::string& arguments) const {
    const std::string command =
        std::string(TAVCTL) + " --dir " + Directory() + " " + arguments + " > " + m_folder.File("ctl") + " 2>&1";
    return cChildProcess({"/bin/sh", "-c", command}).Wait().value_or(-1);
  }
  bool AwaitCtl(const std::string& arguments, const std::string& text) const {
    using namespace std::chrono;
    for (const auto end = steady_clock::now() + seconds(60); steady_clock::now() < end;)
      if (Ctl(arguments) == 0 && Load("ctl").find(text) != std::string::npos) return true;
    return false;
  }
  // A telegram on the line with a value of its own; whether it is stored, the value without a shipped rule by this
  // name.
  bool StoresAs(const std::string& obis) {
    const std::size_t before = Stored(kMeter, "1-0:1.8.0").size();
    const std::size_t known = Stored(kMeter, obis).size();
    for (int tries = 0; tries < 200; ++tries) {
      const std::int64_t value = ++m_value;
      EXPECT_TRUE(m_line->Write(
          Telegram({{PackObis(1, 0, 1, 8, 0), 30, -1, value}, {PackObis(1, 1, 77, 66, 5), 30, -1, value}})));
      // What is written before the line is open is lost.
      for (int looks = 0; looks < 50; ++looks)
        if (Stored(kMeter, "1-0:1.8.0").size() > before) return Stored(kMeter, obis).size() > known;
    }
    ADD_FAILURE() << "nothing is stored: " << Said();
    return false;
  }
  // Until that holds, telegram by telegram.
  bool AwaitStoresAs(const std::string& obis, bool wanted) {
    for (int telegrams = 0; telegrams < 100; ++telegrams)
      if (StoresAs(obis) == wanted) return true;
    return false;
  }

  std::unique_ptr<cPseudoLine> m_line;
  std::int64_t m_value = 0;
};

TEST_F(RulesAndStatus, ARuleThatIsSetNamesWhatIsReadNext) {
  StartGatewayWithAll();
  m_line = std::make_unique<cPseudoLine>(m_folder.File("line"));
  Start({"--input", m_folder.File("line")});
  ASSERT_TRUE(AwaitStoresAs("1-1:77.66.5", false)) << "the shipped rules have come, and do not have it";
  EXPECT_FALSE(StoresAs("1-0:77.66.5"));
  ASSERT_EQ(Ctl("obis set 5 --obis 1-0:77.66.5 --name House --map protocol=dlms"), 0) << Load("ctl");
  EXPECT_TRUE(AwaitStoresAs("1-0:77.66.5", true)) << "without a restart";
  ASSERT_EQ(Ctl("obis delete 5"), 0) << Load("ctl");
  EXPECT_TRUE(AwaitStoresAs("1-0:77.66.5", false));
  m_driver->Signal(SIGTERM);
  EXPECT_EQ(End(), 0) << Said();
}

TEST_F(RulesAndStatus, TheDriverShowsWhenItReadLast) {
  StartGatewayWithAll();
  Start({"--input", "sim", "--period", "1"});
  ASSERT_TRUE(AwaitStored(1)) << Said();
  ASSERT_TRUE(AwaitCtl("status ehzif", kMeter + ".last-reading")) << Load("ctl");
  EXPECT_THAT(Load("ctl"), HasSubstr("ehzif-SIM.readings-acknowledged"));
  m_driver->Signal(SIGTERM);
  EXPECT_EQ(End(), 0) << Said();
  ASSERT_TRUE(AwaitCtl("status ehzif-SIM.connection", " gone "));
}

}  // namespace
}  // namespace tav::sml
