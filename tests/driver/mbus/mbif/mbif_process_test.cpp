// SPDX-License-Identifier: Apache-2.0
// Real processes all the way: a gateway, the driver, a simulated bus in a process of its own, and tavctl.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

#include <tests/driver/driver_process_fixture.h>

namespace tav::mbus {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::IsSupersetOf;
using testing::Not;
using testing::SizeIs;

class MbifProcess : public DriverProcess {
 protected:
  MbifProcess() : DriverProcess(TAV_GATEWAY, MBIF, "mbif") {}

  // Meters of each kind from address 1 on, behind the link "bus"; fast, as tests have no day.
  void StartBus(std::vector<std::string> options = {}) {
    options.insert(options.begin(), {MBUSSIM, "--link", m_folder.File("bus"), "--baud", "9600"});
    m_bus = std::make_unique<cChildProcess>(options, std::vector<std::string>{}, m_folder.File("bus.said"));
    using namespace std::chrono;
    for (const auto end = steady_clock::now() + seconds(30);
         Load("bus.said").find("\n") == std::string::npos && steady_clock::now() < end;)
      ASSERT_FALSE(m_bus->Wait(10)) << Load("bus.said");
  }
  // The identification of the meter at that place of the list that the bus printed.
  std::string IdOf(unsigned int address) const {
    std::istringstream lines(Load("bus.said"));
    std::string first, second;
    for (std::string line; std::getline(lines, line);) {
      std::istringstream words(line);
      if (words >> first >> second && first == std::to_string(address)) return second;
    }
    return "none";
  }
  std::vector<std::string> OnBus(std::vector<std::string> options) const {
    options.insert(options.begin(), {"--input", m_folder.File("bus"), "--baud", "9600"});
    return options;
  }
  std::vector<std::string> ObisOf(const std::string& meter) {
    std::vector<std::string> names;
    for (const cStored& stored : Stored(meter, {})) names.push_back(stored.obis);
    return names;
  }
  int Ctl(const std::string& arguments) const {
    const std::string command =
        std::string(TAVCTL) + " --dir " + Directory() + " " + arguments + " > " + m_folder.File("ctl") + " 2>&1";
    return cChildProcess({"/bin/sh", "-c", command}).Wait().value_or(-1);
  }

  std::unique_ptr<cChildProcess> m_bus;
};

TEST_F(MbifProcess, StoresWhatTheMetersOfABusSay) {
  StartGateway();
  StartBus();
  ASSERT_EQ(Run(OnBus({"--meter", "1", "--meter", "3", "--meter", IdOf(5), "--no-rules", "--once"})), 0) << Said();
  EXPECT_THAT(Meters(), IsSupersetOf({IdOf(1), IdOf(3), IdOf(5)}));
  EXPECT_THAT(ObisOf(IdOf(1)), IsSupersetOf({"mbus:0C/06", "mbus:0C/13"}));
  EXPECT_EQ(Count("due"), 3u);
  EXPECT_EQ(Count("read"), 3u);
  EXPECT_EQ(Count("acknowledged"), 3u);
  EXPECT_EQ(Count("missing"), 0u);
}

TEST_F(MbifProcess, NamesThemByTheRulesThatAGatewayShips) {
  StartGatewayWithAll();
  ASSERT_EQ(Ctl("obis import --defaults"), 0) << Load("ctl");
  StartBus();
  ASSERT_EQ(Run(OnBus({"--meter", "1", "--meter", "3", "--once"})), 0) << Said();
  EXPECT_THAT(ObisOf(IdOf(1)), IsSupersetOf({"6-0:1.0.0", "6-0:2.0.0"}));
  EXPECT_THAT(ObisOf(IdOf(1)), Not(Contains(HasSubstr("mbus:"))));
  EXPECT_THAT(ObisOf(IdOf(3)), Contains("8-0:1.0.0"));
  EXPECT_GT(Count("values"), 5u);
}

TEST_F(MbifProcess, SaysWhichReadingsAreNotToBeHad) {
  StartGateway();
  StartBus({"--meters", "1"});
  EXPECT_EQ(Run(OnBus({"--meter", "1", "--meter", "9", "--no-rules", "--once"})), 1) << Said();
  EXPECT_EQ(Count("read"), 1u);
  EXPECT_EQ(Count("missing"), 1u);
  ASSERT_EQ(Ctl("events"), 0);
  EXPECT_THAT(Load("ctl"), HasSubstr("readings missing"));
  EXPECT_THAT(Load("ctl"), HasSubstr("1 reading of meter at 9, "));
}

TEST_F(MbifProcess, EndsWithItsOwnCodeWithoutALine) {
  StartGateway();
  EXPECT_EQ(Run({"--input", "/dev/ttyOfNobody", "--meter", "1", "--once"}), 3) << Said();
  EXPECT_THAT(Said(), HasSubstr("cannot open /dev/ttyOfNobody: No such file or directory"));
}

TEST_F(MbifProcess, LeavesALineToWhoHasItOpen) {
  StartGateway();
  StartBus();
  Start(OnBus({"--meter", "1", "--no-rules", "--interval", "1"}));
  ASSERT_TRUE(AwaitStored(IdOf(1), "mbus:0C/06", 1)) << Said();
  EXPECT_EQ(Ctl("mbus read --baud 9600 " + m_folder.File("bus") + " 1"), 3);
  EXPECT_THAT(Load("ctl"), HasSubstr("is in use by another process"));
  m_driver->Signal(SIGTERM);
  EXPECT_EQ(End(), 0) << Said();
}

TEST_F(MbifProcess, FollowsTheConfiguration) {
  StartGateway();
  StartBus();
  Start({"--no-rules"});
  ASSERT_EQ(Ctl("interface set MBUS enabled=true 'options=input=" + m_folder.File("bus") + ",baud=9600,interval=1'"), 0)
      << Load("ctl");
  ASSERT_EQ(Ctl("meter set " + IdOf(3) + " medium=w interface-name=MBUS interface-protocol=MBUS"), 0) << Load("ctl");
  EXPECT_TRUE(AwaitStored(IdOf(3), "mbus:0C/13", 2)) << Said();
  m_driver->Signal(SIGTERM);
  EXPECT_EQ(End(), 0) << Said();
}

TEST_F(MbifProcess, HasASimulatedBusInItself) {
  StartGateway();
  ASSERT_EQ(Run({"--input", "sim", "--meters", "2", "--once", "--no-rules"}), 0) << Said();
  EXPECT_THAT(Meters(), SizeIs(2));
}

TEST_F(MbifProcess, HasASimulatedBusThatHearsTheRateOfItsLine) {
  StartGateway();
  ASSERT_EQ(Run({"--input", "sim", "--meters", "1", "--baud", "9600", "--once", "--no-rules"}), 0) << Said();
  EXPECT_EQ(Count("read"), 1u);
}

TEST_F(MbifProcess, LosesNothingWhenTheGatewayIsKilled) {
  StartGateway();
  StartBus();
  Start(OnBus({"--meter", "1", "--no-rules", "--interval", "1"}));
  ASSERT_TRUE(AwaitStored(IdOf(1), "mbus:0C/06", 2)) << Said();
  KillGateway();
  StartGateway();
  ASSERT_TRUE(AwaitStored(IdOf(1), "mbus:0C/06", 5)) << Said();
  m_driver->Signal(SIGTERM);
  EXPECT_EQ(End(), 0) << Said();
  EXPECT_EQ(Count("dropped"), 0u);
  EXPECT_EQ(Count("due"), Count("read") + Count("missing"));
}

}  // namespace
}  // namespace tav::mbus
