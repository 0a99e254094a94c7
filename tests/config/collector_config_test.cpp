// SPDX-License-Identifier: Apache-2.0
#include <tav/config/collector_config.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tests/support/captured_trace.h>
#include <tests/support/parameters.h>
#include <tests/support/trace_level.h>

using tav::cCollectorConfig;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

cCollectorConfig Full() {
  cCollectorConfig collector;
  collector.SetAddr("1");
  collector.SetActivation(true);
  collector.SetLogger(96, 2, "15min");
  collector.SetLoggedObisID("1-0:1.8.0,1-0:2.8.0");
  collector.SetPushTarget(0x100000001, "1h", true, true, 300);
  collector.SetPushTargetName("portal");
  return collector;
}

vorn::cRecord Form() {
  vorn::cRecord form;
  form.AppendUIntPar("version", 1);
  form.AppendTextPar("addr", "1");
  form.AppendTextPar("event-type", "15min");
  form.AppendTextPar("obis-ids", "1-0:1.8.0");
  return form;
}

// Every field.
std::string Dump(const cCollectorConfig& c) {
  return std::to_string(c.version) + "|" + c.error + "|" + c.addr + (c.activation ? " active " : " - ") +
         std::to_string(c.countRP) + " " + std::to_string(c.distanceRP) + "|" + c.eventType + "|" + c.obisIds + "|" +
         std::to_string(c.pushTargetIdx) + "|" + c.pushTargetName + "|" + c.pushPeriod +
         (c.pushEnabled ? " push" : " -") + (c.pushRawEnabled ? " raw " : " - ") + std::to_string(c.pushRandomOffset) +
         (c.shouldRemoved ? " remove" : " keep");
}

}  // namespace

TEST(CollectorConfig, StartsWithItsDefaults) {
  EXPECT_EQ(Dump(cCollectorConfig()), "1|| - 0 0|||0|| - - 0 keep");
  EXPECT_FALSE(cCollectorConfig().IsValid());
}

TEST(CollectorConfig, EverySetterSetsItsFields) {
  EXPECT_EQ(Dump(Full()), "1||1 active 96 2|15min|1-0:1.8.0,1-0:2.8.0|4294967297|portal|1h push raw 300 keep");
}

TEST(CollectorConfig, InitRestoresTheDefaults) {
  cCollectorConfig collector = Full();
  collector.version = 7;
  collector.error = "old";
  collector.shouldRemoved = true;
  collector.Init();
  EXPECT_EQ(Dump(collector), Dump(cCollectorConfig()));
}

TEST(CollectorConfig, CopiesAndAssignsEveryField) {
  cCollectorConfig source = Full();
  source.version = 2;
  source.error = "old";
  source.shouldRemoved = true;
  const cCollectorConfig copy = source;
  cCollectorConfig assigned;
  assigned = source;
  EXPECT_EQ(Dump(copy), Dump(source));
  EXPECT_EQ(Dump(assigned), Dump(source));
  const cCollectorConfig& same = assigned;
  assigned = same;
  EXPECT_EQ(Dump(assigned), Dump(source));
}

TEST(CollectorConfig, IsValidWithAddressIdentifiersAndEventType) {
  const struct {
    const char *addr, *obisIds, *eventType;
    bool valid, validWhenRemoved;
  } kCases[] = {
      {"1", "1-0:1.8.0", "15min", true, true},
      {"", "1-0:1.8.0", "15min", false, false},
      {"1", "", "15min", false, true},
      {"1", "1-0:1.8.0", "", false, true},
      {"1", "", "", false, true},
      {"", "", "", false, false},
  };
  for (const auto& c : kCases) {
    cCollectorConfig collector;
    collector.SetAddr(c.addr);
    collector.SetLoggedObisID(c.obisIds);
    collector.SetLogger(1, 1, c.eventType);
    EXPECT_EQ(collector.IsValid(), c.valid) << c.addr << "|" << c.obisIds << "|" << c.eventType;
    collector.shouldRemoved = true;
    EXPECT_EQ(collector.IsValid(), c.validWhenRemoved) << "to be removed it needs its address only";
  }
}

