// SPDX-License-Identifier: Apache-2.0
// The script is tried in the shell it is for.
#include <tavctl/completion_command.h>

#include <filesystem>
#include <fstream>

#include <tests/support/child_process.h>
#include <tests/tavctl/obis/rules_world.h>

namespace tav::ctl {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

class CompletionCommand : public TavctlWithGateway {
 protected:
  // What bash offers for the last word of a line.
  std::vector<std::string> Offers(const std::string& words) {
    std::ofstream(m_folder.File("script")) << Run({"completion", "bash"}).out;
    const std::string line = "PATH=" + std::filesystem::path(TAVCTL).parent_path().string() + ":$PATH; source " +
                             m_folder.File("script") + "; COMP_WORDS=(" + words +
                             "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _tavctl; printf '%s\\n' \"${COMPREPLY[@]}\"";
    cChildProcess bash({"/bin/bash", "-c", line}, {}, m_folder.File("offers"));
    std::optional<int> exit;
    EXPECT_TRUE(PollUntil(m_host, [&] { return (exit = bash.Wait(0)).has_value(); }));
    EXPECT_EQ(exit, 0);
    std::vector<std::string> offers;
    std::ifstream in(m_folder.File("offers"));
    for (std::string offer; std::getline(in, offer);)
      if (!offer.empty()) offers.push_back(offer);
    return offers;
  }
  std::string InDirectory(const std::string& words) const { return "tavctl --dir " + Directory() + " " + words; }
};

TEST_F(CompletionCommand, OffersEveryCommand) {
  const std::vector<std::string> offers = Offers("tavctl ''");
  for (const auto& command : MakeCommands()) EXPECT_THAT(offers, Contains(command->GetName()));
  EXPECT_THAT(Offers("tavctl mete"), ElementsAre("meter", "meter-status", "meters"));
}

TEST_F(CompletionCommand, OffersWhatStandsBehindAnAction) {
  EXPECT_THAT(Offers("tavctl template e"), ElementsAre("export"));
  EXPECT_THAT(Offers("tavctl meter show --s"), ElementsAre("--secrets"));
  EXPECT_THAT(Offers("tavctl meter set --s"), IsEmpty());
  EXPECT_THAT(Offers("tavctl device led m"), ElementsAre("meter-1", "meter-2"));
  EXPECT_THAT(Offers("tavctl device led wan bl"), ElementsAre("blink"));
  EXPECT_THAT(Offers("tavctl device modem start --a"), ElementsAre("--apn"));
  EXPECT_THAT(Offers("tavctl device re"), ElementsAre("relay"));
  cOutput set = Run({"interface", "set", "SIM", "enabled=true"});
  ASSERT_EQ(set.exit, eExitDone) << set.err;
  EXPECT_THAT(Offers(InDirectory("interface show S")), ElementsAre("SIM"));
}

TEST_F(CompletionCommand, OffersTheOptionsOfACommand) {
  EXPECT_THAT(Offers("tavctl values M --"), AllOf(Contains("--obis"), Contains("--from"), Contains("--to"),
                                                  Contains("--limit"), Contains("--json"), Not(Contains("--secrets"))));
  EXPECT_THAT(Offers("tavctl monitor --s"), ElementsAre("--secrets"));
  EXPECT_THAT(Offers("tavctl values M --from ''"), IsEmpty()) << "a time is the user's";
  EXPECT_THAT(Offers("tavctl completion ''"), Contains("bash"));
}

TEST_F(CompletionCommand, OffersWhatIsInTheGateway) {
  Store(Reading("1EMH0001", kNoon, {{"1-0:1.8.0", "5"}}));
  SetValue("ehzif", "a", "b");
  EXPECT_THAT(Offers(InDirectory("last 1")), ElementsAre("1EMH0001"));
  EXPECT_THAT(Offers(InDirectory("monitor d")), ElementsAre("data"));
  EXPECT_THAT(Offers(InDirectory("store e")), ElementsAre("ehzif"));
}

TEST_F(CompletionCommand, OffersTheIdsOfRules) {
  cRuleServer rules(&m_host);
  ASSERT_TRUE(rules.map.Add({12, "Heat", "6-0:1.0.0", "protocol=dlms"}));
  ASSERT_TRUE(rules.map.Add({1000, "Energy", "1-0:1.8.0", "protocol=dlms"}));
  EXPECT_THAT(Offers(InDirectory("obis show ''")), AllOf(Contains("12"), Contains("1000")));
  EXPECT_THAT(Offers(InDirectory("obis delete 10")), ElementsAre("1000"));
  EXPECT_THAT(Offers("tavctl obis ex"), ElementsAre("export"));
}

TEST_F(CompletionCommand, NeverLetsTheShellRunWhatAMeterIsCalled) {
  Store(Reading("$(touch${IFS}" + m_folder.File("run") + ")", kNoon, {{"1-0:1.8.0", "5"}}));
  const std::vector<std::string> offers = Offers(InDirectory("last ''"));
  EXPECT_THAT(offers, Contains(testing::StartsWith("\\$\\(touch"))) << "quoted for the command line";
  EXPECT_FALSE(std::filesystem::exists(m_folder.File("run")));
}

TEST_F(CompletionCommand, OffersFilesToExplain) {
  std::ofstream(m_folder.File("capture.bin")) << "x";
  EXPECT_THAT(Offers("tavctl explain " + m_folder.File("cap")), ElementsAre(m_folder.File("capture.bin")));
  EXPECT_THAT(Offers("tavctl explain --j"), ElementsAre("--json"));
}

TEST_F(CompletionCommand, KnowsOneShellAndNoJson) {
  EXPECT_EQ(Run({"completion", "fish"}).err, "tavctl: completion: SHELL: expected bash, found \"fish\"\n");
  EXPECT_EQ(Run({"completion", "fish"}).exit, eExitUsage);
  EXPECT_EQ(Run({"--json", "completion", "bash"}).exit, eExitUsage);
}

}  // namespace
}  // namespace tav::ctl
