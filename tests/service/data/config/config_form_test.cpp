// SPDX-License-Identifier: Apache-2.0
#include <gateway/service/data/config/config_form.h>

#include <functional>

#include <gateway/service/data/config/config_limits.h>
#include <gateway/service/data/profile/profile_event.h>
#include <tests/service/data/config/config_world.h>

namespace tav::data {
namespace {

using vorn::cRecord;

// A record with something done to it, and the reason of its refusal; empty when it is taken.
struct cCase {
  std::function<void(cRecord&)> change;
  std::string reason;
};

std::function<void(cRecord&)> Text(const char* name, const std::string& value) {
  return [=](cRecord& record) { record.SetTextPar(name, value); };
}
std::function<void(cRecord&)> UInt(const char* name, unsigned int value) {
  return [=](cRecord& record) { record.SetUIntPar(name, value); };
}
std::function<void(cRecord&)> UInt64(const char* name, std::uint64_t value) {
  return [=](cRecord& record) { record.SetUInt64Par(name, value); };
}
std::string Long(std::size_t bytes) { return std::string(bytes, 'x'); }

template <typename ReadOne>
void Check(const cRecord& good, const std::vector<cCase>& cases, const ReadOne& readOne) {
  for (const cCase& one : cases) {
    cRecord record = good;
    one.change(record);
    cConfigFaults faults;
    EXPECT_EQ(readOne(record, cPlace(faults)), one.reason.empty()) << one.reason;
    EXPECT_EQ(faults.GetText(), one.reason);
  }
}

cRecord Without(const cRecord& record, std::string_view name) {
  cRecord rest;
  for (auto par = record.First(); par.IsValid(); par = par.Next())
    if (par.GetNameView() == name)
      continue;
    else if (par.IsUInt())
      rest.AppendUIntPar(par.GetName(), par.GetUInt());
    else if (par.IsText())
      rest.AppendTextPar(par.GetName(), par.GetText());
    else if (par.IsBool())
      rest.AppendBoolPar(par.GetName(), par.GetBool());
    else if (par.IsUInt64())
      rest.AppendUInt64Par(par.GetName(), par.GetUInt64());
  return rest;
}

// ---- each record

TEST(ConfigForm, ChecksAnInterface) {
  const std::vector<cCase> cases = {
      {[](cRecord&) {}, ""},
      {Text("name", Long(kMaxName - 1)), ""},
      {Text("name", Long(kMaxName)), ""},
      {Text("name", Long(kMaxName + 1)),
       "interface '" + Long(kMaxName) + "...': parameter \"name\" has 65 bytes, at most 64 are kept"},
      {Text("options", Long(kMaxOptions)), ""},
      {Text("options", Long(kMaxOptions + 1)),
       "interface 'RS232': parameter \"options\" has 1025 bytes, at most 1024 are kept"},
      {Text("name", ""), "interface: parameter \"name\" is empty"},
      {Text("name", "a\nb"), "interface 'a?b': parameter \"name\" holds a control character"},
      {UInt("name", 1), "interface: parameter \"name\": expected type text, found uint"},
      {Text("enabled", "true"), "interface 'RS232': parameter \"enabled\": expected type bool, found text"},
      {UInt("version", 2), "interface 'RS232': unknown version 2"},
      {Text("version", "1"), "interface 'RS232': unknown version 1"},
      {[](cRecord& record) { record = cRecord(); }, "interface: parameter \"version\" is missing"},
      {[](cRecord& record) { record = Without(record, "name"); },
       "interface: parameter \"name\" is missing, expected type text"},
      {[](cRecord& record) { record = Without(record, "enabled"); }, ""},
  };
  Check(Interface().ToRecord(), cases, [](const cRecord& record, const cPlace& at) {
    cInterfaceRecord interface;
    return ReadInterface(record, at, interface);
  });
}

TEST(ConfigForm, ChecksAMeter) {
  const std::vector<cCase> cases = {
      {[](cRecord&) {}, ""},
      {Text("meterID", ""), "meter: parameter \"meterID\" is empty"},
      {Text("interface-name", ""), "meter 'M1': parameter \"interface-name\" is empty"},
      {Text("addr", ""), ""},
      {Text("key", Long(kMaxText)), ""},
      {Text("key", Long(kMaxText + 1)), "meter 'M1': parameter \"key\" has 256 bytes, at most 255 are kept"},
      {Text("vendor", Long(kMaxText + 1)), "meter 'M1': parameter \"vendor\" has 256 bytes, at most 255 are kept"},
      {Text("interface-options", Long(kMaxOptions + 1)),
       "meter 'M1': parameter \"interface-options\" has 1025 bytes, at most 1024 are kept"},
      {Text("medium", "\x7F"), "meter 'M1': parameter \"medium\" holds a control character"},
      {UInt("version", 0), "meter 'M1': unknown version 0"},
      {[](cRecord& record) {
         record.SetUIntPar("medium", 2);
         record.SetTextPar("push-enabled", "yes");
       },
       "meter 'M1': parameter \"medium\": expected type text, found uint; "
       "meter 'M1': parameter \"push-enabled\": expected type bool, found text"},
  };
  Check(Meter().ToRecord(), cases, [](const cRecord& record, const cPlace& at) {
    cMeterConfig meter;
    return ReadMeter(record, at, meter);
  });
}

TEST(ConfigForm, ChecksACollector) {
  const std::string place = "meter 'M1': collector '1': ";
  const std::string twice = "1-0:1.8.0,";
  const std::vector<cCase> cases = {
      {[](cRecord&) {}, ""},
      {Text("event-type", "900"), ""},
      {Text("event-type", "month"), ""},
      {Text("event-type", "weekly"), place + "event-type 'weekly' is none of " + std::string(cProfileEvent::kPossible)},
      {Text("event-type", ""), place + "event-type '' is none of " + std::string(cProfileEvent::kPossible)},
      {Text("event-type", "0"), place + "event-type '0' is none of " + std::string(cProfileEvent::kPossible)},
      {UInt("distanecRP", cProfileEvent::kMaxDistance), ""},
      {UInt("distanecRP", cProfileEvent::kMaxDistance + 1), place + "distanceRP 1201 is over 1200"},
      {Text("obis-ids", ""), place + "obis-ids is empty"},
      {Text("obis-ids", "1-0:1.8.0,power"), place + "obis-ids: 'power' is no OBIS identifier"},
      {Text("obis-ids", "1-0:1.8.0,"), place + "obis-ids: '' is no OBIS identifier"},
      {Text("obis-ids", "1-0:1.8.0,1-0:1.8.0"), place + "obis-ids: '1-0:1.8.0' is there twice"},
      {UInt("push-random-offset", 65535), ""},
      {UInt("push-random-offset", 70000), place + "push-random-offset 70000 is over 65535"},
      {Text("addr", ""), "meter 'M1': collector 1: parameter \"addr\" is empty"},
      {UInt("push-target-idx", 1), place + "parameter \"push-target-idx\": expected type uint64, found uint"},
      {UInt("version", 3), place + "unknown version 3"},
      {[](cRecord& record) { record = cRecord(); }, "meter 'M1': collector 1: parameter \"version\" is missing"},
      {Text("push-period", Long(kMaxName + 1)), place + "parameter \"push-period\" has 65 bytes, at most 64 are kept"},
      {Text("obis-ids", Long(kMaxObisIds + 1)), place + "parameter \"obis-ids\" has 2049 bytes, at most 2048 are kept"},
      // One to be removed needs no more than its address.
      {[](cRecord& record) {
         record = cRecord();
         record.AppendUIntPar("version", 1);
         record.AppendTextPar("addr", "1");
         record.AppendBoolPar("should-removed", true);
       },
       ""},
  };
  Check(Collector().ToRecord(), cases, [](const cRecord& collector, const cPlace& at) {
    cRecord record = Meter().ToRecord();
    record.AppendRecordPar("collector-config", collector);
    cMeterConfig meter;
    return ReadMeter(record, at, meter);
  });
}

TEST(ConfigForm, ChecksAPushTarget) {
  const std::vector<cCase> cases = {
      {[](cRecord&) {}, ""},
      {UInt("collect", 50), ""},
      {UInt("collect", 51), "push target 'cloud': collection not in range from 1 to 50"},
      {Text("host", ""), "push target 'cloud': parameter \"host\" is empty"},
      {UInt64("idx", kMaxIdx), ""},
      {UInt64("idx", kMaxIdx + 1), "push target 'cloud': idx is over 4294967295"},
      {UInt("idx", 1), "push target 'cloud': parameter \"idx\": expected type uint64, found uint"},
      // Its class calls this one a missing protocoll.
      {[](cRecord& record) { record = Without(record, "idx"); },
       "push target 'cloud': parameter \"idx\" is missing, expected type uint64"},
      // With one l it is another parameter.
      {[](cRecord& record) {
         record = Without(record, "protocoll");
         record.AppendTextPar("protocol", "https");
       },
       "push target 'cloud': parameter \"protocoll\" is missing, expected type text"},
      {Text("password", Long(kMaxText + 1)),
       "push target 'cloud': parameter \"password\" has 256 bytes, at most 255 are kept"},
      {Text("uri", Long(kMaxOptions + 1)),
       "push target 'cloud': parameter \"uri\" has 1025 bytes, at most 1024 are kept"},
  };
  Check(Target().ToRecord(), cases, [](const cRecord& record, const cPlace& at) {
    cPushTarget target;
    return ReadPushTarget(record, at, target);
  });
}

TEST(ConfigForm, ChecksATemplate) {
  const auto inMeter = [](const std::function<void(cRecord&)>& change) {
    return [change](cRecord& record) {
      cRecord nested = record.GetRecordPar("meter-config");
      change(nested);
      record.SetRecordPar("meter-config", nested);
    };
  };
  const std::vector<cCase> cases = {
      {[](cRecord&) {}, ""},
      {Text("name", ""), "template: parameter \"name\" is empty"},
      {Text("meter-config", "none"),
       "template 'standard': parameter \"meter-config\": expected type record, found text"},
      {inMeter(Text("meterID", "")), ""},
      {inMeter(Text("addr", Long(kMaxName + 1))),
       "template 'standard': meter-config: parameter \"addr\" has 65 bytes, at most 64 are kept"},
      {inMeter([](cRecord& meter) { meter.AppendRecordPar("collector-config", Collector("2").ToRecord()); }), ""},
      {inMeter([](cRecord& meter) { meter.AppendRecordPar("collector-config", Collector("1").ToRecord()); }),
       "template 'standard': meter-config: collector '1': is there twice"},
      {[](cRecord& record) { record = Without(record, "none"); }, ""},
  };
  Check(Template().ToRecord(), cases, [](const cRecord& record, const cPlace& at) {
    std::string name;
    cRecord form;
    return ReadTemplate(record, at, name, form);
  });
}

// ---- anything at all

using ReadAny = std::function<bool(const cRecord& record, const cPlace& at)>;

const ReadAny kReaders[] = {
    [](const cRecord& record, const cPlace& at) {
      cInterfaceRecord interface;
      return ReadInterface(record, at, interface);
    },
    [](const cRecord& record, const cPlace& at) {
      cMeterConfig meter;
      return ReadMeter(record, at, meter);
    },
    [](const cRecord& record, const cPlace& at) {
      cPushTarget target;
      return ReadPushTarget(record, at, target);
    },
    [](const cRecord& record, const cPlace& at) {
      std::string name;
      cRecord form;
      return ReadTemplate(record, at, name, form);
    },
};

// One parameter as each of the types.
std::vector<cRecord> InEveryType(const cRecord& record, const std::string& name) {
  std::vector<cRecord> all(9, record);
  all[0].SetTextPar(name, "\xFF\n text");
  all[1].SetTextPar(name, nullptr);
  all[2].SetIntPar(name, -1);
  all[3].SetUIntPar(name, 0xFFFFFFFF);
  all[4].SetUInt64Par(name, 0xFFFFFFFFFFFFFFFF);
  all[5].SetBoolPar(name, true);
  all[6].SetRecordPar(name, record);
  all[7].SetUuidPar(name, {});
  all[8].SetDataPar(name, vorn::cData("\0\1", 2));
  return all;
}

TEST(ConfigForm, SaysWhatIsWrongWithWhateverItIsGiven) {
  const cRecord records[] = {
      Interface().ToRecord(), With(Meter(), Collector()).ToRecord(), Target().ToRecord(), Template().ToRecord(), {}};
  for (const cRecord& record : records)
    for (auto par = record.First(); par.IsValid(); par = par.Next())
      for (const cRecord& changed : InEveryType(record, par.GetName()))
        for (const ReadAny& readAny : kReaders) {
          cConfigFaults faults;
          const bool good = readAny(changed, cPlace(faults));
          EXPECT_EQ(good, faults.IsEmpty()) << changed.ToString();
        }
}

// ---- what the records' own classes let pass

// The class takes what follows the first collector for one, whatever its name; the service takes what is named so.
TEST(ConfigForm, TakesAsCollectorsWhatIsNamedSo) {
  cRecord record = Meter().ToRecord();
  record.AppendRecordPar("collector-config", Collector("1").ToRecord());
  record.AppendTextPar("remark", "a text ends the list of the class");
  record.AppendRecordPar("another", Collector("2").ToRecord());
  record.AppendRecordPar("collector-config", Collector("3").ToRecord());
  cConfigFaults faults;
  cMeterConfig meter;
  ASSERT_TRUE(ReadMeter(record, cPlace(faults), meter)) << faults.GetText();
  ASSERT_EQ(meter.collectors.size(), 2u);
  EXPECT_EQ(meter.collectors.back().addr, "3");
}

TEST(ConfigForm, NamesACollectorThatIsNoRecordOrThereTwice) {
  cRecord record = Meter().ToRecord();
  record.AppendRecordPar("collector-config", Collector("1").ToRecord());
  record.AppendTextPar("collector-config", "none");
  record.AppendRecordPar("collector-config", Collector("1").ToRecord());
  cConfigFaults faults;
  cMeterConfig meter;
  EXPECT_FALSE(ReadMeter(record, cPlace(faults), meter));
  EXPECT_EQ(faults.GetText(),
            "meter 'M1': collector 2: expected type record, found text; meter 'M1': collector '1': is there twice");
}

TEST(ConfigForm, TakesADistanceUnderEitherName) {
  for (const char* name : {"distanecRP", "distanceRP"}) {
    cRecord collector = Without(Collector().ToRecord(), "distanecRP");
    collector.AppendUIntPar(name, 9);
    cRecord record = Meter().ToRecord();
    record.AppendRecordPar("collector-config", collector);
    cConfigFaults faults;
    cMeterConfig meter;
    ASSERT_TRUE(ReadMeter(record, cPlace(faults), meter)) << faults.GetText();
    EXPECT_EQ(meter.collectors.front().distanceRP, 9u);
    cRecord given;
    ASSERT_TRUE(MeterForm(meter, eCollectors::With).GetPar("collector-config").GetRecord(given));
    EXPECT_EQ(given.GetUIntPar("distanceRP"), 9u);
    EXPECT_FALSE(given.GetPar("distanecRP").IsValid());
  }
}

// As its class reads it: the only switch that is on by default goes off when it is not sent.
TEST(ConfigForm, AnAbsentStoreRawEnabledIsOff) {
  cConfigFaults faults;
  cMeterConfig meter;
  ASSERT_TRUE(ReadMeter(Without(Meter().ToRecord(), "store-raw-enabled"), cPlace(faults), meter));
  EXPECT_FALSE(meter.storeRawEnabled);
}

TEST(ConfigForm, CorrectsWhatThePushTargetsClassCorrects) {
  cPushTarget sent = Target();
  sent.collect = 0;
  sent.maxruntime = 3;
  cConfigFaults faults;
  cPushTarget target;
  ASSERT_TRUE(ReadPushTarget(sent.ToRecord(), cPlace(faults), target));
  EXPECT_EQ(target.collect, 1u);
  EXPECT_EQ(target.maxruntime, 5u);
}

}  // namespace
}  // namespace tav::data