TEST(CollectorConfig, TheRecordFormIsInItsOrderAndWritesTheDistanceMisspelt) {
  EXPECT_THAT(
      Parameters(Full().ToRecord()),
      ElementsAre("version uint=1", "addr text=1", "should-removed bool=false", "activation bool=true",
                  "countRP uint=96", "distanecRP uint=2", "event-type text=15min", "obis-ids text=1-0:1.8.0,1-0:2.8.0",
                  "push-target-idx uint64=4294967297", "push-target-name text=portal", "push-period text=1h",
                  "push-enabled bool=true", "push-raw-enabled bool=true", "push-random-offset uint=300"));
}

TEST(CollectorConfig, TheRecordFormHasEmptyTextsToo) {
  EXPECT_THAT(Parameters(cCollectorConfig().ToRecord()),
              ElementsAre("version uint=1", "addr text=", "should-removed bool=false", "activation bool=false",
                          "countRP uint=0", "distanecRP uint=0",
                          "event-type text=", "obis-ids text=", "push-target-idx uint64=0",
                          "push-target-name text=", "push-period text=", "push-enabled bool=false",
                          "push-raw-enabled bool=false", "push-random-offset uint=0"));
}

TEST(CollectorConfig, TheRoundTripLosesTheDistanceAndNothingElse) {
  cCollectorConfig source = Full();
  source.shouldRemoved = true;
  cCollectorConfig read;
  EXPECT_TRUE(read.FromRecord(source.ToRecord()));
  source.distanceRP = 0;
  EXPECT_EQ(Dump(read), Dump(source));
}

TEST(CollectorConfig, ReadsTheDistanceUnderItsOtherName) {
  vorn::cRecord form = Form();
  form.AppendUIntPar("distanecRP", 3);
  cCollectorConfig read;
  EXPECT_TRUE(read.FromRecord(form));
  EXPECT_EQ(read.distanceRP, 0u);
  form.AppendUIntPar("distanceRP", 4);
  EXPECT_TRUE(read.FromRecord(form));
  EXPECT_EQ(read.distanceRP, 4u);
}

TEST(CollectorConfig, TakesTheLow16BitsOfTheRandomOffset) {
  const struct {
    unsigned int written;
    unsigned short read;
  } kCases[] = {{65535, 65535}, {65536, 0}, {70000, 4464}, {0xFFFFFFFF, 65535}};
  for (const auto& c : kCases) {
    vorn::cRecord form = Form();
    form.AppendUIntPar("push-random-offset", c.written);
    cCollectorConfig read;
    EXPECT_TRUE(read.FromRecord(form));
    EXPECT_EQ(read.pushRandomOffset, c.read) << c.written;
  }
}

TEST(CollectorConfig, WhatIsMissingOrOfAnotherTypeIsReadAsEmpty) {
  cCollectorConfig least;
  EXPECT_TRUE(least.FromRecord(Form()));
  EXPECT_EQ(Dump(least), "1||1 - 0 0|15min|1-0:1.8.0|0|| - - 0 keep");
  vorn::cRecord form = Form();
  form.AppendUIntPar("activation", 1);
  form.AppendIntPar("countRP", 5);
  form.AppendUInt64Par("distanceRP", 5);
  form.AppendUIntPar("push-target-idx", 5);
  form.AppendUIntPar("push-target-name", 5);
  form.AppendUIntPar("push-period", 5);
  form.AppendTextPar("push-enabled", "true");
  form.AppendTextPar("push-raw-enabled", "true");
  form.AppendTextPar("push-random-offset", "5");
  form.AppendTextPar("should-removed", "true");
  cCollectorConfig mistyped;
  EXPECT_TRUE(mistyped.FromRecord(form));
  EXPECT_EQ(Dump(mistyped), Dump(least));
}

