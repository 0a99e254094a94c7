// SPDX-License-Identifier: Apache-2.0
// The driver by the gateway's configuration: it opens what it is told, follows each change, and says what is wrong.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tests/driver/mbus/mbif/mbif_world.h>

namespace tav::mbus {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;

using enum eMeterKind;

struct cConfigured {
  std::string id;
  std::string address;
  std::string options = {};
  bool raw = false;
};

class MbifConfigured : public MbifWorld {
 protected:
  MbifConfigured() {
    m_options.noRules = false;
    AddMeters({Heat, ColdWater, Gas});
    m_options.meters.clear();
    m_options.configured = true;
    m_options.interfaceName.clear();
    OpenLine();
  }
  vorn::cRecord Interface(const std::vector<cConfigured>& meters, const std::string& options = "interval=60") const {
    vorn::cRecord record = cInterfaceRecord("MBUS", "input=" + m_line->GetDevice() + "," + options, true).ToRecord();
    for (const cConfigured& each : meters) {
      cMeterConfig meter;
      meter.SetIdentification(each.id, each.address, "", "");
      meter.SetInterfaceOptions("MBUS", "MBUS", each.options);
      meter.storeRawEnabled = each.raw;
      record.AppendRecordPar("meterconfig-record", meter.ToRecord());
    }
    return record;
  }
  void DriveWith(const std::vector<cConfigured>& meters) {
    Configure({Interface(meters)});
    Drive();
  }
  // The meters of the readings so far, and none of those any more.
  std::vector<std::string> Meters() {
    std::vector<std::string> meters;
    for (const cMeterRecord& reading : std::exchange(m_readings, {}))
      meters.push_back(reading.GetMeterID() + "@" + reading.GetAddr());
    return meters;
  }
  bool AwaitReadings(std::size_t count) {
    return AwaitWithin(30 * kSecond, [&] { return m_readings.size() >= count; });
  }
};

TEST_F(MbifConfigured, ReadsTheMetersOfItsInterfaceByTheirAddresses) {
  DriveWith({{"heat", "1"}, {IdOf(1), ""}, {"gas", IdOf(2) + "345603FF"}});
  ASSERT_TRUE(AwaitReadings(2));
  Elapse(10 * kSecond);
  EXPECT_THAT(Meters(), ElementsAre("heat@1", IdOf(1) + "@" + IdOf(1))) << "the third has another manufacturer";
  EXPECT_THAT(Reasons("readings missing"), SizeIs(1));
}

TEST_F(MbifConfigured, TakesAMetersIntervalBeforeThatOfItsInterface) {
  DriveWith({{"heat", "1"}, {"water", "2", "interval=3600"}});
  Elapse(610 * kSecond, 100);
  const std::vector<std::string> meters = Meters();
  EXPECT_EQ(std::count(meters.begin(), meters.end(), "water@2"), 1);
  EXPECT_EQ(std::count(meters.begin(), meters.end(), "heat@1"), 11);
}

TEST_F(MbifConfigured, StoresTheTelegramsOfAMeterThatIsToHaveThem) {
  DriveWith({{"heat", "1", "", true}, {"water", "2"}});
  ASSERT_TRUE(AwaitReadings(2));
  EXPECT_EQ(m_readings[0].GetRaw()[0], kLongStart);
  EXPECT_TRUE(m_readings[1].GetRaw().IsEmpty());
}

TEST_F(MbifConfigured, ReadsAMeterThatComesAndLeavesOneThatGoes) {
  DriveWith({{"heat", "1"}});
  ASSERT_TRUE(AwaitReadings(1));
  Meters();
  Notify(Interface({{"water", "2"}}));
  ASSERT_TRUE(AwaitReadings(1));
  Elapse(120 * kSecond, 100);
  EXPECT_THAT(Meters(), testing::Each("water@2"));
  const cMBusCounts counts = m_driver->GetCounts();
  EXPECT_EQ(counts.due, counts.delivered + counts.missing);
}

TEST_F(MbifConfigured, GoesOnWithItsScheduleWhenOnlyOptionsChange) {
  DriveWith({{"heat", "1"}});
  ASSERT_TRUE(AwaitReadings(1));
  const std::uint64_t due = m_driver->GetCounts().due;
  Notify(Interface({{"heat", "1"}}, "interval=60,unmapped=keep,light=2"));
  Elapse(5 * kSecond);
  EXPECT_EQ(m_driver->GetCounts().due, due);
  Elapse(60 * kSecond, 100);
  EXPECT_THAT(Flashes(), Contains(2u));
}

TEST_F(MbifConfigured, ClosesAnInterfaceThatIsWrongAndSaysWhy) {
  DriveWith({{"heat", "1"}});
  ASSERT_TRUE(AwaitReadings(1));
  Notify(Interface({{"heat", "1"}}, "unmapped=maybe"));
  EXPECT_THAT(Reasons("interface refused"),
              ElementsAre("interface 'MBUS': option 'unmapped': 'maybe' is neither keep nor drop"));
  Meters();
  Elapse(120 * kSecond, 100);
  EXPECT_THAT(Meters(), IsEmpty());
}

TEST_F(MbifConfigured, OpensNothingForMetersOfOtherDrivers) {
  cMeterConfig meter;
  meter.SetIdentification("1", "1", "", "");
  meter.SetInterfaceOptions("MBUS", "SML", "");
  vorn::cRecord record = Interface({});
  record.AppendRecordPar("meterconfig-record", meter.ToRecord());
  Configure({record});
  Drive();
  Elapse(20 * kSecond);
  EXPECT_EQ(m_bus.CountRequests(), 0u);
}

TEST_F(MbifConfigured, NamesValuesByTheGatewaysRules) {
  m_obis.Serve();
  m_obis.Set(cObisMapEntry(1, "Heat energy", "6-0:1.0.0", "protocol=mbus,dif=0C,vif=06"));
  DriveWith({{"heat", "1"}});
  ASSERT_TRUE(AwaitReadings(1));
  EXPECT_THAT(Entries(m_readings[0]), ElementsAre(testing::StartsWith("6-0:1.0.0=")));
  EXPECT_GT(m_driver->GetCounts().content.unmapped, 0u);
}

TEST_F(MbifConfigured, ObeysWhatItCanAndRefusesTheRest) {
  DriveWith({{"heat", "1"}});
  ASSERT_TRUE(AwaitReadings(1));
  EXPECT_EQ(Command("activate-meter", "MBUS", "heat"), "");
  EXPECT_EQ(Command("activate-meter", "MBUS", "other"), "meter 'other' is not configured for interface 'MBUS'");
  EXPECT_EQ(Command("set-valve", "MBUS", "heat"), "meter 'heat': mbif cannot do 'set-valve'");
  EXPECT_EQ(Command("activate-meter", "OTHER", "heat"), "interface 'OTHER' is not open");
}

}  // namespace
}  // namespace tav::mbus
