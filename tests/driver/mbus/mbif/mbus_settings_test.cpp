// SPDX-License-Identifier: Apache-2.0
#include <gateway/driver/mbus/mbif/mbus_settings.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <gateway/driver/mbus/mbif/mbus_options.h>

namespace tav::mbus {
namespace {

using testing::HasSubstr;
using testing::SizeIs;

cMeterConfig Meter(const std::string& id, const std::string& address = {}, const std::string& options = {}) {
  cMeterConfig meter;
  meter.SetIdentification(id, address, "", "");
  meter.SetInterfaceOptions("MBUS", "MBUS", options);
  return meter;
}

cInterfaceRecord Interface(const std::string& options, const std::vector<cMeterConfig>& meters = {}) {
  cInterfaceRecord interface("MBUS", options, true);
  interface.meters = meters;
  return interface;
}

cMBusSettings Read(const cInterfaceRecord& record) {
  cMBusSettings settings;
  std::string error;
  EXPECT_TRUE(ReadSettings(record, settings, error)) << error;
  return settings;
}

std::string Fault(const cInterfaceRecord& record) {
  cMBusSettings settings;
  std::string error;
  EXPECT_FALSE(ReadSettings(record, settings, error));
  return error;
}

TEST(MBusSettings, ReadASerialLineThatIs2400Baud8E1UnlessSaidOtherwise) {
  EXPECT_EQ(Read(Interface("input=/dev/ttyOfNobody")).DescribeLine(), "/dev/ttyOfNobody (2400 8E1)");
  EXPECT_EQ(Read(Interface("input=/dev/ttyOfNobody,baud=300,framing=8N1")).DescribeLine(),
            "/dev/ttyOfNobody (300 8N1)");
}

TEST(MBusSettings, ReadTheRestOfALine) {
  const cMBusSettings settings =
      Read(Interface("input=tcp://converter:10001,echo=1,retries=4,answer=3000,light=2,unmapped=keep"));
  EXPECT_EQ(settings.DescribeLine(), "tcp://converter:10001");
  EXPECT_TRUE(settings.line.echo);
  EXPECT_EQ(settings.line.retries, 4u);
  EXPECT_EQ(settings.line.longestAnswerMs, 3000u);
  EXPECT_EQ(settings.light, 2u);
  EXPECT_TRUE(settings.keepUnmapped);
  EXPECT_FALSE(Read(Interface("input=tcp://converter:10001,unmapped=drop")).keepUnmapped);
}

TEST(MBusSettings, ReadASimulatedBus) {
  const cMBusSettings settings = Read(Interface("input=sim,meters=7,seed=3"));
  EXPECT_TRUE(settings.simulated);
  EXPECT_EQ(settings.simulation.meters, 7u);
  EXPECT_EQ(settings.simulation.seed, 3u);
  EXPECT_EQ(settings.DescribeLine(), "simulated bus");
}

TEST(MBusSettings, ReadMetersByPrimaryAndSecondaryAddress) {
  const cMBusSettings settings =
      Read(Interface("input=sim,interval=60", {Meter("a", "5"), Meter("44950146"), Meter("b", "449501464D341804"),
                                               Meter("c", "6", "interval=3600")}));
  ASSERT_THAT(settings.meters, SizeIs(4));
  EXPECT_EQ(settings.meters[0].address, cMBusAddress::Primary(5));
  EXPECT_EQ(settings.meters[0].intervalSeconds, 60u);
  EXPECT_TRUE(settings.meters[0].raw) << "as configured meters store their telegrams";
  EXPECT_EQ(settings.meters[1].address.ToString(), "44950146") << "without an address the identification is one";
  EXPECT_EQ(settings.meters[2].address.ToString(), "449501464D341804");
  EXPECT_EQ(settings.meters[3].intervalSeconds, 3600u);
}

TEST(MBusSettings, LeaveOutMetersOfOtherDrivers) {
  cMeterConfig other = Meter("other", "9");
  other.SetInterfaceOptions("MBUS", "SML", "");
  EXPECT_THAT(Read(Interface("input=sim", {other, Meter("ours", "5")})).meters, SizeIs(1));
}

TEST(MBusSettings, NameWhatIsWrong) {
  const struct {
    cInterfaceRecord record;
    const char* fault;
  } kCases[] = {
      {Interface(""), "interface 'MBUS': option 'input': the input is empty"},
      {Interface("input=-"), "interface 'MBUS': option 'input': '-' is no device and no tcp://host:port"},
      {Interface("input=capture.bin"), "interface 'MBUS': option 'input': 'capture.bin' is no device"},
      {Interface("input=tcp://x"), "interface 'MBUS': option 'input': 'tcp://x' is no address"},
      {Interface("input=/dev/ttyOfNobody,baud=2401"), "interface 'MBUS': option 'baud' or 'framing': baud rate 2401"},
      {Interface("input=/dev/ttyOfNobody,framing=9X9"), "interface 'MBUS': option 'baud' or 'framing': '9X9'"},
      {Interface("input=sim,echo=2"), "interface 'MBUS': option 'echo': '2' is no number from 0 to 1"},
      {Interface("input=sim,retries=11"), "interface 'MBUS': option 'retries': '11' is no number from 0 to 10"},
      {Interface("input=sim,answer=60001"), "interface 'MBUS': option 'answer': '60001' is no number"},
      {Interface("input=sim,unmapped=no"), "interface 'MBUS': option 'unmapped': 'no' is neither keep nor drop"},
      {Interface("input=sim,light=3"), "interface 'MBUS': option 'light': '3' is no number from 0 to 2"},
      {Interface("input=sim,interval=0"), "interface 'MBUS': option 'interval': '0' is no number from 1 to 86400"},
      {Interface("input=sim,meters=251"), "interface 'MBUS': option 'meters': '251' is no number from 1 to 250"},
      {Interface("input=sim,seed=x"), "interface 'MBUS': option 'seed': 'x' is no number"},
      {Interface("input=sim", {Meter("m", "251")}), "meter 'm': "},
      {Interface("input=sim", {Meter("m", "", "")}), "meter 'm': "},
      {Interface("input=sim", {Meter("m", "5", "interval=x")}), "meter 'm': option 'interval': 'x' is no number"},
  };
  for (const auto& c : kCases) EXPECT_THAT(Fault(c.record), HasSubstr(c.fault));
}

TEST(MBusSettings, KnowWhetherTheLineIsTheSame) {
  const cMBusSettings line = Read(Interface("input=tcp://converter:10001"));
  EXPECT_TRUE(line.HasSameLine(Read(Interface("input=tcp://converter:10001,unmapped=keep,light=2,seed=9"))));
  EXPECT_FALSE(line.HasSameLine(Read(Interface("input=tcp://converter:10002"))));
  EXPECT_FALSE(line.HasSameLine(Read(Interface("input=tcp://converter:10001,echo=1"))));
  EXPECT_FALSE(line.HasSameLine(Read(Interface("input=sim"))));
  EXPECT_FALSE(Read(Interface("input=sim")).HasSameLine(Read(Interface("input=sim,seed=9"))));
}

TEST(MBusSettings, DescribeAMeterByWhatIsKnownOfIt) {
  EXPECT_EQ((cMBusMeter{"house 7", cMBusAddress::Primary(5), {}, false, 60}).Describe(), "meter 'house 7'");
  EXPECT_EQ((cMBusMeter{{}, cMBusAddress::Primary(5), {}, false, 60}).Describe(), "meter at 5");
}

}  // namespace
}  // namespace tav::mbus