TEST(CollectorConfig, ReadsTheFirstOfARepeatedParameter) {
  vorn::cRecord form = Form();
  form.AppendTextPar("addr", "2");
  cCollectorConfig read;
  EXPECT_TRUE(read.FromRecord(form));
  EXPECT_EQ(read.addr, "1");
}

TEST(CollectorConfig, ReadingForgetsWhatWasThereBefore) {
  cCollectorConfig read = Full();
  read.shouldRemoved = true;
  read.error = "old";
  EXPECT_TRUE(read.FromRecord(Form()));
  EXPECT_EQ(Dump(read), "1||1 - 0 0|15min|1-0:1.8.0|0|| - - 0 keep");
}

TEST(CollectorConfig, AnEmptyRecordIsRefusedWithoutAWord) {
  const cCapturedTrace trace;
  cCollectorConfig read = Full();
  EXPECT_FALSE(read.FromRecord(vorn::cRecord()));
  EXPECT_EQ(Dump(read), Dump(cCollectorConfig()));
  EXPECT_THAT(trace.GetLines(), IsEmpty());
}

TEST(CollectorConfig, RefusesAnotherVersion) {
  for (const unsigned int version : {0u, 2u}) {
    const cCapturedTrace trace;
    vorn::cRecord form = Form();
    form.SetUIntPar("version", version);
    cCollectorConfig read;
    EXPECT_FALSE(read.FromRecord(form));
    EXPECT_EQ(read.version, version);
    EXPECT_EQ(read.error, "unknown message version");
    EXPECT_EQ(read.addr, "") << "nothing behind the version is read";
    EXPECT_THAT(trace.GetLines(), ElementsAre("UnitTAV 2 CollectorConfigRecord: unknown version"));
  }
}

TEST(CollectorConfig, AVersionOfAnotherTypeIsVersionZero) {
  const cCapturedTrace trace;
  vorn::cRecord form = Form();
  form.SetIntPar("version", 1);
  cCollectorConfig read;
  EXPECT_FALSE(read.FromRecord(form));
  EXPECT_EQ(read.version, 0u);
}

TEST(CollectorConfig, SaysNothingBelowTheLevelOfFailures) {
  const cTraceLevel level("UnitTAV", 1);
  const cCapturedTrace trace;
  vorn::cRecord form;
  form.AppendUIntPar("version", 2);
  cCollectorConfig read;
  EXPECT_FALSE(read.FromRecord(form));
  EXPECT_THAT(trace.GetLines(), IsEmpty());
}

TEST(CollectorConfig, AnInvalidOneIsReadAndRefusedWithoutAnErrorText) {
  const struct {
    const char *empty, *fields;
  } kCases[] = {
      {"addr", "|15min|1-0:1.8.0"},
      {"event-type", "1||1-0:1.8.0"},
      {"obis-ids", "1|15min|"},
  };
  for (const auto& c : kCases) {
    const cCapturedTrace trace;
    vorn::cRecord form = Form();
    form.SetTextPar(c.empty, "");
    cCollectorConfig read;
    EXPECT_FALSE(read.FromRecord(form));
    EXPECT_EQ(read.error, "");
    EXPECT_EQ(read.addr + "|" + read.eventType + "|" + read.obisIds, c.fields);
    EXPECT_THAT(trace.GetLines(), IsEmpty());
  }
}

TEST(CollectorConfig, TellsHowItPushes) {
  cCollectorConfig collector;
  collector.SetAddr("1");
  collector.SetLogger(0, 0, "15min");
  collector.SetLoggedObisID("1-0:1.8.0");
  collector.SetPushTarget(1, "1h", true, false, 0);
  EXPECT_EQ(collector.ToString(), "1[15min] push=ON 1-0:1.8.0");
  collector.pushRawEnabled = true;
  EXPECT_EQ(collector.ToString(), "1[15min] push=ON with RAW 1-0:1.8.0");
  collector.pushEnabled = false;
  EXPECT_EQ(collector.ToString(), "1[15min] push=OFF 1-0:1.8.0") << "raw data alone are not pushed";
  EXPECT_EQ(cCollectorConfig().ToString(), "[] push=OFF ");
}
